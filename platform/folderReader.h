// Reads many small files of one folder, which are looked up from there instead of from the root of
// the file system each time. Stands alone: readers of recorded machines use nothing else of the
// platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace platform {

class FolderReader {
public:
    // Raises std::bad_alloc. Whether the folder is there shows at the first use.
    explicit FolderReader(const std::string& utf8Path);
    ~FolderReader();
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;

    // Appends the names of all entries but "." and "..", in no particular order. 0, or the error
    // number (errno) of what failed. Raises std::bad_alloc.
    int list(std::vector<std::string>& names);

    // Reads the first bytes of a file, as many as there are up to the size of `result`; `size` is
    // how many. `name` is relative to the folder, with "/" between folders. 0, or the error number.
    int readFirst(const std::string& name, std::span<std::uint8_t> result, std::size_t& size);

    // The same of a file that holds one line: nobody asks the system whether more comes after the
    // line's end, though what came with it is there, too.
    int readLine(const std::string& name, std::span<std::uint8_t> result, std::size_t& size);

private:
    struct Folder;
    std::unique_ptr<Folder> folder_;
};

} // namespace platform

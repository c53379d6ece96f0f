// Reads a file once from its start to its end, whatever kind of file it is; a pipe that nobody
// writes to holds nobody up. Stands alone, as folderReader.h does.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace platform {

class InputFile {
public:
    // Raises std::bad_alloc. Whether there is such a file shows at the first read.
    explicit InputFile(const std::string& utf8Path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Reads the next bytes; `size` is how many, fewer than there is room for at the end of the file
    // only. 0, or the error number (errno). A pipe is given two seconds in which somebody begins to
    // write to it, or the error is EPIPE; from then on its writer's end is waited for.
    int read(std::span<char> bytes, std::size_t& size);

private:
    struct File;
    std::unique_ptr<File> file_;
};

} // namespace platform

// A file that is read once from its start to its end, with as few questions to the system as that
// takes: a stream of the C library asks several that a small file's content costs less than.
#pragma once

#include "platform/file.h"
#include "platform/systemCode.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace platform {

class FileToLoad {
public:
    // Opens what openStream(path, "rb") opens, and asks for no memory on Linux.
    explicit FileToLoad(const char* path) noexcept;
    ~FileToLoad();
    FileToLoad(const FileToLoad&) = delete;
    FileToLoad& operator=(const FileToLoad&) = delete;

    bool isOpen() const noexcept { return isOpen_; }
    // Why it is not.
    SystemCode code() const noexcept { return code_; }
    // As lastWriteTime() tells it, looked up before anything is read. On Linux it is that of the
    // very file that is open, whatever stands at the path since.
    std::optional<FileTime> lastWriteTime() const noexcept { return time_; }
    // How many bytes there should be to come. More may come, or fewer; 0 where nothing is known.
    std::uint64_t expected() const noexcept { return size_ > done_ ? size_ - done_ : 0; }

    // Reads the next bytes: fewer than asked for at the end, or on a failure.
    std::size_t read(char* to, std::size_t size) noexcept;
    bool hasFailed() const noexcept { return hasFailed_; }
    // Whether the file has been read as far as it went when it was opened. False for a file that
    // does not tell its size: its end shows in a read.
    bool isAtKnownEnd() const noexcept { return size_ != 0 && done_ == size_; }

private:
    std::intptr_t handle_ = 0; // the system's descriptor or the C library's stream
    std::uint64_t size_ = 0;
    std::uint64_t done_ = 0;
    std::optional<FileTime> time_;
    SystemCode code_ = kNoSystemError;
    bool isOpen_ = false;
    bool hasFailed_ = false;
};

} // namespace platform

// An exclusive lock on a file, by which processes take turns.
#pragma once

#include "platform/systemCode.h"

#include <cstdint>

namespace platform {

// Owns the handle of one lock file; closes it, which also releases the lock, when destroyed. Two
// objects exclude each other also within one process.
class FileLock {
public:
    FileLock() = default;
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Opens an existing file for reading and writing, sharing it with everyone. On success the
    // handle held before is closed; on failure it is kept.
    SystemCode open(const char* path) noexcept;

    // Takes the lock over the whole file; waits while another holder has it.
    SystemCode lock() noexcept;

    SystemCode unlock() noexcept;

    void close() noexcept;

private:
    std::intptr_t handle_ = -1;
};

} // namespace platform

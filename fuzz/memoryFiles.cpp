#include "fuzz/memoryFiles.h"

#include <algorithm>
#include <cstring>

namespace fuzz {

std::FILE* MemoryFiles::open(const char*, const char* mode) noexcept {
    position_ = 0;
    if (mode[0] == 'w') {
        content.clear();
        ++time_;
    }
    cookie_io_functions_t functions{};
    functions.read = [](void* cookie, char* buffer, std::size_t size) {
        auto& file = *static_cast<MemoryFiles*>(cookie);
        const std::size_t got = std::min(size, file.content.size() - file.position_);
        std::memcpy(buffer, file.content.data() + file.position_, got);
        file.position_ += got;
        return static_cast<ssize_t>(got);
    };
    functions.seek = [](void* cookie, off64_t* offset, int whence) {
        if (whence != SEEK_SET || *offset < 0)
            return -1;
        auto& file = *static_cast<MemoryFiles*>(cookie);
        file.position_ = std::min(static_cast<std::size_t>(*offset), file.content.size());
        return 0;
    };
    std::FILE* const stream = fopencookie(this, "rb", functions);
    if (stream != nullptr)
        std::setvbuf(stream, nullptr, _IONBF, 0); // there is nothing to save calls of
    return stream;
}

bool MemoryFiles::write(std::FILE*, const char* data, std::size_t size) noexcept {
    content.append(data, size);
    return true;
}

bool MemoryFiles::flush(std::FILE*) noexcept {
    return true;
}

bool MemoryFiles::force(std::FILE*) noexcept {
    return true;
}

bool MemoryFiles::close(std::FILE* stream) noexcept {
    return std::fclose(stream) == 0;
}

MemoryFiles::Creation MemoryFiles::createExclusively(const char*) noexcept {
    return Creation::created;
}

bool MemoryFiles::rename(const char*, const char*) noexcept {
    return true;
}

bool MemoryFiles::remove(const char*) noexcept {
    content.clear();
    return true;
}

std::optional<platform::FileTime> MemoryFiles::lastWriteTime(const char*) noexcept {
    return time_;
}

void MemoryFiles::pause(std::chrono::milliseconds) noexcept {}

} // namespace fuzz

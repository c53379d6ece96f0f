#include "fuzz/memoryFiles.h"

#include <algorithm>
#include <cstring>

namespace fuzz {

using Code = MemoryFiles::Code;

constexpr Code kDone = platform::kNoSystemError;

ini::IniOpened MemoryFiles::open(const char*, const char* mode) noexcept {
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
    return {stream};
}

Code MemoryFiles::write(std::FILE*, const char* data, std::size_t size) noexcept {
    content.replace(position_, size, data, size);
    position_ += size;
    return kDone;
}

Code MemoryFiles::flush(std::FILE*) noexcept {
    return kDone;
}

Code MemoryFiles::force(std::FILE*) noexcept {
    return kDone;
}

Code MemoryFiles::close(std::FILE* stream) noexcept {
    std::fclose(stream);
    return kDone;
}

ini::IniOpened MemoryFiles::openInPlace(const char* path) noexcept {
    ++time_;
    return open(path, "r+b");
}

Code MemoryFiles::secureSpace(std::FILE*, std::uint64_t) noexcept {
    return kDone;
}

std::uint64_t MemoryFiles::keepFront(std::FILE*, std::uint64_t size) noexcept {
    position_ = static_cast<std::size_t>(size);
    return size;
}

Code MemoryFiles::cutBehind(std::FILE*, std::uint64_t size) noexcept {
    content.resize(static_cast<std::size_t>(size));
    return kDone;
}

Code MemoryFiles::followLinks(std::string&) noexcept {
    return kDone;
}

ini::IniCreated MemoryFiles::createExclusively(const char* path) noexcept {
    return {open(path, "wb"), false, true};
}

Code MemoryFiles::takeAccess(std::FILE*, std::FILE*) noexcept {
    return kDone;
}

Code MemoryFiles::rename(const char*, const char*) noexcept {
    return kDone;
}

Code MemoryFiles::remove(const char*) noexcept {
    content.clear();
    return kDone;
}

std::optional<platform::FileTime> MemoryFiles::lastWriteTime(const char*) noexcept {
    return time_;
}

void MemoryFiles::pause(std::chrono::milliseconds) noexcept {}

} // namespace fuzz

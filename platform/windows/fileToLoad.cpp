#include "platform/fileToLoad.h"

#include "platform/stream.h"

#include <io.h>

#include <cstdio>

namespace platform {

namespace {

std::FILE* streamOf(std::intptr_t handle) noexcept {
    return reinterpret_cast<std::FILE*>(handle);
}

} // namespace

FileToLoad::FileToLoad(const char* path) noexcept {
    Stream stream = openStream(path, "rb");
    if (!stream) {
        code_ = lastSystemCode();
        return;
    }
    // What is read in large pieces needs no buffer between.
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    const long long size = _filelengthi64(_fileno(stream.get()));
    size_ = size > 0 ? static_cast<std::uint64_t>(size) : 0;
    time_ = platform::lastWriteTime(path);
    handle_ = reinterpret_cast<std::intptr_t>(stream.release());
    isOpen_ = true;
}

FileToLoad::~FileToLoad() {
    if (isOpen_)
        std::fclose(streamOf(handle_));
}

std::size_t FileToLoad::read(char* to, std::size_t size) noexcept {
    const std::size_t got = readStream(streamOf(handle_), to, size);
    done_ += got;
    hasFailed_ = hasFailed_ || std::ferror(streamOf(handle_)) != 0;
    return got;
}

} // namespace platform

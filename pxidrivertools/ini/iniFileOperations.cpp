#include "pxidrivertools/ini/iniFileOperations.h"

#include "platform/fileInPlace.h"
#include "platform/fileReplacement.h"
#include "platform/pause.h"
#include "platform/stream.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

using platform::SystemCode;

IniOpened opened(platform::Stream stream) noexcept {
    if (!stream)
        return {nullptr, platform::lastSystemCode()};
    return {stream.release()};
}

// C libraries do not always tell the system why they failed.
SystemCode codeOf(bool isDone) noexcept {
    if (isDone)
        return platform::kNoSystemError;
    const SystemCode code = platform::lastSystemCode();
    return code != platform::kNoSystemError ? code : platform::failedTransferCode();
}

class SystemFileOperations final : public IniFileOperations {
public:
    IniOpened open(const char* path, const char* mode) noexcept override {
        return opened(platform::openStream(path, mode));
    }
    Code write(std::FILE* stream, const char* data, std::size_t size) noexcept override {
        return codeOf(platform::writeStream(stream, data, size) == size);
    }
    Code flush(std::FILE* stream) noexcept override {
        return codeOf(platform::flushStream(stream));
    }
    Code force(std::FILE* stream) noexcept override { return platform::forceToDisk(stream); }
    Code close(std::FILE* stream) noexcept override {
        return codeOf(platform::closeStream(stream));
    }
    IniOpened openInPlace(const char* path) noexcept override {
        return opened(platform::openInPlace(path));
    }
    Code secureSpace(std::FILE* stream, std::uint64_t size) noexcept override {
        return platform::secureSpace(stream, size);
    }
    std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept override {
        return platform::keepFront(stream, size);
    }
    Code cutBehind(std::FILE* stream, std::uint64_t size) noexcept override {
        return platform::cutBehind(stream, size);
    }
    Code followLinks(std::string& path) noexcept override { return platform::followLinks(path); }
    IniCreated createExclusively(const char* path) noexcept override {
        platform::NewFile file = platform::createExclusively(path);
        return {{file.stream.release(), file.code}, platform::isNameTaken(file.code), file.isThere};
    }
    Code takeAccess(std::FILE* from, std::FILE* to) noexcept override {
        return platform::takeAccess(from, to);
    }
    Code rename(const char* from, const char* to) noexcept override {
        return platform::renameReplacing(from, to);
    }
    Code remove(const char* path) noexcept override { return platform::removeFile(path); }
    std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept override {
        return platform::lastWriteTime(path);
    }
    void pause(std::chrono::milliseconds time) noexcept override { platform::pause(time); }
};

} // namespace

IniFileOperations& systemFileOperations() noexcept {
    static SystemFileOperations operations;
    return operations;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

#include "pxidrivertools/ini/iniFileOperations.h"

#include "platform/stream.h"

#include <thread>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

class SystemFileOperations final : public IniFileOperations {
public:
    std::FILE* open(const char* path, const char* mode) noexcept override {
        return platform::openStream(path, mode).release();
    }
    bool write(std::FILE* stream, const char* data, std::size_t size) noexcept override {
        return platform::writeStream(stream, data, size) == size;
    }
    bool flush(std::FILE* stream) noexcept override { return platform::flushStream(stream); }
    bool force(std::FILE* stream) noexcept override {
        return platform::forceToDisk(stream) == platform::kNoSystemError;
    }
    bool close(std::FILE* stream) noexcept override { return platform::closeStream(stream); }
    Creation createExclusively(const char* path) noexcept override {
        const platform::SystemCode code = platform::createExclusively(path);
        if (code == platform::kNoSystemError)
            return Creation::created;
        return platform::isNameTaken(code) ? Creation::nameTaken : Creation::failed;
    }
    bool rename(const char* from, const char* to) noexcept override {
        return platform::renameReplacing(from, to) == platform::kNoSystemError;
    }
    bool remove(const char* path) noexcept override {
        return platform::removeFile(path) == platform::kNoSystemError;
    }
    std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept override {
        return platform::lastWriteTime(path);
    }
    void pause(std::chrono::milliseconds time) noexcept override {
        std::this_thread::sleep_for(time);
    }
};

} // namespace

IniFileOperations& systemFileOperations() noexcept {
    static SystemFileOperations operations;
    return operations;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

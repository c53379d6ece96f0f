#include "pxidrivertools/ini/iniSafeWrite.h"

#include "pxidrivertools/ini/iniWrite.h"

#include <new>
#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::string_view kExtension = "TMP";

} // namespace

std::string numberedTemporary(const platform::PathParts& target, int number) {
    return target.drive + target.directory + "ini$$" + std::to_string(number) + "." +
           std::string(kExtension);
}

std::string siblingTemporary(const std::string& target) {
    const std::size_t separator = target.find_last_of("\\/");
    const std::size_t dot = target.rfind('.');
    const bool replaces = separator != std::string::npos && dot != std::string::npos &&
                          dot > separator && target.substr(dot + 1) != kExtension;
    return (replaces ? target.substr(0, dot) : target) + "." + std::string(kExtension);
}

namespace {

// Whether the target can be written, found out before anything is. Mode "wb" would empty an
// existing target, so it is left for the case that neither opening nor looking finds one.
IniStatus probeTarget(const std::string& target, IniFileOperations& files) noexcept {
    std::FILE* stream = files.open(target.c_str(), "r+b");
    const bool exists = stream != nullptr || files.lastWriteTime(target.c_str()).has_value();
    if (!exists)
        stream = files.open(target.c_str(), "wb");
    if (stream == nullptr)
        return kIniNoAccess;
    const bool closed = files.close(stream);
    const bool removed = exists || files.remove(target.c_str());
    return closed && removed ? kIniDone : kIniNoAccess;
}

IniStatus createNumbered(const std::string& target, IniFileOperations& files,
                         std::string& temporary) {
    const platform::PathParts parts = platform::splitPath(target);
    for (int number = 0; number < kTemporaryNames; ++number) {
        temporary = numberedTemporary(parts, number);
        switch (files.createExclusively(temporary.c_str())) {
        case IniFileOperations::Creation::created:
            return kIniDone;
        case IniFileOperations::Creation::nameTaken:
            break;
        case IniFileOperations::Creation::failed:
            return kIniNoTemporary;
        }
    }
    return kIniTemporariesTaken;
}

// Writes and closes the file at `path`; removes it when that fails.
IniStatus writeFile(const IniFileObject& file, const std::string& path, bool isOurs,
                    IniFileOperations& files) noexcept {
    std::FILE* const stream = files.open(path.c_str(), "wb");
    if (stream == nullptr) {
        if (isOurs)
            files.remove(path.c_str());
        return kIniOpenFailed;
    }
    std::setvbuf(stream, nullptr, _IONBF, 0); // the output has a buffer of its own
    IniOutput output(files, stream);
    IniStatus status = writeContents(file, output);
    if (status == kIniDone && file.write.flush && !files.force(stream))
        status = kIniWriteFailed;
    if (!files.close(stream) && status == kIniDone)
        status = kIniWriteFailed;
    if (status != kIniDone)
        files.remove(path.c_str());
    return status;
}

IniStatus writeThroughTemporary(const IniFileObject& file, const std::string& target,
                                IniFileOperations& files) {
    IniStatus status = probeTarget(target, files);
    if (status != kIniDone)
        return status;
    const bool numbered = file.write.sameDirectoryTemporary;
    std::string temporary;
    if (numbered)
        status = createNumbered(target, files, temporary);
    else
        temporary = siblingTemporary(target);
    if (status == kIniDone)
        status = writeFile(file, temporary, numbered, files);
    if (status != kIniDone)
        return status;
    if (files.rename(temporary.c_str(), target.c_str()))
        return kIniDone;
    files.remove(temporary.c_str());
    return kIniNoAccess;
}

} // namespace

IniStatus writeIni(IniFileObject& file, const char* path, IniFileOperations& files) noexcept {
    if (*path == '\0')
        return kIniInvalid;
    // Before the first file is touched: what can fail for want of memory.
    IniText remembered;
    if (!copyText(file.memory, path, remembered))
        return kIniOutOfMemory;
    IniStatus status = kIniDone;
    try {
        const std::string target(path);
        status = file.write.safeWrite ? writeThroughTemporary(file, target, files)
                                      : writeFile(file, target, false, files);
    } catch (const std::bad_alloc&) {
        status = kIniOutOfMemory;
    }
    if (status != kIniDone) {
        releaseText(file.memory, remembered);
        return status;
    }
    releaseText(file.memory, file.path);
    file.path = remembered;
    // A file that somebody removed at once has no time; it counts as changed from then on.
    file.lastWriteTime = files.lastWriteTime(path).value_or(0);
    return kIniDone;
}

IniStatus readTimestamp(const char* path, platform::FileTime& time,
                        IniFileOperations& files) noexcept {
    if (*path == '\0')
        return kIniNoTimestampPath;
    const std::optional<platform::FileTime> found = files.lastWriteTime(path);
    if (!found)
        return kIniInvalid;
    time = *found;
    return kIniDone;
}

IniStatus rememberFile(IniFileObject& file, std::string_view path,
                       platform::FileTime time) noexcept {
    IniText copy;
    if (!copyText(file.memory, path, copy))
        return kIniOutOfMemory;
    releaseText(file.memory, file.path);
    file.path = copy;
    file.lastWriteTime = time;
    return kIniDone;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

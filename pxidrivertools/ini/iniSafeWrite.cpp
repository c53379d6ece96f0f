#include "pxidrivertools/ini/iniSafeWrite.h"

#include "platform/systemCode.h"
#include "pxidrivertools/ini/iniSinks.h"
#include "pxidrivertools/ini/iniWrite.h"

#include <cstdint>
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

// One write of a file object: what each step needs, and the system's reason for the failure.
class Saving {
public:
    Saving(IniFileObject& file, IniFileOperations& files) noexcept
        : file_(file), files_(files), text_(file.memory), other_(file.memory) {}
    ~Saving() { closeExisting(); }
    Saving(const Saving&) = delete;
    Saving& operator=(const Saving&) = delete;

    // A target that cannot be opened, or has no room, is left as it is; one that fails while it is
    // being written is removed rather than left cut.
    IniStatus inPlace(const char* path, IniRewrite rewrite) noexcept {
        const IniOpened old = files_.open(path, "rb");
        IniStatus status = measure(old.stream);
        if (old.stream != nullptr)
            files_.close(old.stream);
        if (status == kIniNameTooLong)
            files_.remove(path);
        if (status != kIniDone)
            return status;
        if (isSame_ && rewrite == IniRewrite::ifDifferent)
            return kIniDone;
        return overwrite(path, isSame_ ? 0 : same_);
    }

    // Raises std::bad_alloc.
    IniStatus throughTemporary(std::string target) {
        if (const Code code = files_.followLinks(target); failed(code))
            return fail(kIniNoAccess, code);
        IniStatus status = probe(target);
        std::string temporary;
        if (status == kIniDone)
            status = measure(nullptr);
        if (status == kIniDone)
            status = file_.write.sameDirectoryTemporary
                         ? writeNumbered(target, temporary)
                         : writeSibling(temporary = siblingTemporary(target));
        closeExisting(); // what is open cannot be replaced everywhere
        if (status != kIniDone)
            return status;
        const Code code = files_.rename(temporary.c_str(), target.c_str());
        if (!failed(code))
            return kIniDone;
        files_.remove(temporary.c_str());
        return fail(kIniNoAccess, code);
    }

private:
    using Code = platform::SystemCode;

    static bool failed(Code code) noexcept { return code != platform::kNoSystemError; }

    IniStatus fail(IniStatus status, Code code) noexcept {
        file_.failure = code;
        return status;
    }

    // What is to be written, and how it compares with what an open file, or null, holds.
    IniStatus measure(std::FILE* old) noexcept {
        if (text_.bytes().empty() || other_.bytes().empty())
            return fail(kIniOutOfMemory, platform::outOfMemoryCode());
        if (old != nullptr)
            std::setvbuf(old, nullptr, _IONBF, 0);
        IniComparison comparison(old, other_.bytes());
        IniOutput output(comparison, text_.bytes());
        const IniStatus status = writeContents(file_, output);
        size_ = comparison.size();
        same_ = comparison.same();
        isSame_ = comparison.isSame();
        return status;
    }

    // The first `same` bytes stay.
    IniStatus overwrite(const char* path, std::uint64_t same) noexcept {
        const IniOpened opened = files_.openInPlace(path);
        if (opened.stream == nullptr)
            return fail(kIniOpenFailed, opened.code);
        if (const Code code = files_.secureSpace(opened.stream, size_); failed(code)) {
            files_.close(opened.stream);
            noRoom_ = true;
            return fail(kIniWriteFailed, code);
        }
        return write(opened.stream, path, same);
    }

    IniStatus writeSibling(const std::string& temporary) noexcept {
        const IniStatus status = overwrite(temporary.c_str(), 0);
        if (noRoom_)
            files_.remove(temporary.c_str());
        return status;
    }

    // Writes what is behind the first `same` bytes, as far as the file still has these, and closes
    // the stream, which is fresh from opening; removes the file when that fails.
    IniStatus write(std::FILE* stream, const char* path, std::uint64_t same) noexcept {
        std::setvbuf(stream, nullptr, _IONBF, 0); // the output has a buffer of its own
        IniFileSink sink(files_, stream, files_.keepFront(stream, same));
        IniOutput output(sink, text_.bytes());
        IniStatus status = writeContents(file_, output);
        Code code = sink.code();
        const auto step = [&](auto work) {
            if (!failed(code))
                code = work();
        };
        step([&] { return files_.flush(stream); });
        step([&] { return files_.cutBehind(stream, size_); });
        if (file_.write.flush)
            step([&] { return files_.force(stream); });
        if (const Code closed = files_.close(stream); !failed(code))
            code = closed;
        if (failed(code) && status == kIniDone)
            status = kIniWriteFailed;
        if (status == kIniDone)
            return kIniDone;
        files_.remove(path);
        return fail(status, code);
    }

    // Whether the target can be written, found out before anything is; it stays open, if it is
    // there. Writing anew would make a missing target, so that is left for the case that neither
    // opening nor looking finds one.
    IniStatus probe(const std::string& target) noexcept {
        const IniOpened opened = files_.open(target.c_str(), "r+b");
        existing_ = opened.stream;
        if (existing_ != nullptr)
            return kIniDone;
        if (files_.lastWriteTime(target.c_str()))
            return fail(kIniNoAccess, opened.code);
        const IniOpened made = files_.openInPlace(target.c_str());
        if (made.stream == nullptr)
            return fail(kIniNoAccess, made.code);
        const Code closed = files_.close(made.stream);
        const Code removed = files_.remove(target.c_str());
        if (failed(closed) || failed(removed))
            return fail(kIniNoAccess, failed(closed) ? closed : removed);
        return kIniDone;
    }

    // Writes a file beside the target under the first number that nobody has taken; it may be read
    // and written by whoever may do so with the existing one.
    IniStatus writeNumbered(const std::string& target, std::string& temporary) {
        const platform::PathParts parts = platform::splitPath(target);
        for (int number = 0; number < kTemporaryNames; ++number) {
            temporary = numberedTemporary(parts, number);
            const IniCreated created = files_.createExclusively(temporary.c_str());
            if (created.stream != nullptr)
                return writeCreated(created.stream, temporary.c_str());
            if (created.isThere) {
                files_.remove(temporary.c_str());
                return fail(kIniOpenFailed, created.code);
            }
            if (!created.isNameTaken)
                return fail(kIniNoTemporary, created.code);
        }
        return kIniTemporariesTaken;
    }

    IniStatus writeCreated(std::FILE* stream, const char* path) noexcept {
        IniStatus status = kIniNoAccess;
        Code code =
            existing_ == nullptr ? platform::kNoSystemError : files_.takeAccess(existing_, stream);
        if (!failed(code)) {
            status = kIniWriteFailed;
            code = files_.secureSpace(stream, size_);
        }
        if (!failed(code))
            return write(stream, path, 0);
        files_.close(stream);
        files_.remove(path);
        return fail(status, code);
    }

    void closeExisting() noexcept {
        if (existing_ != nullptr)
            files_.close(existing_);
        existing_ = nullptr;
    }

    IniFileObject& file_;
    IniFileOperations& files_;
    std::FILE* existing_ = nullptr; // what a safe write is to replace
    IniBuffer text_;
    IniBuffer other_;
    std::uint64_t size_ = 0; // of the text, in bytes
    std::uint64_t same_ = 0; // of these stand alike at the front of the file
    bool isSame_ = false;    // the file holds the text and no more
    bool noRoom_ = false;    // there was none for the text, and the file was left alone
};

} // namespace

IniStatus writeIni(IniFileObject& file, const char* path, IniFileOperations& files,
                   IniRewrite rewrite) noexcept {
    file.failure = platform::kNoSystemError;
    if (*path == '\0')
        return kIniInvalid;
    // Before the first file is touched: what can fail for want of memory.
    IniText remembered;
    IniStatus status = kIniOutOfMemory;
    if (!copyText(file.memory, path, remembered)) {
        file.failure = platform::outOfMemoryCode();
        return status;
    }
    try {
        Saving saving(file, files);
        status =
            file.write.safeWrite ? saving.throughTemporary(path) : saving.inPlace(path, rewrite);
    } catch (const std::bad_alloc&) {
        file.failure = platform::outOfMemoryCode();
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

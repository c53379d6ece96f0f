#include "tavctl/words/resultFile.h"

#include "platform/entryType.h"
#include "platform/file.h"
#include "platform/fileReplacement.h"
#include "platform/stream.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/newFileBeside.h"
#include "tavctl/words/print.h"

#include <cstdio>
#include <filesystem>
#include <utility>

namespace tavctl {

namespace {

using platform::SystemCode;

[[noreturn]] void fail(const std::string& file, std::string reason) {
    throw FailureException({"write result", file, std::move(reason), {}, {}});
}

[[noreturn]] void fail(const std::string& file, SystemCode code) {
    fail(file, platform::systemMessage(code));
}

// Writes, forces nothing onto the disk, and closes.
SystemCode writeAndClose(platform::Stream stream, const std::string& text) {
    SystemCode code = platform::kNoSystemError;
    if (platform::writeStream(stream.get(), text.data(), text.size()) != text.size())
        code = platform::lastSystemCode();
    if (!platform::closeStream(stream.release()) && code == platform::kNoSystemError)
        code = platform::lastSystemCode();
    return code;
}

void writeInto(const std::string& file, const std::string& text) {
    platform::Stream stream = platform::openStream(file.c_str(), "wb");
    if (!stream)
        fail(file, platform::lastSystemCode());
    if (const SystemCode code = writeAndClose(std::move(stream), text);
        code != platform::kNoSystemError)
        fail(file, code);
}

SystemCode takeAccess(const std::string& from, std::FILE* to) {
    const platform::Stream old = platform::openStream(from.c_str(), "rb");
    return old ? platform::takeAccess(old.get(), to) : platform::lastSystemCode();
}

void writeBeside(std::string target, const std::string& text, bool isPublic) {
    const std::string named = target;
    if (const SystemCode code = platform::followLinks(target); code != platform::kNoSystemError)
        fail(named, code);
    const bool isNew = platform::typeOfEntry(target) == std::filesystem::file_type::not_found;
    Removal removal;
    using Access = platform::NewFileAccess;
    const Access access = isPublic ? Access::everybodyReads
                          : isNew  ? Access::usual
                                   : Access::ownerOnly;
    auto [made, temporary] = createBeside(target, access, removal);
    SystemCode code = made.code;
    if (made.stream) {
        if (!isNew && !isPublic)
            code = takeAccess(target, made.stream.get());
        const SystemCode written = writeAndClose(std::move(made.stream), text);
        if (code == platform::kNoSystemError)
            code = written;
    } else if (!made.isThere) {
        fail(named, code);
    }
    if (code == platform::kNoSystemError)
        code = platform::renameReplacing(temporary.c_str(), target.c_str());
    if (code == platform::kNoSystemError)
        return;
    platform::removeFile(temporary.c_str());
    fail(named, code);
}

} // namespace

void requireFree(const ResultTarget& target) {
    if (!target.isStandardOutput() && !target.replace &&
        platform::typeOfEntry(target.file) == std::filesystem::file_type::regular)
        fail(target.file, "the file exists; --force replaces it");
}

void writeResult(const std::string& text, const ResultTarget& target) {
    if (target.isStandardOutput()) {
        print(text);
        return;
    }
    requireFree(target);
    switch (platform::typeOfEntry(target.file)) {
    case std::filesystem::file_type::regular:
    case std::filesystem::file_type::not_found:
        writeBeside(target.file, text, target.isPublic);
        break;
    default:
        writeInto(target.file, text);
    }
}

} // namespace tavctl

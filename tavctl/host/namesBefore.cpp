#include "tavctl/host/namesBefore.h"

#include "platform/file.h"
#include "platform/stream.h"
#include "platform/utf8Path.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/newFileBeside.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using platform::kNoSystemError;
using platform::SystemCode;

// A transfer, on the heap: stacks may be small.
constexpr std::size_t kPiece = 65536;

// C libraries do not always tell the system why they failed.
SystemCode codeOf(bool isDone) {
    if (isDone)
        return kNoSystemError;
    const SystemCode code = platform::lastSystemCode();
    return code != kNoSystemError ? code : platform::failedTransferCode();
}

// The stream of a file; null when there is none. Raises FailureException for one that is there and
// cannot be read.
platform::Stream openIfAny(const std::string& file) {
    // Only so does opening pass over links that somebody else may have put there.
    platform::Stream stream = platform::openStream(file.c_str(), "r+b");
    const SystemCode code = platform::lastSystemCode();
    if (!stream && platform::lastWriteTime(file.c_str()))
        failBySystem("read terminal names", file, code);
    return stream;
}

bool isSame(std::FILE* a, std::FILE* b) {
    std::vector<char> ofA(kPiece);
    std::vector<char> ofB(kPiece);
    std::size_t size = 0;
    do {
        size = a == nullptr ? 0 : platform::readStream(a, ofA.data(), ofA.size());
        const std::size_t other =
            b == nullptr ? 0 : platform::readStream(b, ofB.data(), ofB.size());
        if (size != other || std::memcmp(ofA.data(), ofB.data(), size) != 0)
            return false;
    } while (size != 0);
    return true;
}

// A file that waits beside its place, whole and on the disk, until it is put there; one that is
// not is removed.
class WaitingFile {
public:
    // Holds what `content` has from its beginning on, with the access of the file `access`; each
    // null for want of one.
    WaitingFile(const std::string& target, std::FILE* content, std::FILE* access)
        : target_(target) {
        auto [made, name] = createBeside(target, platform::NewFileAccess::ownerOnly, removal_);
        if (made.stream || made.isThere)
            name_ = std::move(name);
        SystemCode code = made.code;
        if (made.stream)
            code = fill(std::move(made.stream), content, access);
        if (code == kNoSystemError)
            return;
        remove();
        failBySystem("keep terminal names", target_, code);
    }
    ~WaitingFile() { remove(); }
    WaitingFile(const WaitingFile&) = delete;
    WaitingFile& operator=(const WaitingFile&) = delete;

    // On Windows no file of either name may be open.
    void putInPlace() {
        const SystemCode code = platform::renameReplacing(name_.c_str(), target_.c_str());
        if (code != kNoSystemError)
            failBySystem("keep terminal names", target_, code);
        name_.clear();
    }

private:
    static SystemCode fill(platform::Stream stream, std::FILE* content, std::FILE* access) {
        SystemCode code =
            access == nullptr ? kNoSystemError : platform::takeAccess(access, stream.get());
        if (code == kNoSystemError && content != nullptr)
            code = copy(content, stream.get());
        if (code == kNoSystemError)
            code = codeOf(platform::flushStream(stream.get()));
        if (code == kNoSystemError)
            code = platform::forceToDisk(stream.get());
        const bool isClosed = platform::closeStream(stream.release());
        return code == kNoSystemError ? codeOf(isClosed) : code;
    }

    static SystemCode copy(std::FILE* from, std::FILE* to) {
        std::rewind(from);
        std::vector<char> piece(kPiece);
        while (const std::size_t size = platform::readStream(from, piece.data(), piece.size())) {
            if (platform::writeStream(to, piece.data(), size) != size)
                return codeOf(false);
        }
        return codeOf(std::ferror(from) == 0);
    }

    void remove() noexcept {
        if (!name_.empty())
            platform::removeFile(name_.c_str());
    }

    Removal removal_; // goes after the file itself has
    std::string target_;
    std::string name_; // empty: it is in its place, or was never made
};

} // namespace

fs::path namesBefore(const fs::path& nameFile) {
    fs::path before = nameFile;
    before += ".before";
    return before;
}

void keepNamesBefore(const fs::path& nameFile) {
    const platform::Stream names = openIfAny(platform::utf8Text(nameFile));
    WaitingFile(platform::utf8Text(namesBefore(nameFile)), names.get(), names.get()).putInPlace();
}

void undoNames(const fs::path& nameFile) {
    const std::string before = platform::utf8Text(namesBefore(nameFile));
    std::string target = platform::utf8Text(nameFile);
    const auto refuse = [&](const char* reason) {
        throw FailureException({"undo the last change of terminal names",
                                platform::utf8Text(nameFile),
                                reason,
                                {},
                                {}},
                               ExitStatus::problemFound);
    };
    platform::Stream names = openIfAny(target);
    platform::Stream kept = openIfAny(before);
    if (!kept)
        refuse("there is nothing to undo: no file \"zotavpci.ini.before\" is kept beside it");
    if (isSame(names.get(), kept.get()))
        refuse("there is nothing to undo: what is kept from before is the same");
    if (const SystemCode code = platform::followLinks(target); code != kNoSystemError)
        failBySystem("write terminal names", platform::utf8Text(nameFile), code);
    // At every moment each of the two contents has a file of its own.
    WaitingFile toKeep(before, names.get(), names ? names.get() : kept.get());
    WaitingFile toStore(target, kept.get(), names ? names.get() : kept.get());
    names.reset();
    kept.reset();
    toStore.putInPlace();
    toKeep.putInPlace();
}

} // namespace tavctl

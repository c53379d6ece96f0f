#include "tavctl/host/nameFile.h"

#include "platform/earlyEnd.h"
#include "platform/file.h"
#include "platform/pause.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/escapedText.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "pxidrivertools/ini/iniSinks.h"
#include "pxidrivertools/ini/iniUpdate.h"
#include "pxidrivertools/ini/iniWrite.h"
#include "source/cPciTavFilesystem.h"
#include "source/cTerminalNameDb.h"
#include "source/patientOpening.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <new>
#include <set>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

IniFileOwner makeFile() {
    IniFileOwner file(createIniFile());
    if (!file)
        throw std::bad_alloc();
    file->caseSensitive = true;
    file->write.flush = true;
    file->write.maximumLineLength = kNoMaximumLineLength;
    return file;
}

const char* wordsOf(IniStatus status) {
    switch (status) {
    case kIniWideEncoding:
        return "it is UTF-16 or UTF-32; UTF-8 is expected";
    case kIniTemporariesTaken:
        return "every name for a temporary file beside it is taken";
    case kIniOutOfMemory:
        return "out of memory";
    default:
        return "it cannot be read";
    }
}

// Null only where the file is missing and may be.
platform::Stream openToRead(const std::string& path, bool mayBeMissing) {
    platform::Stream stream = platform::openStream(path.c_str(), "rb");
    const platform::SystemCode code = platform::lastSystemCode();
    const auto isMissing = [&] {
        return code == platform::kNotFound || !platform::lastWriteTime(path.c_str());
    };
    if (!stream && !(mayBeMissing && isMissing()))
        failBySystem("read terminal names", path, code);
    return stream;
}

void load(IniFileObject& file, std::FILE* stream, const std::string& path) {
    const IniStatus status = loadIni(file, stream);
    if (status != kIniDone)
        throw FailureException({"read terminal names", path, wordsOf(status), {}, {}});
}

std::string valueOf(IniFileObject& file, IniSection& section, const char* key) {
    const IniKey* const found = findKey(file, section, key);
    return found == nullptr ? std::string() : unescapeText(found->value.view());
}

template <typename Use>
void forEachSection(IniFileObject& file, Use use) {
    for (IniNamed* const record : elementsOf(file.sections))
        use(static_cast<IniSection&>(*record));
}

} // namespace

NameLock::NameLock(const fs::path& nameFile, Purpose purpose) {
    const std::string lockFile = platform::utf8Text(nameFile.parent_path() / kNameLockFile);
    if (purpose == Purpose::writing)
        cPciTavFilesystem().EnsureFileExists(lockFile);
    else if (!platform::lastWriteTime(lockFile.c_str()))
        return;
    const Progress progress("waiting for whoever uses the terminal names");
    platform::SystemCode code = openPatiently([&] { return lock_.open(lockFile.c_str()); },
                                              &platform::isSharingViolation, &platform::pause);
    if (purpose == Purpose::reading && platform::isRefusal(code))
        return;
    if (code == platform::kNoSystemError)
        code = lock_.lock();
    isHeld_ = code == platform::kNoSystemError;
    if (!isHeld_)
        failBySystem("lock terminal names", lockFile, code);
}

std::string whyNotStorable(const fs::path& nameFile) {
    if (nameFile.empty())
        return {};
    const std::string lockFile = platform::utf8Text(nameFile.parent_path() / kNameLockFile);
    const int made = cPciTavFilesystem().EnsureFileExists(lockFile);
    platform::SystemCode code =
        made > 0 ? static_cast<platform::SystemCode>(made) : platform::kNoSystemError;
    if (platform::FileLock lock; code == platform::kNoSystemError)
        code = lock.open(lockFile.c_str());
    return platform::isRefusal(code) || platform::isOutOfRoom(code) ? platform::systemMessage(code)
                                                                    : std::string();
}

NameStoring::NameStoring(const fs::path& nameFile) {
    try {
        if (!nameFile.empty())
            const NameLock turn(nameFile, NameLock::Purpose::reading);
    } catch (const FailureException&) {
        // Whoever is to store tells of it in its own words.
    }
    held_.emplace();
}

NameFile::NameFile() : file_(makeFile()) {}

NameFile::NameFile(const fs::path& path, bool mayBeMissing) : file_(makeFile()) {
    const std::string name = platform::utf8Text(path);
    const platform::Stream stream = openToRead(name, mayBeMissing);
    if (!stream)
        return;
    load(*file_, stream.get(), name);
    forEachSection(*file_, [&](IniSection& section) {
        entries_.push_back({std::string(section.name.view()),
                            valueOf(*file_, section, kNameKeyModel),
                            valueOf(*file_, section, kNameKeyTerminalName), section.line});
    });
    const IniFileOwner unmerged = makeFile();
    unmerged->mergeDuplicates = false;
    load(*unmerged, stream.get(), name);
    std::set<std::string> seen;
    forEachSection(*unmerged, [&](const IniSection& section) {
        const std::string slotPath(section.name.view());
        if (!seen.insert(slotPath).second)
            repeated_.push_back({slotPath, section.line});
    });
}

std::size_t NameFile::entryOf(const std::string& slotPath) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const NameEntry& entry) {
        return entry.slotPath == slotPath;
    });
    if (found == entries_.end() || slotPath.empty())
        throw FailureException(
            {"change terminal names", slotPath, "no entry is stored for this slot", {}, {}});
    return static_cast<std::size_t>(found - entries_.begin());
}

void NameFile::rename(const std::string& slotPath, const std::string& terminalName) {
    NameEntry& entry = entries_[entryOf(slotPath)];
    std::string copy = terminalName;
    const IniStatus status =
        setValue(*file_, slotPath, kNameKeyTerminalName, escapeText(terminalName), kNoQuote);
    if (status != kIniStored)
        throw std::bad_alloc();
    entry.terminalName.swap(copy);
}

void NameFile::forget(const std::string& slotPath) {
    const std::size_t entry = entryOf(slotPath);
    if (IniSection* const section = findSection(*file_, slotPath))
        removeSection(*file_, *section);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(entry));
}

bool NameFile::isContentOf(const fs::path& target) const {
    const platform::Stream stream = platform::openStream(platform::utf8Text(target).c_str(), "rb");
    if (!stream)
        return false;
    const IniBuffer text(file_->memory);
    const IniBuffer other(file_->memory);
    if (text.bytes().empty() || other.bytes().empty())
        throw std::bad_alloc();
    IniComparison comparison(stream.get(), other.bytes());
    IniOutput output(comparison, text.bytes());
    return writeContents(*file_, output) == kIniDone && comparison.isSame();
}

void NameFile::write(const fs::path& target) const {
    const platform::EarlyEndHeldBack untilWritten;
    const std::string name = platform::utf8Text(target);
    const IniStatus status = writeIni(*file_, name.c_str());
    if (status != kIniDone)
        throw FailureException({"write terminal names",
                                name,
                                file_->failure == platform::kNoSystemError
                                    ? wordsOf(status)
                                    : platform::systemMessage(file_->failure),
                                {},
                                {}});
}

} // namespace tavctl

#include "source/cPciTavFilesystem.h"

#include "platform/directorySearch.h"
#include "platform/file.h"
#include "pxidrivertools/configuration.h"
#include "quil/setError.h"
#include "quil/zoerr.h"

#include <boost/interprocess/errors.hpp>
#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <new>
#include <thread>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZOQUIL000::siteHere;
using nZOQUIL000::tErrorStatus;
using platform::SearchOutcome;
using platform::SystemCode;

constexpr const char* kFile = "source\\cPciTavFilesystem";
constexpr const char* kDescriptionFolder = "PCI Hardware Descriptions";
constexpr const char* kDescriptionPattern = "*.ini";

constexpr int kLockAttempts = 3;
constexpr std::chrono::milliseconds kLockRetryDelay{250};

[[noreturn]] void raiseInterprocess(SystemCode code) {
    namespace interprocess = boost::interprocess;
    const interprocess::error_info error(
        static_cast<interprocess::native_error_t>(code)); // NOLINT(bugprone-narrowing-conversions)
    throw interprocess::interprocess_exception(error);
}

void raiseInterprocessIfFailed(SystemCode code) {
    if (code != platform::kNoSystemError)
        raiseInterprocess(code);
}

std::string readRequired(const char* valueName) {
    tErrorStatus status;
    std::string text = nZoPxiDriverTools_1_0::readConfiguration(valueName, status);
    zoerr::raiseIfFailed(status);
    return text;
}

// Sets what a listing came to; true when there is an entry.
bool isEntry(SearchOutcome outcome, tErrorStatus& status) {
    switch (outcome) {
    case SearchOutcome::entry:
        return true;
    case SearchOutcome::end:
        break;
    case SearchOutcome::nothingMatches:
        setError(status, kListWarnNothingFound, siteHere(kFile, "kListWarnNothingFound"));
        break;
    case SearchOutcome::invalidText:
        setError(status, kListErrInvalidText, siteHere(kFile, "kListErrInvalidText"));
        break;
    case SearchOutcome::conversionFailed:
        setError(status, kListErrConversion, siteHere(kFile, "kListErrConversion"));
        break;
    case SearchOutcome::failed:
        setError(status, kListErrFailed, siteHere(kFile, "kListErrFailed"));
        break;
    }
    return false;
}

void listInto(const std::string& pattern, std::vector<std::string>& files, tErrorStatus& status) {
    if (pattern.empty()) {
        setError(status, kListErrEmptyPattern, siteHere(kFile, "kListErrEmptyPattern"));
        return;
    }
    const std::size_t separator = platform::lastSeparator(pattern);
    const std::string folder =
        separator == std::string::npos ? std::string() : pattern.substr(0, separator + 1);
    platform::DirectorySearch search;
    std::string name;
    if (!isEntry(search.open(pattern), status))
        return;
    while (isEntry(search.next(name), status))
        files.push_back(folder + name);
}

} // namespace

cPciTavFilesystem::~cPciTavFilesystem() {
    cPciTavFilesystem::UnlockFile();
}

std::string cPciTavFilesystem::GetDescriptionFilePattern() {
    return readRequired(nZoPxiDriverTools_1_0::kPathValue) + kDescriptionFolder +
           platform::pathSeparator() + kDescriptionPattern;
}

std::string cPciTavFilesystem::GetConfigPath() {
    return readRequired(nZoPxiDriverTools_1_0::kConfigPathValue);
}

int cPciTavFilesystem::EnsureFileExists(const std::string& path) {
    if (platform::Stream existing = platform::openStream(path.c_str(), "r"))
        return std::fclose(existing.release());
    const platform::Stream created = platform::openStream(path.c_str(), "a");
    if (!created)
        return static_cast<int>(platform::lastSystemCode());
    return platform::restrictToOwner(path.c_str());
}

void cPciTavFilesystem::LockFile(const std::string& path) {
    if (locked_)
        return;
    SystemCode code = lockFile_.open(path.c_str());
    for (int attempt = 1; attempt < kLockAttempts && platform::isSharingViolation(code);
         ++attempt) {
        std::this_thread::sleep_for(kLockRetryDelay);
        code = lockFile_.open(path.c_str());
    }
    raiseInterprocessIfFailed(code);
    raiseInterprocessIfFailed(lockFile_.lock());
    locked_ = true;
}

void cPciTavFilesystem::UnlockFile() {
    if (!locked_)
        return;
    raiseInterprocessIfFailed(lockFile_.unlock());
    locked_ = false;
}

void cPciTavFilesystem::ListFiles(const std::string& pattern, std::vector<std::string>& files) {
    tErrorStatus status;
    try {
        listInto(pattern, files, status);
    } catch (const std::bad_alloc&) {
        setError(status, nZOQUIL000::zoquilerr_memoryFull, siteHere(kFile, "zoquilerr_memoryFull"));
    }
    zoerr::raiseIfFailed(status);
}

} // namespace nZoTavManagerPciPlugin_15_0

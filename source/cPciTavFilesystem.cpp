#include "source/cPciTavFilesystem.h"

#include "platform/directorySearch.h"
#include "platform/file.h"
#include "platform/pause.h"
#include "pxidrivertools/configuration.h"
#include "quil/setError.h"
#include "quil/zoerr.h"
#include "source/patientOpening.h"

#include <boost/interprocess/errors.hpp>
#include <boost/interprocess/exceptions.hpp>
#include <new>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZoPxiDriverTools_1_0::readConfiguration;
using nZOQUIL000::siteHere;
using nZOQUIL000::tErrorStatus;
using platform::SearchOutcome;
using platform::SystemCode;

constexpr const char* kFile = "source\\cPciTavFilesystem";
constexpr const char* kDescriptionFolder = "PCI Hardware Descriptions";
constexpr const char* kDescriptionPattern = "*.ini";

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

// Runs an operation that reports into a status, running out of memory included, and raises what it
// reports.
template <typename Operation>
void raisingErrorsOf(Operation operation) {
    tErrorStatus status;
    try {
        operation(status);
    } catch (const std::bad_alloc&) {
        setError(status, nZOQUIL000::zoquilerr_memoryFull, siteHere(kFile, "zoquilerr_memoryFull"));
    }
    zoerr::raiseIfFailed(status);
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
    std::string pattern;
    raisingErrorsOf([&](tErrorStatus& status) {
        pattern = readConfiguration(nZoPxiDriverTools_1_0::kPathValue, status);
        pattern.append(kDescriptionFolder).push_back(platform::pathSeparator());
        pattern.append(kDescriptionPattern);
    });
    return pattern;
}

std::string cPciTavFilesystem::GetConfigPath() {
    std::string path;
    raisingErrorsOf([&](tErrorStatus& status) {
        path = readConfiguration(nZoPxiDriverTools_1_0::kConfigPathValue, status);
    });
    return path;
}

int cPciTavFilesystem::EnsureFileExists(const std::string& path) {
    if (platform::Stream existing = platform::openStream(path.c_str(), "r"))
        return std::fclose(existing.release());
    const platform::Stream created = platform::openStream(path.c_str(), "a");
    if (!created)
        return static_cast<int>(platform::lastSystemCode());
    return platform::restrictToOwner(created.get(), path.c_str());
}

void cPciTavFilesystem::LockFile(const std::string& path) {
    if (locked_)
        return;
    raiseInterprocessIfFailed(openPatiently([&] { return lockFile_.open(path.c_str()); },
                                            &platform::isSharingViolation, &platform::pause));
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
    files.clear();
    raisingErrorsOf([&](tErrorStatus& status) { listInto(pattern, files, status); });
}

} // namespace nZoTavManagerPciPlugin_15_0

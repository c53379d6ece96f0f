#include "source/cTerminalNameDb.h"

#include "pxidrivertools/escapedText.h"
#include "source/modelDescription.h"
#include "source/tavStatus.h"

#include <list>
#include <new>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZOQUIL000::tFixedStatus;

constexpr const char* kFile = "source\\cTerminalNameDb";

std::string sectionOf(const nZoPxiDriverTools_1_0::cSlotPath& slotPath) {
    nZOQUIL000::tErrorStatus status;
    std::string section;
    slotPath.ToString(section, status);
    zoerr::raiseIfFailed(status);
    return section;
}

} // namespace

cTerminalNameDb::~cTerminalNameDb() {
    Close();
}

void cTerminalNameDb::Load() {
    if (loaded_ || filesystem_.IsLocked())
        raiseSoftwareFault(kFile);
    const std::string folder = filesystem_.GetConfigPath();
    const std::string lockFile = folder + kNameLockFile;
    filesystem_.EnsureFileExists(lockFile);
    filesystem_.LockFile(lockFile);
    const std::string nameFile = folder + kNameFile;
    const int made = filesystem_.EnsureFileExists(nameFile);
    tFixedStatus status;
    iniFile_.open(nameFile.c_str(), 0, status);
    // That there is no such file is not the reason where one could not be made.
    if (made > 0 && status.systemCode == platform::kNotFound)
        nZOQUIL000::noteSystemCode(status, static_cast<platform::SystemCode>(made));
    zoerr::raiseIfFailed(status, nameFile.c_str());
    numbers_.reset();
    loaded_ = true;
}

std::string cTerminalNameDb::read(const std::string& section, const char* key) {
    tFixedStatus status;
    std::string value;
    iniFile_.getString(section, key, value, status);
    // A value that only lacks the memory to be read is there: without it the device would get a new
    // name.
    if (status.code == nZoPxiDriverTools_1_0::kIniFileErrMemoryFull)
        zoerr::raiseIfFailed(status);
    if (status.failed() || value.empty())
        return std::string(kNoText);
    return nZoPxiDriverTools_1_0::unescapeText(value);
}

void cTerminalNameDb::write(const std::string& section, const char* key, const std::string& value) {
    tFixedStatus status;
    iniFile_.setString(section, key, value, status);
    zoerr::raiseIfFailed(status);
}

int cTerminalNameDb::Matches(const cSlotPath& slotPath, const std::string& model,
                             const std::string& base, std::string& terminalName) {
    if (model == kNoText || base == kNoText)
        raiseInvalidParam(kFile);
    const std::string section = sectionOf(slotPath);
    const std::string storedModel = read(section, kNameKeyModel);
    terminalName = read(section, kNameKeyTerminalName);
    return model == storedModel && base == withoutDigits(terminalName) ? 1 : 0;
}

void cTerminalNameDb::Store(const cSlotPath& slotPath, const std::string& model,
                            const std::string& terminalName) {
    const std::string section = sectionOf(slotPath);
    // When a write fails, the numbers are gone and will be read afresh.
    auto numbers = std::exchange(numbers_, std::nullopt);
    const std::string replaced = read(section, kNameKeyTerminalName);
    write(section, kNameKeyModel, model);
    write(section, kNameKeyTerminalName, terminalName);
    if (!numbers)
        return;
    try {
        numbers->remove(replaced);
        numbers->add(terminalName);
        numbers_ = std::move(numbers);
    } catch (const std::bad_alloc&) {
        // The entry is stored. The numbers are read afresh when they are asked for.
    }
}

TerminalNumbers& cTerminalNameDb::numbers() {
    if (numbers_)
        return *numbers_;
    std::list<std::string> sections;
    tFixedStatus status;
    iniFile_.getSectionNames(sections, status);
    zoerr::raiseIfFailed(status);
    TerminalNumbers numbers;
    for (const std::string& section : sections)
        numbers.add(read(section, kNameKeyTerminalName));
    return numbers_.emplace(std::move(numbers));
}

void cTerminalNameDb::NextFreeName(const std::string& base, std::string& terminalName) {
    const std::uint32_t number = numbers().lowestFree(base);
    try {
        terminalName = base + std::to_string(number);
    } catch (const std::bad_alloc&) {
        raiseSoftwareFault(kFile);
    }
}

void cTerminalNameDb::Save() {
    if (!loaded_ || !filesystem_.IsLocked())
        raiseSoftwareFault(kFile);
    tFixedStatus status;
    iniFile_.save(status);
    if (!status.failed())
        return;
    tFixedStatus ignored;
    std::string nameFile;
    iniFile_.getPath(nameFile, ignored);
    zoerr::raiseIfFailed(status, nameFile.c_str());
}

void cTerminalNameDb::Close() {
    if (loaded_) {
        tFixedStatus status;
        iniFile_.close(status);
        loaded_ = false;
    }
    numbers_.reset();
    if (filesystem_.IsLocked())
        filesystem_.UnlockFile();
}

} // namespace nZoTavManagerPciPlugin_15_0

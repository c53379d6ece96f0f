// The configuration and the files of this machine. One object serves one tavPlugin_initialize.
#pragma once

#include "platform/fileLock.h"
#include "source/iPciTavFilesystem.h"

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0 {

// Statuses of the listing. No entry matches, or there is no such folder: a warning, which is not
// raised.
inline constexpr std::int32_t kListWarnNothingFound = 313300;
// The pattern, or the name of an entry, is not valid text; the listing ends there.
inline constexpr std::int32_t kListErrInvalidText = -313325;
inline constexpr std::int32_t kListErrEmptyPattern = -313326;
// The folder cannot be listed.
inline constexpr std::int32_t kListErrFailed = -313327;
// The pattern, or the name of an entry, could not be converted although it is valid text.
inline constexpr std::int32_t kListErrConversion = -313328;

class cPciTavFilesystem : public iPciTavFilesystem {
public:
    cPciTavFilesystem() = default;
    // An unlock that fails here ends the process: it cannot be reported, and a lock that nobody can
    // release must not go unnoticed.
    ~cPciTavFilesystem() override;
    cPciTavFilesystem(const cPciTavFilesystem&) = delete;
    cPciTavFilesystem& operator=(const cPciTavFilesystem&) = delete;

    std::string GetDescriptionFilePattern() override;
    std::string GetConfigPath() override;
    int EnsureFileExists(const std::string& path) override;
    [[nodiscard]] bool IsLocked() const override { return locked_; }
    void LockFile(const std::string& path) override;
    void UnlockFile() override;
    void ListFiles(const std::string& pattern, std::vector<std::string>& files) override;

private:
    platform::FileLock lockFile_;
    bool locked_ = false;
};

} // namespace nZoTavManagerPciPlugin_15_0

// The plug-in's file system over a temporary folder, with a lock that excludes nobody but tells
// when it is misused.
#pragma once

#include "source/iPciTavFilesystem.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace testsupport {

class FolderFilesystem : public nZoTavManagerPciPlugin_15_0::iPciTavFilesystem {
public:
    FolderFilesystem() = default;
    // Fails the test when the lock is still held.
    ~FolderFilesystem() override;
    FolderFilesystem(const FolderFilesystem&) = delete;
    FolderFilesystem& operator=(const FolderFilesystem&) = delete;

    // The name file, and what it holds; writing one before the names are loaded.
    [[nodiscard]] std::filesystem::path nameFile() const;
    [[nodiscard]] std::vector<std::string> names() const; // its lines but the blank ones
    void setNames(const std::string& text) const;
    [[nodiscard]] std::filesystem::path lockFile() const;
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }

    // One line a call that changes something or asks for the folder, such as
    // "EnsureFileExists zotavpci.loc".
    [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
    // Called after a call was noted, with its text; may raise.
    std::function<void(const std::string&)> onCall;

    std::string GetDescriptionFilePattern() override;
    std::string GetConfigPath() override;
    int EnsureFileExists(const std::string& path) override;
    [[nodiscard]] bool IsLocked() const override { return locked_; }
    void LockFile(const std::string& path) override;
    void UnlockFile() override;
    void ListFiles(const std::string& pattern, std::vector<std::string>& files) override;

private:
    void note(std::string call);
    [[nodiscard]] std::string nameInFolder(const std::string& path) const;

    TemporaryFolder folder_;
    std::vector<std::string> calls_;
    bool locked_ = false;
};

} // namespace testsupport

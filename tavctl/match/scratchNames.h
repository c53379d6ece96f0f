// Terminal names for a look that must leave no trace: nothing is read from the state folder and
// nothing is written.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "source/cTerminalNameDb.h"
#include "source/iPciTavFilesystem.h"

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

// A name file in memory, empty at first.
class ScratchIniFile : public nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile {
public:
    using tFixedStatus = nZOQUIL000::tFixedStatus;

    void open(const char* path, std::uint32_t flags, tFixedStatus& status) override;
    void close(tFixedStatus& status) override;
    void save(tFixedStatus& status) override;
    void getSectionNames(std::list<std::string>& names, tFixedStatus& status) override;
    void getString(const std::string& section, const std::string& key, std::string& value,
                   tFixedStatus& status) override;
    void setString(const std::string& section, const std::string& key, const std::string& value,
                   tFixedStatus& status) override;

    using cIniFile::getString;
    using cIniFile::open;

private:
    std::map<std::string, std::map<std::string, std::string>> sections_;
};

// A name file that is elsewhere than where it is looked for, and stays as it is.
class UnsavedIniFile : public nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile {
public:
    using tFixedStatus = nZOQUIL000::tFixedStatus;

    explicit UnsavedIniFile(std::string path) : path_(std::move(path)) {}

    void open(const char*, std::uint32_t flags, tFixedStatus& status) override {
        cIniFile::open(path_.c_str(), flags, status);
    }
    void save(tFixedStatus&) override {}

    using cIniFile::open;

private:
    std::string path_;
};

// A file system that has no files and locks nothing.
class ScratchFilesystem : public nZoTavManagerPciPlugin_15_0::iPciTavFilesystem {
public:
    std::string GetDescriptionFilePattern() override { return {}; }
    std::string GetConfigPath() override { return {}; }
    int EnsureFileExists(const std::string&) override { return 0; }
    [[nodiscard]] bool IsLocked() const override { return locked_; }
    void LockFile(const std::string&) override { locked_ = true; }
    void UnlockFile() override { locked_ = false; }
    void ListFiles(const std::string&, std::vector<std::string>& files) override { files.clear(); }

private:
    bool locked_ = false;
};

} // namespace tavctl

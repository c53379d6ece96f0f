// A terminal name database over a temporary folder.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "source/cTerminalNameDb.h"
#include "tests/source/support/folderFilesystem.h"
#include "tests/source/support/slotPaths.h"

#include <string>

namespace testsupport {

struct NameDatabase {
    FolderFilesystem filesystem;
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile iniFile;
    nZoTavManagerPciPlugin_15_0::cTerminalNameDb names{filesystem, iniFile};

    NameDatabase() = default;
    explicit NameDatabase(
        const nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::IniFileServices& services)
        : iniFile(services) {}

    // Loads a name file with this text.
    void load(const std::string& text) {
        filesystem.setNames(text);
        names.Load();
    }

    int matches(const std::string& slot, const std::string& model, const std::string& base) {
        std::string ignored;
        return names.Matches(slotPath(slot), model, base, ignored);
    }

    std::string storedName(const std::string& slot) {
        std::string name = "not written";
        names.Matches(slotPath(slot), "any model", "any base", name);
        return name;
    }

    std::string nextFreeName(const std::string& base) {
        std::string name;
        names.NextFreeName(base, name);
        return name;
    }

    void store(const std::string& slot, const std::string& model, const std::string& name) {
        names.Store(slotPath(slot), model, name);
    }
};

} // namespace testsupport

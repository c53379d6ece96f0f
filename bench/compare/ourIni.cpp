// This project in the race: the INI file class as the plug-in uses it, and the engine below it.
// Duplicates are merged, values in pieces joined, quotes recorded.
#include "bench/compare/iniContender.h"
#include "bench/require.h"
#include "platform/directorySearch.h"
#include "platform/fileToLoad.h"
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniSafeWrite.h"

#include <optional>

namespace bench {

namespace {

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

class IniClass final : public IniContender {
public:
    void load(const std::string& path) override {
        file_.emplace();
        ini::tFixedStatus status;
        file_->open(path.c_str(), 0, status);
        require(!status.failed(), "the class cannot open " + path);
    }
    void unload() override { file_.reset(); }
    // As the plug-in lists descriptions, in byte order of their names.
    std::vector<std::string> list(const std::string& folder) override {
        const std::string start = folder + platform::pathSeparator();
        platform::DirectorySearch search;
        require(search.open(start + "*.ini") == platform::SearchOutcome::entry,
                "the class finds nothing in " + folder);
        std::vector<std::string> paths;
        for (std::string name; search.next(name) == platform::SearchOutcome::entry;)
            paths.push_back(start + name);
        return paths;
    }
    std::string_view find(const std::string& section, const std::string& key) override {
        return file_->getView(section, key, status_);
    }
    void save(const std::string& path) override {
        ini::tFixedStatus status;
        file_->save(status); // to where it came from
        require(!status.failed(), "the class cannot write " + path);
    }

private:
    std::optional<ini::cIniFile> file_;
    ini::tFixedStatus status_; // one for many questions, as callers have it
};

// With the settings that the class gives it.
class IniEngine final : public IniContender {
public:
    void load(const std::string& path) override {
        file_.reset(ini::createIniFile());
        file_->caseSensitive = true;
        file_->write.safeWrite = false;
        file_->write.maximumLineLength = ini::kNoMaximumLineLength;
        platform::FileToLoad from(path.c_str());
        require(from.isOpen(), "the engine cannot open " + path);
        require(ini::loadIni(*file_, from) == ini::kIniDone, "the engine cannot load " + path);
    }
    void unload() override { file_.reset(); }
    std::string_view find(const std::string& section, const std::string& key) override {
        ini::IniSection* const foundSection = ini::findSection(*file_, section);
        if (foundSection == nullptr)
            return {};
        const ini::IniKey* const found = ini::findKey(*file_, *foundSection, key);
        return found == nullptr ? std::string_view() : found->value.view();
    }
    void save(const std::string& path) override {
        require(ini::writeIni(*file_, path.c_str()) == ini::kIniDone,
                "the engine cannot write " + path);
    }

private:
    ini::IniFileOwner file_;
};

} // namespace

IniContenderOwner makeIniClass() {
    return std::make_unique<IniClass>();
}
IniContenderOwner makeIniEngine() {
    return std::make_unique<IniEngine>();
}

} // namespace bench

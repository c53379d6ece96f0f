// The INI file of iIniFile.h over the INI engine. Names are case-sensitive, duplicates are merged,
// double quotes around values are stripped, and saving writes the file in place, one line a value.
#pragma once

#include "pxidrivertools/iIniFile.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniFileOperations.h"

#include <optional>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// What an INI file works with; not owned.
struct IniFileServices {
    IniMemory memory = systemIniMemory();
    IniFileOperations* files = &systemFileOperations();
};

class cIniFile : public iIniFile {
public:
    explicit cIniFile(const IniFileServices& services = {});
    ~cIniFile() override;
    cIniFile(const cIniFile&) = delete;
    cIniFile& operator=(const cIniFile&) = delete;

    void open(const char* utf8Path, std::uint32_t flags, tFixedStatus& status) override;
    void open(const wchar_t* path, std::uint32_t flags, tFixedStatus& status) override;
    void getPath(std::string& utf8Path, tFixedStatus& status) override;
    void getPath(std::wstring& path, tFixedStatus& status) override;
    void close(tFixedStatus& status) override;
    void save(tFixedStatus& status) override;
    void clear(tFixedStatus& status) override;
    void getSectionNames(std::list<std::string>& names, tFixedStatus& status) override;
    bool hasSection(const std::string& name, tFixedStatus& status) override;
    bool hasKey(const std::string& section, const std::string& key, tFixedStatus& status) override;
    void removeKey(const std::string& section, const std::string& key,
                   tFixedStatus& status) override;
    void removeSection(const std::string& name, tFixedStatus& status) override;
    void renameSection(const std::string& oldName, const std::string& newName,
                       tFixedStatus& status) override;
    void getString(const std::string& section, const std::string& key, std::string& value,
                   tFixedStatus& status) override;
    void getText(const std::string& section, const std::string& key, tText& value,
                 tFixedStatus& status) override;
    void getString(const std::string& section, const std::string& key, std::wstring& value,
                   tFixedStatus& status) override;
    void setString(const std::string& section, const std::string& key, const std::string& value,
                   tFixedStatus& status) override;
    void getHexadecimal(const std::string& section, const std::string& key, std::uint32_t& value,
                        tFixedStatus& status) override;
    void setHexadecimal(const std::string& section, const std::string& key, std::uint32_t value,
                        tFixedStatus& status) override;
    void getSigned32(const std::string& section, const std::string& key, std::int32_t& value,
                     tFixedStatus& status) override;
    void setSigned32(const std::string& section, const std::string& key, std::int32_t value,
                     tFixedStatus& status) override;
    void getUnsigned32(const std::string& section, const std::string& key, std::uint32_t& value,
                       tFixedStatus& status) override;
    void setUnsigned32(const std::string& section, const std::string& key, std::uint32_t value,
                       tFixedStatus& status) override;
    void getIntegerList(const std::string& section, const std::string& key,
                        std::list<std::int32_t>& values, tFixedStatus& status) override;
    void setIntegerList(const std::string& section, const std::string& key,
                        const std::list<std::int32_t>& values, tFixedStatus& status) override;
    void getWideStringList(const std::string& section, const std::string& key,
                           std::list<std::wstring>& values, tFixedStatus& status) override;
    void getStringList(const std::string& section, const std::string& key,
                       std::list<std::string>& values, tFixedStatus& status) override;
    void setWideStringList(const std::string& section, const std::string& key,
                           const std::list<std::wstring>& values, tFixedStatus& status) override;
    void setStringList(const std::string& section, const std::string& key,
                       const std::list<std::string>& values, tFixedStatus& status) override;
    // Beside iIniFile: the value as it is stored, without a copy. Good until the file's content
    // changes or is dropped; empty with an error. NotOpen (also: no such section), NoKey.
    std::string_view getView(const std::string& section, const std::string& key,
                             tFixedStatus& status);
    bool fileChanged(tFixedStatus& status) override;
    std::uint8_t getConfirmSave(tFixedStatus& status) override;
    void setConfirmSave(std::uint8_t confirm, tFixedStatus& status) override;

private:
    bool storePath(const char* utf8Path, tFixedStatus& status);
    void load(tFixedStatus& status);
    // Whether the status is free of errors and a file is open; sets the status when none is.
    bool isUsable(tFixedStatus& status) const;
    // The same, and that the file may be modified.
    bool isModifiable(tFixedStatus& status) const;
    // The key's value, good until the next change; null with the status set.
    const IniText* findValue(const std::string& section, const std::string& key,
                             tFixedStatus& status);
    // A view of it without leading white space, where no value at all is a missing key.
    std::optional<std::string_view> findNumber(const std::string& section, const std::string& key,
                                               tFixedStatus& status);

    std::string path_;
    std::wstring widePath_;
    IniFileOwner engine_;
    std::uint8_t readOnly_ = 0;
    std::uint8_t confirmSave_ = 0;
    IniFileServices services_;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

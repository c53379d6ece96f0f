// Typed access to an INI file: open it by path, ask for values, change values, save.
//
// Every operation takes the status last, does nothing (and returns false) when it already holds an
// error, and reports failures in it by one of the codes below; an operation that fails leaves the
// file's content and the caller's outputs as they were. Only a list that would become longer than
// its container can hold raises, std::length_error("list too long").
//
// Names are compared byte for byte. Texts are UTF-8. An object belongs to one thread at a time.
#pragma once

#include "pxidrivertools/tText.h"
#include "quil/tErrorStatus.h"
#include "quil/tFixedStatus.h"

#include <cstdint>
#include <list>
#include <string>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

using nZOQUIL000::tFixedStatus;

// The engine object could not be created.
inline constexpr std::int32_t kIniFileErrNoEngine = -313314;
// Empty or null path given to open.
inline constexpr std::int32_t kIniFileErrNoPath = -313315;
// The file is missing, cannot be opened or could not be parsed.
inline constexpr std::int32_t kIniFileErrCannotOpen = -313316;
// No file is open; where values are read, also: no such section.
inline constexpr std::int32_t kIniFileErrNotOpen = -313317;
// The file is open read-only.
inline constexpr std::int32_t kIniFileErrReadOnly = -313318;
// Saving or storing a value failed.
inline constexpr std::int32_t kIniFileErrNotStored = -313319;
// The value is no number, or outside the 32-bit range.
inline constexpr std::int32_t kIniFileErrBadNumber = -313320;
// No section to remove or rename.
inline constexpr std::int32_t kIniFileErrNoSection = -313321;
inline constexpr std::int32_t kIniFileErrNoKey = -313322;
// The value cannot be read in the form asked for.
inline constexpr std::int32_t kIniFileErrBadForm = -313323;
// No file is open to have changed.
inline constexpr std::int32_t kIniFileErrNothingToWatch = -313328;
inline constexpr std::int32_t kIniFileErrMemoryFull = nZOQUIL000::zoquilerr_memoryFull;

// Flag of open().
inline constexpr std::uint32_t kIniFileReadOnly = 1;

// The order of the operations is part of the interface.
class iIniFile {
public:
    virtual ~iIniFile() = default;

    // Closes what is open and loads the file. NoPath, MemoryFull, NoEngine, CannotOpen; after the
    // last two nothing is open.
    virtual void open(const char* utf8Path, std::uint32_t flags, tFixedStatus& status) = 0;
    virtual void open(const wchar_t* path, std::uint32_t flags, tFixedStatus& status) = 0;
    // The path last given to open(). MemoryFull.
    virtual void getPath(std::string& utf8Path, tFixedStatus& status) = 0;
    virtual void getPath(std::wstring& path, tFixedStatus& status) = 0;
    // Saves nothing.
    virtual void close(tFixedStatus& status) = 0;
    // Writes the file anew where it stands; nothing is written where it holds the same bytes
    // already and confirmSave is off. A file that cannot be written, or has no room, is left as it
    // is; one whose writing fails is gone. NotOpen, ReadOnly, NotStored.
    virtual void save(tFixedStatus& status) = 0;
    // Drops every section. From then on the file is read and written as a new engine object does
    // it. NotOpen, ReadOnly, NoEngine.
    virtual void clear(tFixedStatus& status) = 0;

    // Appends the names of all sections, in file order. NotOpen, MemoryFull.
    virtual void getSectionNames(std::list<std::string>& names, tFixedStatus& status) = 0;
    // NotOpen.
    virtual bool hasSection(const std::string& name, tFixedStatus& status) = 0;
    // False without an error when there is no such section. NotOpen.
    virtual bool hasKey(const std::string& section, const std::string& key,
                        tFixedStatus& status) = 0;
    // NotOpen (also: no such section), ReadOnly, NoKey.
    virtual void removeKey(const std::string& section, const std::string& key,
                           tFixedStatus& status) = 0;
    // Both: NotOpen, ReadOnly, NoSection. Renaming to an empty name or without memory: NotStored.
    virtual void removeSection(const std::string& name, tFixedStatus& status) = 0;
    virtual void renameSection(const std::string& oldName, const std::string& newName,
                               tFixedStatus& status) = 0;

    // The getters below: NotOpen (also: no such section), NoKey, MemoryFull; and what each names.
    // The setters: NotOpen, ReadOnly, NotStored, MemoryFull. They make what is missing.

    // The value as it is stored.
    virtual void getString(const std::string& section, const std::string& key, std::string& value,
                           tFixedStatus& status) = 0;
    virtual void getText(const std::string& section, const std::string& key, tText& value,
                         tFixedStatus& status) = 0;
    // BadForm when the value is not UTF-8.
    virtual void getString(const std::string& section, const std::string& key, std::wstring& value,
                           tFixedStatus& status) = 0;
    // Stores the text escaped (escapedText.h) and without quotes.
    virtual void setString(const std::string& section, const std::string& key,
                           const std::string& value, tFixedStatus& status) = 0;
    // Hexadecimal digits with or without 0x; what follows them is ignored. Saturates. BadForm.
    virtual void getHexadecimal(const std::string& section, const std::string& key,
                                std::uint32_t& value, tFixedStatus& status) = 0;
    // With 0x, except that zero is a bare 0.
    virtual void setHexadecimal(const std::string& section, const std::string& key,
                                std::uint32_t value, tFixedStatus& status) = 0;
    // A decimal number with white space around it. NoKey when there is nothing but white space,
    // BadNumber.
    virtual void getSigned32(const std::string& section, const std::string& key,
                             std::int32_t& value, tFixedStatus& status) = 0;
    virtual void setSigned32(const std::string& section, const std::string& key, std::int32_t value,
                             tFixedStatus& status) = 0;
    virtual void getUnsigned32(const std::string& section, const std::string& key,
                               std::uint32_t& value, tFixedStatus& status) = 0;
    virtual void setUnsigned32(const std::string& section, const std::string& key,
                               std::uint32_t value, tFixedStatus& status) = 0;
    // The lists replace the caller's. Items stand between commas, see listText.h. Of an integer
    // item, what follows its number is ignored; one outside the 32-bit range saturates. BadForm.
    virtual void getIntegerList(const std::string& section, const std::string& key,
                                std::list<std::int32_t>& values, tFixedStatus& status) = 0;
    virtual void setIntegerList(const std::string& section, const std::string& key,
                                const std::list<std::int32_t>& values, tFixedStatus& status) = 0;
    // BadForm when an item is not UTF-8.
    virtual void getWideStringList(const std::string& section, const std::string& key,
                                   std::list<std::wstring>& values, tFixedStatus& status) = 0;
    virtual void getStringList(const std::string& section, const std::string& key,
                               std::list<std::string>& values, tFixedStatus& status) = 0;
    // An item that is no valid text gives NotStored.
    virtual void setWideStringList(const std::string& section, const std::string& key,
                                   const std::list<std::wstring>& values, tFixedStatus& status) = 0;
    virtual void setStringList(const std::string& section, const std::string& key,
                               const std::list<std::string>& values, tFixedStatus& status) = 0;

    // Whether the file on disk is no longer the one that was opened or saved. NothingToWatch.
    virtual bool fileChanged(tFixedStatus& status) = 0;
    // Whether save() sees to it that the file's last-write time changes: any value but 0 does, and
    // is given back as it was set. 0 at first, and for a status that has failed.
    virtual std::uint8_t getConfirmSave(tFixedStatus& status) = 0;
    virtual void setConfirmSave(std::uint8_t confirm, tFixedStatus& status) = 0;

protected:
    iIniFile() = default;
    iIniFile(const iIniFile&) = default;
    iIniFile& operator=(const iIniFile&) = default;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

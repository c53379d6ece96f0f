// The names under which devices are shown, remembered per slot path so that a device found again in
// the same slot keeps its name. The names live in "zotavpci.ini" of the configuration folder; the
// lock on "zotavpci.loc" beside it makes processes take turns.
#pragma once

#include "pxidrivertools/cSlotPath.h"
#include "pxidrivertools/iIniFile.h"
#include "source/iPciTavFilesystem.h"
#include "source/terminalNumbers.h"

#include <optional>
#include <string>

namespace nZoTavManagerPciPlugin_15_0 {

// Files and keys of the name file. A section is a slot path in machine form.
inline constexpr const char* kNameFile = "zotavpci.ini";
inline constexpr const char* kNameLockFile = "zotavpci.loc";
inline constexpr const char* kNameKeyModel = "Model";
inline constexpr const char* kNameKeyTerminalName = "TerminalName";

// Models and names are stored escaped (pxidrivertools/escapedText.h) and read back as they were,
// but for blanks at their ends, which INI files do not keep.
//
// The failures of the INI file and of slot paths are raised as zoerr::Exception with their own
// status. Both collaborators must outlive the object.
class cTerminalNameDb {
public:
    using iIniFile = nZoPxiDriverTools_1_0::iIniFile;
    using cSlotPath = nZoPxiDriverTools_1_0::cSlotPath;

    cTerminalNameDb(iPciTavFilesystem& filesystem, iIniFile& iniFile)
        : filesystem_(filesystem), iniFile_(iniFile) {}

    // Closes.
    ~cTerminalNameDb();
    cTerminalNameDb(const cTerminalNameDb&) = delete;
    cTerminalNameDb& operator=(const cTerminalNameDb&) = delete;

    // Takes the lock, waiting for other processes, and reads the names. kTavManErrSoftwareFault
    // when the names are loaded or the lock is held already; interprocess_exception when the lock
    // file cannot be opened or locked.
    void Load();

    [[nodiscard]] bool IsLoaded() const { return loaded_; }

    // 1 when the entry of the slot belongs to this model and its stored name is this base and
    // decimal digits, otherwise 0. `terminalName` becomes the stored name, "_" when there is none.
    // kTavManErrInvalidParam when model or base is "_".
    int Matches(const cSlotPath& slotPath, const std::string& model, const std::string& base,
                std::string& terminalName);

    // Writes the entry of the slot; what stood there is replaced. In memory until Save(). Once both
    // values are written nothing raises.
    void Store(const cSlotPath& slotPath, const std::string& model,
               const std::string& terminalName);

    // The base followed by the lowest number from 1 upwards that no entry uses with it.
    // kTavManErrSoftwareFault when there is no memory for the name.
    void NextFreeName(const std::string& base, std::string& terminalName);

    // Writes the name file. kTavManErrSoftwareFault when the names are not loaded or the lock is
    // not held.
    void Save();

    // Gives up the names in memory and the lock, as far as there are any.
    void Close();

private:
    std::string read(const std::string& section, const char* key);
    void write(const std::string& section, const char* key, const std::string& value);
    TerminalNumbers& numbers();

    iPciTavFilesystem& filesystem_;
    iIniFile& iniFile_;
    bool loaded_ = false;
    std::optional<TerminalNumbers> numbers_; // made when the first name is asked for
};

} // namespace nZoTavManagerPciPlugin_15_0

// The file of terminal names as a whole: read as the plug-in reads it, and written back safely.
#pragma once

#include "platform/earlyEnd.h"
#include "platform/fileLock.h"
#include "pxidrivertools/ini/iniFileObject.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// Keeps the plug-in and other tools off the name file beside it while it exists. Raises
// FailureException.
class NameLock {
public:
    enum class Purpose { reading, writing };

    // Waits while another process holds the lock. For reading a lock file that is missing is not
    // made, since nobody has used the folder yet, and one that this user may not open is done
    // without: isHeld() says so.
    NameLock(const std::filesystem::path& nameFile, Purpose purpose);

    [[nodiscard]] bool isHeld() const { return isHeld_; }

private:
    platform::FileLock lock_; // releases it by closing the file, which cannot fail
    bool isHeld_ = false;
};

// Why this user may not, or for want of room cannot, store names, in the system's words: as far as
// it shows before there are names to store, when the lock file is made and opened.
// Empty when nothing speaks against it, and for anything else that does: then a host fails too, and
// tells why.
std::string whyNotStorable(const std::filesystem::path& nameFile);

// While it exists somebody else's code in this process, such as the plug-in, stores names: an early
// end waits (see platform/earlyEnd.h). Made when nobody else has the lock, so that what is waited
// for is the storing and not its turn.
class NameStoring {
public:
    // What speaks against locking is left for the code that stores. An empty path: none is known.
    explicit NameStoring(const std::filesystem::path& nameFile);

private:
    std::optional<platform::EarlyEndHeldBack> held_;
};

// What is stored for one slot, with model and name as the plug-in tells them: unescaped. Empty
// texts stand for what is missing.
struct NameEntry {
    std::string slotPath; // the section, in machine form when it is well formed
    std::string model;
    std::string terminalName;
    std::int32_t line = 0; // of the section's header, the last one where it is repeated
};

class NameFile {
public:
    // Without names.
    NameFile();

    // Raises FailureException for a file that cannot be read. With `mayBeMissing` a file that is
    // not there is an empty one.
    NameFile(const std::filesystem::path& path, bool mayBeMissing);

    // In file order.
    [[nodiscard]] const std::vector<NameEntry>& entries() const { return entries_; }

    // The slot of a name file that stands a second time, by the line of its later header. The
    // plug-in takes both for one.
    struct Repeated {
        std::string slotPath;
        std::int32_t line = 0;
    };
    [[nodiscard]] const std::vector<Repeated>& repeated() const { return repeated_; }

    // Give a slot that has an entry another name, stored as the plug-in does it, or remove all that
    // is stored for it. Everything else stays. Raise FailureException and change nothing then.
    void rename(const std::string& slotPath, const std::string& terminalName);
    void forget(const std::string& slotPath);

    // Whether `write` would leave the file's bytes as they are.
    [[nodiscard]] bool isContentOf(const std::filesystem::path& target) const;

    // Replaces `target` by this content, forced onto the disk; a failure leaves it as it was. The
    // file keeps owner and permissions; a new one is readable by its owner only. Raises
    // FailureException. An early end of the process waits for it (see platform/earlyEnd.h).
    void write(const std::filesystem::path& target) const;

private:
    // Position in entries().
    [[nodiscard]] std::size_t entryOf(const std::string& slotPath) const;

    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::IniFileOwner file_;
    std::vector<NameEntry> entries_;
    std::vector<Repeated> repeated_;
};

} // namespace tavctl

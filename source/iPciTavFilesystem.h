// The plug-in's single way to the configuration and the files around it.
#pragma once

#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

class iPciTavFilesystem {
public:
    // Releases the lock if it is held and closes the lock file.
    virtual ~iPciTavFilesystem() = default;

    // The configured "Path" with the description files' folder and pattern appended directly: the
    // stored value must end with a separator. Raises zoerr::Exception.
    virtual std::string GetDescriptionFilePattern() = 0;

    // The configured "ConfigPath", as stored. Raises zoerr::Exception.
    virtual std::string GetConfigPath() = 0;

    // Makes sure that there is a file, creating it readable and writable by its owner only; one
    // that is there is left as it is. 0 on success, otherwise the result of the step that failed:
    // the system's code when nothing could be opened, -1 when the permissions could not be set.
    virtual int EnsureFileExists(const std::string& path) = 0;

    [[nodiscard]] virtual bool IsLocked() const = 0;

    // Takes the exclusive lock on an existing file, waiting for other holders. Does nothing when
    // the lock is held already, on whichever file: locks do not nest. Raises
    // boost::interprocess::interprocess_exception with the system's code.
    virtual void LockFile(const std::string& path) = 0;

    // Releases the lock if it is held. Raises as LockFile does.
    virtual void UnlockFile() = 0;

    // Replaces `files` by the full paths of the entries that match, folders among them, in the
    // system's order. No match, or no such folder, is no error. Raises zoerr::Exception; `files`
    // then holds what was listed before.
    virtual void ListFiles(const std::string& pattern, std::vector<std::string>& files) = 0;
};

} // namespace nZoTavManagerPciPlugin_15_0

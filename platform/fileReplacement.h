// Putting a new file in the place of another one, in a folder that others may write to.
#pragma once

#include "platform/file.h"
#include "platform/systemCode.h"

#include <cstdio>
#include <string>

namespace platform {

// A file that was not there before.
struct NewFile {
    Stream stream; // for writing; null on failure
    SystemCode code = kNoSystemError;
    bool isThere = false; // with a null stream: it was created, but could not be opened
};

// Who may read and write a new file, as far as the system knows owners: its owner only, whom the
// process lets (on Linux its file mode creation mask), or its owner with everybody reading it,
// whatever the process lets.
enum class NewFileAccess { ownerOnly, usual, everybodyReads };

// Creates an empty file that must not exist yet. On Linux the stream is that of the file that was
// created, whatever has its name by now; on Windows it is closed and opened again with the mode
// "wb".
NewFile createExclusively(const char* path,
                          NewFileAccess access = NewFileAccess::ownerOnly) noexcept;

// True for the code with which createExclusively() says that the name is taken.
bool isNameTaken(SystemCode code) noexcept;

// Replaces the path by that of the file which the symbolic links at its end lead to, so that the
// file is replaced and not the link. Links count only if they are the user's own or root's: any
// other one is EACCES. On Windows links stay what they are and may be replaced.
SystemCode followLinks(std::string& path) noexcept;

// Gives a file the owner, the group, the permissions and the access list of another one; where only
// root could give it that owner, a file that its group may write keeps the new one. On
// Windows, where a file has those of its folder, nothing is done.
SystemCode takeAccess(std::FILE* from, std::FILE* to) noexcept;

// Renames a file, replacing the target when there is one; readers see the old or the new content.
SystemCode renameReplacing(const char* from, const char* to) noexcept;

} // namespace platform

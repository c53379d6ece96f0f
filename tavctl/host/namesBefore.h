// The name file as it was before it was last changed on purpose, kept beside it so that the change
// can be taken back. A name file that is not there counts as an empty one, which means the same to
// the plug-in.
//
// Whoever calls these holds the NameLock for writing. All raise FailureException, which leaves the
// name file as it was.
#pragma once

#include <filesystem>

namespace tavctl {

// "zotavpci.ini.before" beside "zotavpci.ini".
std::filesystem::path namesBefore(const std::filesystem::path& nameFile);

// Keeps the name file, byte for byte and with its owner, group, permissions and access list, in
// place of what was kept. For every command that changes names, before it does.
void keepNamesBefore(const std::filesystem::path& nameFile);

// Exchanges the name file and what was kept; doing so again takes that back. Raises with
// ExitStatus::problemFound when nothing is kept, or the same.
void undoNames(const std::filesystem::path& nameFile);

} // namespace tavctl

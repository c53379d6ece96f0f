// Symbolic links in a folder that others may write to. A link there may be an administrator's, who
// keeps the file elsewhere, or somebody's who wants this process to write where he may not. Private
// to this folder.
#pragma once

#include <string>

namespace platform {

// Replaces the path by what the links at its end lead to, however many there are, and whether there
// is such a file or not. 0, or the error number: EACCES for a link that belongs neither to root nor
// to the user that this process acts for, ELOOP for too many of them, ENOMEM.
int followTrustedLinks(std::string& path) noexcept;

} // namespace platform

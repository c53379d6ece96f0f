// A copy of the stored terminal names for a look that must not change them.
#pragma once

#include <filesystem>
#include <string>

namespace tavctl {

// Copies the name file, while nobody writes it, and nothing where there is none. Where this user
// may not read it there is no copy either; the answer tells why, and is empty otherwise. Raises
// FailureException for any other failure.
std::string copyNames(const std::filesystem::path& names, const std::filesystem::path& copy);

} // namespace tavctl

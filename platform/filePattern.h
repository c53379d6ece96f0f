// Patterns for the names of files on the command line of a system whose shells hand them on as they
// are.
#pragma once

#include <string>
#include <vector>

namespace platform {

// The files that a word of the command line means. Where shells put files in the place of patterns,
// and for a word without "*" and "?" behind its last separator, that is the word itself; so it is
// where something of this very name is there, since whether the word stood in quotes cannot be
// told. Otherwise what its folder has of names that match, in capitals or not, in the order of the
// names:
// "*" for any number of characters, "?" for one, and "*.*" for every name, as users know it; names
// that begin with a dot only when the pattern does. None when none does. Raises std::bad_alloc.
std::vector<std::string> filesOfPattern(const std::string& word);

} // namespace platform

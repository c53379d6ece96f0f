// What this system's loader says of a bridge library that it cannot load or bind: the member
// "internal_error" of the error record, without a comma before it.
#pragma once

#include <string>

namespace loaderfailure {

// The name under which the bridge library is looked for.
std::string bridgeLibrary();

// There is no library of that name.
std::string noLibrary();

// The same where there was no memory for the loader's words.
std::string noLibraryWithoutWords();

// The file at this path is no library.
std::string notALibrary(const std::string& path);

// The library at this path has no such symbol.
std::string missingSymbol(const std::string& path, const std::string& symbol);

} // namespace loaderfailure

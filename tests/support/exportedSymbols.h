// What a shared library shows to those who load it.
#pragma once

#include <set>
#include <string>

namespace testsupport {

// The library's defined dynamic symbols, each with the letter that nm gives its kind: "T name".
// Raises std::runtime_error when they cannot be listed.
std::multiset<std::string> exportedSymbols(const std::string& library);

} // namespace testsupport

// A file that no longer holds what is saved to it: a save that finds its text there already writes
// nothing.
#pragma once

#include "bench/require.h"

#include <fstream>
#include <string>

namespace bench {

// What nobody saves.
inline constexpr char kChanged = '\1';

// Puts it over the file's first byte, so that whoever compares finds nothing to keep. The length
// stays: a file that was cut off would have to be given its room again.
inline void changeFile(const std::string& path) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.put(kChanged).flush();
    require(file.good(), "cannot change " + path);
}

inline void requireSaved(const std::string& path) {
    require(std::ifstream(path, std::ios::binary).get() != kChanged, path + " was not written");
}

} // namespace bench

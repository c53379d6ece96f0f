// What there is at a path. Stands alone, as folderReader.h does.
#pragma once

#include <filesystem>
#include <string>

namespace platform {

// As std::filesystem::status() tells it, of links what they lead to; also of a path that is longer
// than the system's functions take in its usual form. file_type::not_found where there is nothing,
// file_type::none where it cannot be told. Raises std::bad_alloc.
std::filesystem::file_type typeOfEntry(const std::string& utf8Path);

// Whether there is an entry of that name; of a link whatever it leads to, and even if that is
// nothing. True where it cannot be told. Raises std::bad_alloc.
bool isEntryThere(const std::string& utf8Path);

} // namespace platform

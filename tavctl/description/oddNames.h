// Names by which files that are no descriptions come to be read as such.
#pragma once

#include <string_view>

namespace tavctl::lint {

// Whether the name matches "*.ini" itself, in capitals or not.
bool isDescriptionName(std::string_view name) noexcept;

// Whether it does not, but a short name does that a system gives such a file ("BOX~1.INI" to
// "box.ini~"): of the last extension the first three characters count there. A search for "*.ini"
// finds the file by that name too.
bool hasDescriptionShortName(std::string_view name);

// Whether Windows' Explorer calls so, in whatever folder, the file in which it keeps how it shows
// the folder.
bool isExplorersName(std::string_view name) noexcept;

} // namespace tavctl::lint

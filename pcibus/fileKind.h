// Says what a file is that is given for a dump by mistake. Private to this room.
#pragma once

#include <string_view>

namespace pcibus {

// What the beginning of a file shows it to be, in words for people, where that cannot be a dump: "a
// file compressed with gzip". Empty for everything else, every plain text among it.
std::string_view foreignKind(std::string_view beginning);

// The same for texts that no dump is, told by their first words. Such a text may be part of a note
// above a dump, so only the text of a file without functions is asked about.
std::string_view textKind(std::string_view beginning);

} // namespace pcibus

// What the readers of a bus leave out of it, or know only in part, so that somebody can be told.
#pragma once

#include <cstddef>

namespace pcibus {

// Counts of functions. A function of another domain counts as that alone, whatever else it is.
struct LeftOut {
    std::size_t otherDomains = 0; // not of domain 0
    std::size_t dead = 0;         // vendor identifier FFFF: nothing answers there
    std::size_t unreadable = 0;   // of a folder: less than 64 bytes of "config" could be read

    // These are in the bus: functions that say that they have capabilities, of which a dump has the
    // header alone. A bridge among them has no subsystem identifiers and no link. (Of a folder
    // other files tell these.)
    std::size_t headerOnly = 0;
};

} // namespace pcibus

// Why a bus could not be read, in words for people.
#pragma once

#include <stdexcept>

namespace pcibus {

// The message names the place: "file:line: reason" for a dump, "file or folder: reason" otherwise.
class BusError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace pcibus

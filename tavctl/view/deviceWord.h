// How people call a device on the command line: by its terminal name, by an address, or by its
// model.
#pragma once

#include "tavctl/bus/busAddress.h"
#include "tavctl/host/deviceListing.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

struct DeviceWord {
    enum class Kind { name, address, model };
    std::string word;
    Kind kind = Kind::name;
    std::vector<std::size_t> devices;     // positions in the list; by an address there may be none
    std::optional<DomainAddress> address; // by an address: it
};

// What a word stands for among these devices. An address is one with or without its domain; a name
// or a model is meant as it stands, and where no model is called so, every model that has the word
// in its name. Raises FailureException with ExitStatus::problemFound for anything else.
DeviceWord readDeviceWord(const std::string& word, const std::vector<ListedDevice>& devices);

// The same; nothing for a word that stands for none of them.
std::optional<DeviceWord> findDeviceWord(const std::string& word,
                                         const std::vector<ListedDevice>& devices);

// Raises such an exception for an address at which no device is reported.
[[noreturn]] void failWithoutDevice(const DeviceWord& address);

// Every word; and says, a line for each on standard error, what it was taken for.
std::vector<DeviceWord> readDeviceWords(const std::vector<std::string>& words,
                                        const std::vector<ListedDevice>& devices);

} // namespace tavctl

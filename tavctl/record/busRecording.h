// A bus as the text that lspci -xxx prints, which --dump and lspci -F read.
//
// Of a live bus an ordinary user may read only the first 64 bytes of each function. What a bridge
// has beyond them and matching needs, its subsystem identifiers and its link's width and speed,
// sysfs tells in other files; the recording then has capabilities that are made from those, and a
// comment that says so.
#pragma once

#include "pcibus/leftOut.h"
#include "pcibus/link.h"
#include "pcibus/pciFunction.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tavctl {

struct RecordedFunction {
    std::uint32_t domain = 0;
    pcibus::PciFunction function;
    pcibus::Link link;
    std::vector<std::uint8_t> bytes; // of the configuration space; 64 to 256 of them
    std::size_t madeFrom = 0;        // bytes in [madeFrom, madeTo) are made; none when both are 0
    std::size_t madeTo = 0;
    std::string note; // what else is not as on the bus; empty when nothing is
};

struct BusRecording {
    std::vector<RecordedFunction> functions; // by domain and address
    std::size_t headersOnly = 0;             // functions of which no more than 64 bytes were read
    pcibus::LeftOut leftOut;                 // what is missing; of other domains what has no bytes
    bool scrubbed = false;

    // Functions of domains other than 0: matching never looks at them.
    [[nodiscard]] std::size_t ofOtherDomains() const;
};

// Reads a bus (see pcibus/readBus.h), all domains of it, with its bytes. Raises pcibus::BusError.
BusRecording recordBus(const std::filesystem::path& location);

// The same with nothing but what matters to matching: where each function is, header type,
// identifiers, bus numbers of bridges, and their links. Every other byte is 0.
BusRecording scrubbedRecording(const BusRecording& recording);

// The text; `program` is who recorded it, for the comment at the top. Addresses have their domains
// where there is one beside domain 0. Read back it gives the same bus.
std::string recordingText(const BusRecording& recording, const std::string& program);

} // namespace tavctl

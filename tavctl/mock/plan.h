// What is to stand on a made-up bus, as the command line and plan files say it: nothing of it has
// been compared with descriptions yet.
#pragma once

#include "quil/tPciIds.h"
#include "tavctl/words/failure.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tavctl::mock {

// A word of the plan, with what messages about it name: "lab.plan:4:6", or the word itself where
// the command line has it.
struct Said {
    std::string text;
    std::string place;

    [[nodiscard]] bool isSaid() const { return !place.empty(); }
};

// One link as it is wished for, in lanes and in the numbers of speeds; 0: not said.
struct LinkWish {
    std::uint8_t maximumWidth = 0;
    std::uint8_t maximumSpeed = 0;
    std::uint8_t width = 0; // as it runs, where that is less than both ends can
    std::uint8_t speed = 0;
};

// What is said of one port of a box, or of the way up to it.
struct PlannedPort {
    std::string place; // of the first thing that is said
    LinkWish link;
    std::uint8_t bus = 0; // below the port; of the way up: that of the box; 0: not said
    unsigned reserve = 0; // bus numbers behind those in use that stay free
};

struct PlannedBox {
    Said name; // not said: made from the model's base of names
    Said model;
    Said in;     // not said: a root port of its own on root bus 0
    Said anchor; // the section of one of the model's anchors; not said: the first that will do
    std::vector<Said> missing;
    std::map<std::string, PlannedPort> ports; // by section or label; "" is the way up
    bool isGone = false;                      // planned, but not there
};

// A card that no description is about.
struct PlannedEndpoint {
    Said name;
    Said in;
    nZoTavManagerPciPlugin_15_0::tPciIds ids{0x8086, 0x10D3, 0x8086, 0x0000};
    std::uint16_t deviceClass = 0x0200;
    LinkWish link;
    bool isGone = false;
};

struct Plan {
    std::vector<PlannedBox> boxes;
    std::vector<PlannedEndpoint> endpoints;
};

// Raises FailureException, with ExitStatus::problemFound, for something that was said.
[[noreturn]] void refuse(const std::string& place, std::string reason, std::string hint = {});

} // namespace tavctl::mock

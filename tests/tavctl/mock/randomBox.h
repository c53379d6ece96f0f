// Random descriptions for boxes that a bus is made with.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace testtavctl {

struct RandomPort {
    std::string section;
    unsigned width = 0;  // by which the labels come out even; 0 where nothing goes by it
    unsigned labels = 0; // that it takes then
    bool isMissing = false;
    bool isAbove = false; // of something that is described
};

struct RandomBox {
    std::string model;
    std::string text; // of the description
    std::vector<std::string> labels;
    std::size_t upstreamLabels = 0;
    unsigned upstreamWidth = 0;
    bool hasUpstream = false;
    bool countsLanes = false;
    std::vector<RandomPort> ports;
    // Whether the box can be listed, by how it was made; others may be or not.
    bool isSound = true;
};

inline unsigned chance(std::mt19937& random, unsigned outOf) {
    return static_cast<unsigned>(random() % outOf);
}

// Boxes of different numbers have no identifiers in common, but for those that are not sound.
RandomBox randomBox(std::mt19937& random, unsigned number);

} // namespace testtavctl

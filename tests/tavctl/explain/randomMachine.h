// Machines and descriptions made up at random, the same for the same state of the generator. Few
// identifiers and many near misses, so that everything between a match and nothing occurs.
#pragma once

#include "tests/support/busBuilder.h"

#include <random>
#include <string>
#include <vector>

namespace testtavctl {

struct RandomMachine {
    testsupport::BusBuilder bus;
    std::vector<testsupport::BusBuilder::Node> bridges;   // all of them
    std::vector<testsupport::BusBuilder::Node> endpoints; // below bridges
};

RandomMachine randomMachine(std::mt19937& random);

// The text of a description that fits some bridge or endpoint of the machine, or nearly.
std::string randomDescription(const RandomMachine& machine, std::mt19937& random,
                              const std::string& model);

} // namespace testtavctl

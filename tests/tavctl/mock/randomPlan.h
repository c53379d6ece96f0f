// Random plans for random boxes.
#pragma once

#include "tests/tavctl/mock/randomBox.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace testtavctl {

struct RandomPlan {
    struct Place {
        std::size_t box = 0; // its number, and the port that it is plugged into
        std::size_t port = 0;
    };
    struct Box {
        std::size_t model = 0; // of those that the plan is for
        std::optional<Place> in;
        unsigned rootBus = 0;                                // where it is in no other box
        std::optional<std::pair<std::size_t, unsigned>> bus; // wished for below a port
    };
    std::vector<Box> boxes;
    std::string text; // of the plan file
    bool isSound = true;
};

// Each of the models once, or twice.
RandomPlan randomPlan(std::mt19937& random, const std::vector<RandomBox>& models);

} // namespace testtavctl

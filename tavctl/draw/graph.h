// The DOT file of a drawing, piece by piece: boxes in tiles, and what joins them.
#pragma once

#include "tavctl/draw/tiling.h"

#include <string>
#include <string_view>

namespace tavctl {

class Graph {
public:
    // The caption is markup; the gap between boxes that lead to each other is in inches.
    Graph(std::string_view caption, const Tiling& tiling, double gap = 0.6);

    // The tooltip, for the whole box, may be empty.
    void box(std::string_view name, std::string_view markup, std::string_view tooltip = {});
    // A cell of the array that stays empty.
    void filler(std::size_t tile);
    // From the right of a box, or of its cell, to the left of another's head.
    void join(std::string_view from, std::string_view box);

    // Puts a box to the right of another with their heads at one height.
    void align(std::string_view left, std::string_view right);

    // No more can be added.
    [[nodiscard]] std::string finished() &&;

private:
    std::string out_;
};

// "d7"
std::string nodeName(char kind, std::size_t number);
// "d7:p1"
std::string cellName(std::string_view box, char cell, std::size_t number);

} // namespace tavctl

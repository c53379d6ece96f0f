// One line of the tree, put together from pieces of which some may be cut.
#pragma once

#include "tavctl/words/textStyle.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

class TreeLine {
public:
    enum class Dress { plain, mark, warning };

    // What stands in front: the branches, the address and the buses.
    explicit TreeLine(std::string front) : front_(std::move(front)) {}

    // A piece of the line behind two blanks: `before` and `after` are never cut, the name between
    // them is. The later a piece was added, the earlier it is cut.
    void add(Dress dress, const std::string& before, const std::string& name = {},
             const std::string& after = {});

    // The line of at most `width` characters, if cutting the names makes it so, without its end.
    [[nodiscard]] std::string text(std::size_t width, const TextStyle& style) const;

private:
    struct Piece {
        Dress dress = Dress::plain;
        std::string before;
        std::string name;
        std::string after;
    };

    std::string front_;
    std::vector<Piece> pieces_;
};

} // namespace tavctl

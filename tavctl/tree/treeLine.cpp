#include "tavctl/tree/treeLine.h"

#include "tavctl/words/characters.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/textTable.h"

#include <algorithm>
#include <utility>

namespace tavctl {

namespace {

std::string dressed(TreeLine::Dress dress, const std::string& text, const TextStyle& style) {
    switch (dress) {
    case TreeLine::Dress::mark:
        return style.mark(text);
    case TreeLine::Dress::warning:
        return style.warning(text);
    case TreeLine::Dress::plain:
        break;
    }
    return text;
}

} // namespace

void TreeLine::add(Dress dress, const std::string& before, const std::string& name,
                   const std::string& after) {
    pieces_.push_back({dress, printable(before), printable(name), printable(after)});
}

std::string TreeLine::text(std::size_t width, const TextStyle& style) const {
    std::vector<Piece> pieces = pieces_;
    std::size_t length = characterCount(front_);
    for (const Piece& piece : pieces)
        length += 2 + characterCount(piece.before) + characterCount(piece.name) +
                  characterCount(piece.after);
    for (auto piece = pieces.rbegin(); piece != pieces.rend() && length > width; ++piece) {
        const std::size_t whole = characterCount(piece->name);
        if (whole <= kNarrowestColumn)
            continue;
        const std::size_t cut = std::min(length - width, whole - kNarrowestColumn);
        piece->name = fitText(piece->name, whole - cut);
        length -= cut;
    }
    std::string line = front_;
    for (const Piece& piece : pieces)
        line.append("  ").append(
            dressed(piece.dress, piece.before + piece.name + piece.after, style));
    return line;
}

} // namespace tavctl

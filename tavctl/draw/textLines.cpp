#include "tavctl/draw/textLines.h"

#include "tavctl/words/characters.h"
#include "tavctl/words/textTable.h"

#include <algorithm>

namespace tavctl {

namespace {

// Words longer than a line are broken anywhere.
std::vector<std::string> hardLines(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    for (const std::string& line : brokenLines(text, width)) {
        std::string_view rest = line;
        do {
            lines.emplace_back(firstCharacters(rest, width));
            rest.remove_prefix(lines.back().size());
        } while (!rest.empty());
    }
    return lines;
}

} // namespace

std::vector<std::string> brokenLines(std::string_view text, std::size_t width) {
    std::vector<std::string> lines(1);
    while (!text.empty()) {
        const std::size_t blank = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, blank);
        text.remove_prefix(std::min(blank + 1, text.size()));
        if (word.empty())
            continue;
        if (!lines.back().empty() &&
            characterCount(lines.back()) + 1 + characterCount(word) > width)
            lines.emplace_back();
        lines.back().append(lines.back().empty() ? "" : " ").append(word);
    }
    return lines;
}

std::vector<std::string> fittedLines(std::string_view text, std::size_t width, std::size_t most) {
    std::vector<std::string> lines = hardLines(text, width);
    for (std::size_t room = width * most; lines.size() > most && room > 0; --room)
        lines = hardLines(fitText(text, room), width);
    return lines;
}

} // namespace tavctl

#include "tavctl/draw/dotText.h"

#include "tavctl/words/printable.h"

#include <fmt/core.h>

namespace tavctl {

std::string markupText(std::string_view text) {
    std::string result;
    for (const char c : printable(text)) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\\': // by its number: in a quoted attribute Graphviz takes it for an escape
            result += "&#92;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

std::string tooltipText(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t feed = text.find('\n');
        std::string line;
        for (const char c : printable(text.substr(0, feed)))
            line.append(c == '\\' ? 2 : 1, c);
        result += markupText(line);
        if (feed == std::string_view::npos)
            return result;
        result += "&#10;";
        text.remove_prefix(feed + 1);
    }
}

std::string tooltipAttributes(std::string_view text) {
    return text.empty() ? std::string()
                        : fmt::format(" HREF=\"#\" TOOLTIP=\"{}\"", tooltipText(text));
}

std::string fontText(std::string_view attributes, std::string_view text) {
    return fmt::format("<FONT {}>{}</FONT>", attributes, markupText(text));
}

} // namespace tavctl

#include "tavctl/draw/dotText.h"

#include "tavctl/words/printable.h"

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

std::string fontText(std::string_view attributes, std::string_view text) {
    return std::string("<FONT ")
        .append(attributes)
        .append(">")
        .append(markupText(text))
        .append("</FONT>");
}

} // namespace tavctl

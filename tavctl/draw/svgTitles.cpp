#include "tavctl/draw/svgTitles.h"

#include "tavctl/draw/dotText.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

constexpr std::string_view kTitle = "<title>";
constexpr std::string_view kTitleEnd = "</title>\n";

// The value of an attribute, escaped as it stands; empty when there is none.
std::string_view valueOf(std::string_view tag, std::string_view attribute) {
    const std::string opening = fmt::format(" {}=\"", attribute);
    const std::size_t start = tag.find(opening);
    if (start == std::string_view::npos)
        return {};
    tag.remove_prefix(start + opening.size());
    return tag.substr(0, tag.find('"'));
}

// The part up to and with the text, and all when it has no such text; it is taken from the front.
std::string_view takeThrough(std::string_view& rest, std::string_view text) {
    const std::size_t at = rest.find(text);
    const std::string_view taken =
        rest.substr(0, at == std::string_view::npos ? at : at + text.size());
    rest.remove_prefix(taken.size());
    return taken;
}

std::string titled(std::string_view escaped) {
    return fmt::format("{}{}</title>", kTitle, escaped);
}

} // namespace

// Text has no "<" of its own, and no attribute of Graphviz's a ">".
std::string withTitles(std::string_view svg, std::string_view title) {
    std::string result;
    result.reserve(svg.size());
    while (!svg.empty()) {
        const std::size_t tag = std::min(svg.find('<'), svg.size());
        result += svg.substr(0, tag);
        svg.remove_prefix(tag);
        if (svg.starts_with(kTitle)) {
            takeThrough(svg, kTitleEnd);
        } else if (svg.starts_with("<svg")) {
            result += takeThrough(svg, ">");
            result += fmt::format("\n{}", titled(markupText(title)));
        } else if (svg.starts_with("<a ")) {
            result += fmt::format("<g>{}", titled(valueOf(takeThrough(svg, ">"), "xlink:title")));
        } else if (svg.starts_with("</a>")) {
            takeThrough(svg, ">");
            result += "</g>";
        } else {
            result += svg.substr(0, 1);
            svg.remove_prefix(std::min<std::size_t>(svg.size(), 1));
        }
    }
    return result;
}

} // namespace tavctl

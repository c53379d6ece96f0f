#include "tavctl/draw/dotText.h"

#include "platform/utf8.h"

namespace tavctl {

std::string markupText(std::string_view text) {
    constexpr const char* kReplacement = "\xEF\xBF\xBD";
    std::string result;
    while (!text.empty()) {
        const std::string_view before = text;
        const auto codePoint = platform::takeCodePoint(text);
        if (!codePoint) {
            text.remove_prefix(1);
            result += kReplacement;
        } else if (*codePoint < U' ' || *codePoint == 0x7F) {
            result += kReplacement;
        } else if (*codePoint == U'&') {
            result += "&amp;";
        } else if (*codePoint == U'<') {
            result += "&lt;";
        } else if (*codePoint == U'>') {
            result += "&gt;";
        } else if (*codePoint == U'"') {
            result += "&quot;";
        } else {
            result.append(before.substr(0, before.size() - text.size()));
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

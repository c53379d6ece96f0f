// Texts as they stand in a DOT file's HTML-like labels.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

// With the characters escaped that mean something in markup; control characters and bytes that are
// not UTF-8 become U+FFFD, which no reader stumbles over.
std::string markupText(std::string_view text);

// `<FONT ...>text</FONT>` with the text escaped.
std::string fontText(std::string_view attributes, std::string_view text);

} // namespace tavctl

// Texts as they stand in a DOT file's HTML-like labels.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

// As it is shown to people (see printable.h), with the characters escaped that mean something in
// markup or in a quoted attribute.
std::string markupText(std::string_view text);

// `<FONT ...>text</FONT>` with the text escaped.
std::string fontText(std::string_view attributes, std::string_view text);

} // namespace tavctl

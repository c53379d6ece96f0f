// Texts as they stand in a DOT file's HTML-like labels.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

// As it is shown to people (see printable.h), with the characters escaped that mean something in
// markup or in a quoted attribute.
std::string markupText(std::string_view text);

// The same where Graphviz undoes escapes once more: in tooltips. Line feeds stay.
std::string tooltipText(std::string_view text);

// Of a cell: what is told when the pointer rests on it; Graphviz wants a link for that. Empty
// without a text.
std::string tooltipAttributes(std::string_view text);

// `<FONT ...>text</FONT>` with the text escaped.
std::string fontText(std::string_view attributes, std::string_view text);

} // namespace tavctl

// What a browser shows of a drawing when the pointer rests on a part of it.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

// Takes Graphviz's SVG: its titles, which are the names of nodes and edges in the DOT file, give
// way to the tooltips, which Graphviz writes as titles of links that not every browser shows. The
// whole drawing gets the title.
std::string withTitles(std::string_view svg, std::string_view title);

} // namespace tavctl

#include "tavctl/draw/graph.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/draw/style.h"

#include <fmt/core.h>

#include <utility>

namespace tavctl {

namespace {

constexpr const char* kTextColour = "#1f2937";

} // namespace

Graph::Graph(std::string_view caption, const Tiling& tiling, double gap) {
    constexpr const char* kFont = "fontname=\"Helvetica,Arial,sans-serif\"";
    out_ = fmt::format("digraph tavctl {{\n"
                       "  graph [rankdir=LR, bgcolor=white, pad=0.3, nodesep=0.12, ranksep={}, "
                       "splines=polyline,\n"
                       "    pack={}, packmode=\"array_it{}\",\n"
                       "    outputorder=edgesfirst, {},\n"
                       "    fontsize=13, fontcolor=\"{}\",\n"
                       "    labelloc=t, labeljust=l, label=<{}>]\n",
                       gap, kTileGap + 2, tiling.rows, kFont, kTextColour, caption);
    out_ += fmt::format("  node [shape=plain, {}, fontsize=10,\n    fontcolor=\"{}\"]\n", kFont,
                        kTextColour);
    out_ += fmt::format("  edge [color=\"{}\", arrowhead=none, penwidth=1.2]\n", kLineColour);
}

void Graph::box(std::string_view name, std::string_view markup, std::string_view tooltip) {
    const std::string told =
        tooltip.empty() ? std::string() : fmt::format("tooltip=\"{}\", ", tooltipText(tooltip));
    out_ += fmt::format("  {} [{}label=<{}>]\n", name, told, markup);
}

void Graph::filler(std::size_t tile) {
    out_ += fmt::format("  {} [style=invis, label=\"\"]\n", nodeName('t', tile));
}

void Graph::join(std::string_view from, std::string_view box) {
    out_ += fmt::format("  {}:e -> {}:h:w\n", from, box);
}

void Graph::align(std::string_view left, std::string_view right) {
    out_ += fmt::format("  {}:h:e -> {}:h:w [style=invis, weight=1000]\n", left, right);
}

std::string Graph::finished() && {
    return std::move(out_ += "}\n");
}

std::string nodeName(char kind, std::size_t number) {
    return fmt::format("{}{}", kind, number);
}

std::string cellName(std::string_view box, char cell, std::size_t number) {
    return fmt::format("{}:{}{}", box, cell, number);
}

} // namespace tavctl

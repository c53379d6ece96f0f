// What a browser shows where the pointer rests.
#include "tavctl/draw/svgTitles.h"

#include <gtest/gtest.h>

namespace {

using tavctl::withTitles;

TEST(SvgTitles, TooltipsAreTitlesAndNamesOfNodesAreNone) {
    EXPECT_EQ(withTitles("<?xml?>\n<svg width=\"1\">\n<g id=\"node1\">\n<title>d0</title>\n"
                         "<g id=\"a\"><a xlink:title=\"TAV1: &lt;Box&gt;&#10;2\">\n<text>x</text>\n"
                         "<g><a xlink:href=\"#\" xlink:title=\"cell\">\n<path/>\n</a>\n</g>\n"
                         "</a>\n</g>\n</g>\n</svg>\n",
                         "bus & co"),
              "<?xml?>\n<svg width=\"1\">\n<title>bus &amp; co</title>\n<g id=\"node1\">\n"
              "<g id=\"a\"><g><title>TAV1: &lt;Box&gt;&#10;2</title>\n<text>x</text>\n"
              "<g><g><title>cell</title>\n<path/>\n</g>\n</g>\n</g>\n</g>\n</g>\n</svg>\n");
}

TEST(SvgTitles, WhatIsCutShortIsPassedOn) {
    EXPECT_EQ(withTitles("", "x"), "");
    EXPECT_EQ(withTitles("text <", "x"), "text <");
    EXPECT_EQ(withTitles("<title>never ends", "x"), "");
}

} // namespace

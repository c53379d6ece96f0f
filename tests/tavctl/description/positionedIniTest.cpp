// Where things stand in a description file; what is not there has the place of what it would be in.
#include "tavctl/description/positionedIni.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tavctl::lint::Place;
using tavctl::lint::PositionedIni;

const PositionedIni& file() {
    static const PositionedIni ini("[Box]\n"
                                   "Labels = A,B\n"
                                   "Long Line1 = one,\n"
                                   "Long Line2 = two\n");
    return ini;
}

std::string text(const Place& place) {
    std::string result = std::to_string(place.line);
    return result.append(":")
        .append(std::to_string(place.column))
        .append(":")
        .append(std::to_string(place.length));
}

TEST(PositionedIni, KeyThatIsThereHasItsOwnPlaces) {
    EXPECT_EQ(text(file().header("Box")), "1:2:3");
    EXPECT_EQ(text(file().name("Box", "Labels")), "2:1:6");
    EXPECT_EQ(text(file().value("Box", "Labels")), "2:10:3");
    EXPECT_EQ(text(file().part("Box", "Labels", 2, 1)), "2:12:1");
    EXPECT_EQ(text(file().item("Box", "Labels", 1)), "2:12:1");
}

TEST(PositionedIni, KeyThatIsMissingHasThePlaceOfItsSection) {
    for (const Place& place : {file().name("Box", "None"), file().value("Box", "None"),
                               file().part("Box", "None", 0, 1), file().item("Box", "None", 0)})
        EXPECT_EQ(text(place), "1:2:3");
    EXPECT_EQ(text(file().value("None", "Labels")), "0:0:0");
}

TEST(PositionedIni, PartOrItemBeyondTheValueHasThePlaceOfTheWhole) {
    EXPECT_EQ(text(file().part("Box", "Labels", 2, 2)), "2:10:3");
    EXPECT_EQ(text(file().item("Box", "Labels", 2)), "2:10:3");
}

// The pieces are joined before anything is looked for in them, so no one line has it.
TEST(PositionedIni, PartOfAValueInPiecesHasThePlaceOfThePiece) {
    EXPECT_EQ(text(file().part("Box", "Long", 0, 1)), "3:14:4");
    EXPECT_EQ(text(file().item("Box", "Long", 0)), "3:14:4");
}

} // namespace

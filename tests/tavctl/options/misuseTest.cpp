// What a refused command line was meant to be.
#include "tavctl/options/misuse.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::ElementsAre;
using testing::IsEmpty;

OptionWords option(const std::string& name) {
    OptionWords words;
    words.longNames = {name};
    return words;
}

// box [--version] (pack [--size] | keep [--dry] (stack [--high] | shelve))
const CommandWords kBox{
    "box",
    "",
    {option("version")},
    {{"pack", "", {option("size")}, {}},
     {"keep", "", {option("dry")}, {{"stack", "", {option("high")}, {}}, {"shelve", "", {}, {}}}}}};

Misuse misuse(const std::vector<std::string>& words) {
    return findMisuse(kBox, words, "as the parser says");
}

TEST(Misuse, WithoutACommandListsAll) {
    const Misuse found = misuse({"box"});
    EXPECT_EQ(found.word, "");
    EXPECT_EQ(found.reason, "no command given");
    EXPECT_EQ(found.command, "box");
    EXPECT_THAT(found.commands, ElementsAre("pack", "keep"));
}

TEST(Misuse, WrongCommandIsNamedWithTheNearest) {
    EXPECT_EQ(misuse({"box", "pakc"}).word, "pakc");
    EXPECT_EQ(misuse({"box", "pakc"}).reason, "unknown command; did you mean \"pack\"?");
    EXPECT_EQ(misuse({"box", "frobnicate"}).reason, "unknown command");
    const Misuse action = misuse({"box", "keep", "stak"});
    EXPECT_EQ(action.reason, "unknown command; did you mean \"stack\"?");
    EXPECT_EQ(action.command, "box keep");
    EXPECT_THAT(action.commands, ElementsAre("stack", "shelve"));
}

TEST(Misuse, WrongOptionIsNamedWithoutItsValue) {
    const Misuse found = misuse({"box", "pack", "--siez=3"});
    EXPECT_EQ(found.word, "--siez");
    EXPECT_EQ(found.reason, "unknown option; did you mean \"--size\"?");
    EXPECT_EQ(found.command, "box pack");
    EXPECT_THAT(found.commands, IsEmpty());
}

TEST(Misuse, OptionsOfTheCommandsAroundAreKnown) {
    EXPECT_EQ(misuse({"box", "keep", "stack", "--dry", "--hihg"}).reason,
              "unknown option; did you mean \"--high\"?");
    EXPECT_EQ(misuse({"box", "keep", "stack", "--dry", "--hihg"}).command, "box keep stack");
    EXPECT_EQ(misuse({"box", "pack", "--dry"}).reason, "unknown option");
}

// It may be the value of the option before it.
TEST(Misuse, WordBehindAnOptionOfACommandIsNotTakenForAnAction) {
    EXPECT_EQ(misuse({"box", "keep", "--dry", "stak"}).reason, "as the parser says");
}

TEST(Misuse, OtherwiseTheParserHasTheWord) {
    const Misuse found = misuse({"box", "pack", "--size"});
    EXPECT_EQ(found.word, "");
    EXPECT_EQ(found.reason, "as the parser says");
    EXPECT_EQ(found.command, "box pack");
}

// Two dashes alone end the options.
TEST(Misuse, TwoDashesAreNoOption) {
    EXPECT_EQ(misuse({"box", "pack", "--", "one"}).reason, "as the parser says");
}

} // namespace

// A command line of the tests' own: what it may say, what it is refused for, what its help tells.
#include "tavctl/options/options.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

namespace {

using namespace tavctl;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using LineKind = ParsedLine::Kind;
using Words = std::vector<std::string>;

// "box pack" has an option of each kind; "box post" has an argument that must be there, and "box
// keep" has actions.
struct Box {
    OptionParser parser{"box", "Packs and posts.", "box 1.2"};

    CommandOptions pack = parser.command("pack", "Put things into a box");
    bool fragile = false;
    std::string label;
    std::string size = "small";
    std::string log;
    std::string store;
    int layers = 1;
    Words wrappings;
    Words things;

    CommandOptions post = parser.command("post", "Send a box");
    std::string address;
    std::string stamp;

    CommandOptions keep = parser.command("keep", "Keep boxes");
    bool dry = false;
    bool high = false;
    CommandOptions stack = keep.action("stack", "One on the other");
    CommandOptions shelve = keep.action("shelve", "Side by side");

    Box() {
        parser.footer("Boxes are square.");
        pack.flag("-f,--fragile", fragile, "Take care");
        pack.value("--label", label, ValueForm::text("TEXT"), "What is written on it");
        pack.value("--size", size, ValueForm::choice("SIZE", {"small", "large"}), "How large");
        pack.value("-l,--log", log, ValueForm::file(), "Where to note it");
        pack.value("--store", store, ValueForm::folder(), "Where boxes are");
        pack.number("--layers", layers, "N", 1, 9, "How many");
        pack.values("--wrap", wrappings, ValueForm::text("PAPER..."), "What goes around it");
        pack.needs("--label", "--wrap");
        pack.arguments(things, ValueForm::file("THING"), "What goes in");
        pack.footer("Example: box pack ball");
        post.argument(address, ValueForm::text("ADDRESS"), "Where to");
        post.optionalArgument(stamp, ValueForm::choice("STAMP", {"red", "blue"}), "Its colour");
        keep.flag("--dry", dry, "In a dry place");
        stack.flag("--high", high, "More than three");
    }

    ParsedLine parse(Words words) {
        words.insert(words.begin(), "box");
        return parser.parse(words);
    }
};

// What the parser says of words that it refuses.
std::string refusal(const Words& words) {
    Box box;
    const ParsedLine line = box.parse(words);
    EXPECT_EQ(line.kind, LineKind::misuse) << testing::PrintToString(words);
    return line.text;
}

std::string answer(const Words& words) {
    Box box;
    const ParsedLine line = box.parse(words);
    EXPECT_EQ(line.kind, LineKind::question) << testing::PrintToString(words);
    return line.text;
}

const CommandWords& named(const std::vector<CommandWords>& commands, const std::string& name) {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const auto& each) { return each.name == name; });
    if (found == commands.end())
        throw std::out_of_range(name);
    return *found;
}

TEST(Options, VariablesKeepTheirValuesUnlessToldOtherwise) {
    Box box;
    const ParsedLine line = box.parse({"pack"});
    EXPECT_EQ(line.kind, LineKind::command);
    EXPECT_EQ(line.text, "");
    EXPECT_TRUE(box.pack.isGiven());
    EXPECT_FALSE(box.post.isGiven());
    EXPECT_FALSE(box.fragile);
    EXPECT_EQ(box.size, "small");
    EXPECT_EQ(box.layers, 1);
    EXPECT_THAT(box.things, IsEmpty());
}

TEST(Options, EveryNameOfAnOptionSetsItsVariable) {
    for (const char* name : {"-f", "--fragile"}) {
        Box box;
        EXPECT_EQ(box.parse({"pack", name}).kind, LineKind::command);
        EXPECT_TRUE(box.fragile) << name;
    }
    for (const Words& words : {Words{"pack", "-l", "a.txt"}, Words{"pack", "-la.txt"},
                               Words{"pack", "--log", "a.txt"}, Words{"pack", "--log=a.txt"}}) {
        Box box;
        EXPECT_EQ(box.parse(words).kind, LineKind::command);
        EXPECT_EQ(box.log, "a.txt") << testing::PrintToString(words);
    }
}

TEST(Options, ValuesAndArgumentsStandInAnyOrder) {
    Box box;
    const ParsedLine line = box.parse({"pack", "ball", "--wrap", "red", "blue", "--size", "large",
                                       "doll", "--store", "shed", "--layers", "9", "--label", "x"});
    EXPECT_EQ(line.kind, LineKind::command) << line.text;
    EXPECT_THAT(box.things, ElementsAre("ball", "doll"));
    EXPECT_THAT(box.wrappings, ElementsAre("red", "blue"));
    EXPECT_EQ(box.size, "large");
    EXPECT_EQ(box.store, "shed");
    EXPECT_EQ(box.layers, 9);
    EXPECT_EQ(box.label, "x");
}

TEST(Options, OptionTakesOneValueAndNoFewer) {
    EXPECT_EQ(refusal({"pack", "--log"}), "--log: 1 required FILE missing");
    EXPECT_THAT(refusal({"pack", "--log", "a", "--log", "b"}), HasSubstr("--log"));
    EXPECT_THAT(refusal({"pack", "--wrap"}), HasSubstr("--wrap"));
}

// Not as if it had been left out, nor the next word in its place.
TEST(Options, EmptyValueIsRefused) {
    for (const char* option : {"--label", "--size", "--log", "--store", "--wrap", "--layers"}) {
        EXPECT_EQ(refusal({"pack", option, "", "--wrap", "red"}),
                  std::string(option) + ": the value is empty");
        EXPECT_EQ(refusal({"pack", std::string(option) + "=", "red", "--wrap", "red"}),
                  std::string(option) + ": the value is empty");
    }
    EXPECT_EQ(refusal({"pack", "-l", ""}), "--log: the value is empty");
    EXPECT_EQ(refusal({"pack", "--wrap", "red", ""}), "--wrap: the value is empty");
    EXPECT_EQ(refusal({"pack", ""}), "THING: the value is empty");
    EXPECT_EQ(refusal({"pack", "ball", ""}), "THING: the value is empty");
    EXPECT_EQ(refusal({"post", ""}), "ADDRESS: the value is empty");
    EXPECT_EQ(refusal({"post", "here", ""}), "STAMP: the value is empty");
    Box box;
    EXPECT_EQ(box.parse({"pack", "--label", " ", "--wrap", "="}).kind, LineKind::command);
}

TEST(Options, HelpTellsWhatAValueMayBeOnce) {
    const std::string help = answer({"pack", "--help"});
    EXPECT_THAT(help, HasSubstr("SIZE:{small,large}"));
    EXPECT_THAT(help, HasSubstr("[1 - 9]"));
    OptionParser parser("box", "Packs.", "box 1.2");
    CommandOptions pack = parser.command("pack", "Put things into a box");
    std::string size;
    int layers = 1;
    pack.value("--size", size, ValueForm::choice("SIZE", {"small", "large"}), "small or large");
    pack.number("--layers", layers, "N", 1, 9, "How many (1-9)");
    const std::string shorter = parser.parse({"box", "pack", "--help"}).text;
    EXPECT_THAT(shorter, HasSubstr("--size SIZE "));
    EXPECT_THAT(shorter, HasSubstr("--layers N "));
}

TEST(Options, ChoiceIsOneOfItsWords) {
    EXPECT_EQ(refusal({"pack", "--size", "huge"}), "--size: huge not in {small,large}");
    EXPECT_EQ(refusal({"pack", "--size", "Large"}), "--size: Large not in {small,large}");
    EXPECT_EQ(refusal({"post", "home", "green"}), "STAMP: green not in {red,blue}");
}

TEST(Options, NumberStandsInItsRange) {
    for (const char* good : {"1", "9"}) {
        Box box;
        EXPECT_EQ(box.parse({"pack", "--layers", good}).kind, LineKind::command);
        EXPECT_EQ(std::to_string(box.layers), good);
    }
    for (const char* bad : {"0", "10", "-1", "many", "2.5", ""})
        EXPECT_THAT(refusal({"pack", "--layers", bad}), HasSubstr("--layers")) << bad;
}

TEST(Options, OptionIsRefusedWithoutTheOneThatItNeeds) {
    EXPECT_EQ(refusal({"pack", "--label", "x"}), "--label requires --wrap");
}

TEST(Options, ArgumentMustBeThereUnlessOptional) {
    EXPECT_EQ(refusal({"post"}), "ADDRESS is required");
    Box box;
    EXPECT_EQ(box.parse({"post", "home"}).kind, LineKind::command);
    EXPECT_EQ(box.address, "home");
    EXPECT_EQ(box.stamp, "");
    EXPECT_THAT(refusal({"post", "home", "red", "more"}), HasSubstr("more"));
}

TEST(Options, OneCommandIsTold) {
    EXPECT_THAT(refusal({}), HasSubstr("subcommand"));
    EXPECT_THAT(refusal({"burn"}), HasSubstr("subcommand"));
    EXPECT_THAT(refusal({"pack", "--high"}), HasSubstr("--high"));
}

TEST(Options, ActionsMayBeLeftOut) {
    Box box;
    EXPECT_EQ(box.parse({"keep", "--dry"}).kind, LineKind::command);
    EXPECT_TRUE(box.keep.isGiven());
    EXPECT_FALSE(box.stack.isGiven());
    EXPECT_FALSE(box.shelve.isGiven());
    EXPECT_TRUE(box.dry);
}

TEST(Options, OptionsOfTheCommandStandBehindItsActionToo) {
    Box box;
    EXPECT_EQ(box.parse({"keep", "stack", "--dry", "--high"}).kind, LineKind::command);
    EXPECT_TRUE(box.keep.isGiven());
    EXPECT_TRUE(box.stack.isGiven());
    EXPECT_FALSE(box.shelve.isGiven());
    EXPECT_TRUE(box.dry);
    EXPECT_TRUE(box.high);
    EXPECT_THAT(refusal({"keep", "shelve", "--high"}), HasSubstr("--high"));
    EXPECT_THAT(refusal({"keep", "stack", "shelve"}), HasSubstr("shelve"));
}

TEST(Options, VersionIsTold) {
    EXPECT_EQ(answer({"--version"}), "box 1.2\n");
}

TEST(Options, HelpOfTheProgramListsItsCommandsAndEndsWithTheFooter) {
    const std::string help = answer({"--help"});
    EXPECT_EQ(answer({"-h"}), help);
    EXPECT_THAT(help, HasSubstr("Packs and posts.\n"));
    EXPECT_THAT(help, HasSubstr("  pack                    Put things into a box\n"));
    EXPECT_THAT(help, HasSubstr("  -h,--help               Print this help and exit\n"));
    EXPECT_THAT(help, HasSubstr("  --version               Print the version and exit\n"));
    EXPECT_THAT(help, EndsWith("\nBoxes are square.\n"));
}

TEST(Options, HelpOfACommandListsItsOptionsAndEndsWithItsFooter) {
    const std::string help = answer({"pack", "--help"});
    EXPECT_THAT(help, HasSubstr("Put things into a box\n"));
    EXPECT_THAT(help, HasSubstr("  THING ...               What goes in\n"));
    EXPECT_THAT(help, HasSubstr("  -f,--fragile            Take care\n"));
    EXPECT_THAT(help, HasSubstr("  -l,--log FILE           Where to note it\n"));
    EXPECT_THAT(help, HasSubstr("  --store DIR             Where boxes are\n"));
    EXPECT_THAT(help, HasSubstr("  --size SIZE:{small,large}\n"));
    EXPECT_THAT(help, HasSubstr("  --layers N:INT in [1 - 9]\n"));
    EXPECT_THAT(help, EndsWith("\nExample: box pack ball\n"));
    EXPECT_THAT(answer({"post", "--help"}), Not(HasSubstr("square")));
}

TEST(OptionWords, TellEveryCommandInTheOrderOfDeclaration) {
    const CommandWords words = Box().parser.words();
    EXPECT_EQ(words.name, "box");
    EXPECT_EQ(words.description, "Packs and posts.");
    EXPECT_THAT(commandNames(words), ElementsAre("pack", "post", "keep"));
    EXPECT_THAT(dashedNames(words), ElementsAre("--version", "-h", "--help"));
    const CommandWords& keep = named(words.commands, "keep");
    EXPECT_EQ(keep.description, "Keep boxes");
    EXPECT_THAT(commandNames(keep), ElementsAre("stack", "shelve"));
    EXPECT_THAT(dashedNames(named(keep.commands, "stack")), ElementsAre("-h", "--help", "--high"));
}

TEST(OptionWords, TellWhatEachOptionTakes) {
    using Value = OptionWords::Value;
    const CommandWords words = Box().parser.words();
    std::vector<std::pair<std::string, Value>> kinds;
    for (const OptionWords& each : named(words.commands, "pack").options)
        kinds.emplace_back(each.description, each.value);
    EXPECT_THAT(
        kinds,
        ElementsAre(
            std::pair("Print this help and exit", Value::none), std::pair("Take care", Value::none),
            std::pair("What is written on it", Value::text), std::pair("How large", Value::choice),
            std::pair("Where to note it", Value::file), std::pair("Where boxes are", Value::folder),
            std::pair("How many", Value::text), std::pair("What goes around it", Value::text),
            std::pair("What goes in", Value::file)));
}

TEST(OptionWords, TellNamesAndChoices) {
    const CommandWords words = Box().parser.words();
    const OptionWords& fragile = named(words.commands, "pack").options.at(1);
    EXPECT_THAT(fragile.shortNames, ElementsAre("f"));
    EXPECT_THAT(fragile.longNames, ElementsAre("fragile"));
    EXPECT_FALSE(fragile.isArgument());
    const OptionWords& stamp = named(words.commands, "post").options.at(2);
    EXPECT_TRUE(stamp.isArgument());
    EXPECT_THAT(stamp.choices, ElementsAre("red", "blue"));
    EXPECT_THAT(dashedNames(stamp), IsEmpty());
}

} // namespace

// Texts from outside that would be commands to a terminal, or hide what they are: shown by number,
// in every command's result, errors and drawings.
#include "platform/utf8.h"
#include "tavctl/words/printable.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/everyCommand.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>

namespace {

using namespace tavctltest;
using testsupport::FileFolder;

// A clear screen, a title, a C1 sequence, a backspace, an override of direction, a mark, a
// character that is none, a byte that is no UTF-8, and at the end a backslash.
const std::string kEvil = "\033[2J\033]0;x\007\xC2\x9B"
                          "2J\b\xE2\x80\xAE\xEF\xBB\xBF\xEF\xBF\xBE\xFF"
                          "<&>\x7F\\";

// Of one description, one dump and one name file, all with such texts in them.
class HostileText : public testing::Test {
protected:
    HostileText() {
        std::filesystem::create_directory(folder_.file("PCI Hardware Descriptions"));
        std::string description = testsupport::fileText(
            kSampleDescriptions + "/PCI Hardware Descriptions/tav-b3-switch-box.ini");
        description =
            std::regex_replace(description, std::regex("Model *=[^\r\n]*"), "Model = Box" + kEvil);
        description = std::regex_replace(description, std::regex("TerminalNameBase *=[^\r\n]*"),
                                         "TerminalNameBase = B" + kEvil);
        folder_.write("PCI Hardware Descriptions/box.ini", description);
        folder_.write("zotavpci.ini", "[MR00:00,28]\r\nModel = \"M\\x1B[2J\"\r\n"
                                      "TerminalName = \"T\\x1B[2J" +
                                          kEvil + "\"\r\n");
        folder_.write("pci.ids", "104c  Vendor" + kEvil + "\n\t8232  Device" + kEvil + "\n");
    }

    [[nodiscard]] std::string options() const {
        const std::string here = std::filesystem::path(folder_.file("x")).parent_path().string();
        return kDump + "--descriptions " + here + " --state " + here + " ";
    }

    FileFolder folder_;
};

// Everything that was printed, but for line feeds and tabulators, is for reading.
bool isPlain(std::string_view text) {
    while (!text.empty()) {
        const auto character = platform::takeCodePoint(text);
        if (!character ||
            (*character != U'\n' && *character != U'\t' && tavctl::isUnprintable(*character)))
            return false;
    }
    return true;
}

TEST_F(HostileText, NeverReachesATerminalAsItIs) {
    for (const std::string& form : looksAtMachine()) {
        const auto result = runTavctl(form + " " + options());
        EXPECT_TRUE(isPlain(result.output)) << form << "\n" << result.output;
    }
    const auto named = runTavctl("tree --pci-ids " + folder_.file("pci.ids") + " " + options());
    EXPECT_TRUE(says(named, 0, "Vendor\\x1B[2J"));
    EXPECT_TRUE(isPlain(named.output)) << named.output;
}

TEST_F(HostileText, IsShownByNumberInTables) {
    EXPECT_TRUE(says(runTavctl("list -v " + options()), 0, "Box\\x1B[2J\\x1B]0;x\\x07\\x9B2J"));
    EXPECT_TRUE(says(runTavctl("explain " + options()), 0, "Box\\x1B[2J"));
}

TEST_F(HostileText, IsWholeInJson) {
    const auto listed = nlohmann::json::parse(outputOf("list --json " + options()));
    std::string model = listed.at("devices").at(0).at("model");
    EXPECT_TRUE(model.starts_with("Box\033[2J\033]0;x\007\xC2\x9B"
                                  "2J"))
        << model;
    EXPECT_TRUE(model.ends_with("\\")) << model;
    for (const std::string& form : looksAtMachine()) {
        if (form.find("--json") == std::string::npos)
            continue;
        std::stringstream lines(outputOf(form + " " + options()));
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(nlohmann::json::accept(line)) << form;
    }
}

TEST_F(HostileText, IsDrawn) {
    const auto drawn = runTavctl("draw " + options());
    EXPECT_TRUE(says(drawn, 0, "</svg>\n"));
    EXPECT_TRUE(says(drawn, 0, "2J"));
}

TEST_F(HostileText, IsShownByNumberInErrors) {
    const std::string name = "$(printf '\\033[2J\\302\\233')";
    for (const std::string& words :
         {"list --dump \"" + name + "\" " + kDescriptions, "lint \"" + name + "\"",
          "\"" + name + "\"", "list \"--" + name + "\"",
          "explain " + kDump + kDescriptions + "\"" + name + "\"",
          "tree " + options() + " -s \"" + name + "\"",
          "tree " + options() + " --model \"" + name + "\"", "list --descriptions \"" + name + "\"",
          "names restore " + options() + "\"" + name + "\"",
          "names rename " + options() + "\"" + name + "\" TAV2",
          "names forget " + options() + "\"" + name + "\"",
          "draw -o \"/nonexistent/" + name + "\" " + options()}) {
        const auto result = runTavctl(words);
        EXPECT_NE(result.exitStatus, 0) << words;
        EXPECT_TRUE(isPlain(result.output)) << words << "\n" << result.output;
        EXPECT_NE(result.output.find("\\x1B[2J"), std::string::npos) << words << result.output;
    }
}

} // namespace

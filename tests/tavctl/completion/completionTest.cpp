// What shells complete, as the shells themselves say.
#include "tavctl/completion/completion.h"

#include "tavctl/commandLine.h"
#include "tavctl/options/commandWords.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using namespace tavctl;
using namespace tavctltest;
using testing::HasSubstr;
using testsupport::FileFolder;

// Every command with the words that lead to it.
void forEachCommand(const CommandWords& command, const std::string& path,
                    const std::function<void(const CommandWords&, const std::string&)>& use) {
    use(command, path);
    for (const CommandWords& each : command.commands)
        forEachCommand(each, path + " " + each.name, use);
}

// What a shell offers in place of the last word, in the order of its own.
struct Shells {
    FileFolder folder;
    std::string bash = folder.write("bash", bashCompletion(commandLineWords()));
    std::string zsh = folder.write("zsh", zshCompletion(commandLineWords()));
    std::string fish = folder.write("fish", fishCompletion(commandLineWords()));

    [[nodiscard]] std::string inBash(const std::string& words) const {
        return testsupport::runCommand("cd " + folder.file("") + " && bash -c 'source " + bash +
                                       "; COMP_WORDS=(" + words +
                                       "); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); _tavctl; "
                                       "printf \"%s\\n\" \"${COMPREPLY[@]}\"' 2>&1")
            .output;
    }

    [[nodiscard]] std::string inFish(const std::string& words) const {
        return testsupport::runCommand("cd " + folder.file("") + " && HOME=" + folder.file("") +
                                       " fish --no-config -c 'source " + fish + "; complete -C \"" +
                                       words + "\"' 2>&1")
            .output;
    }
};

TEST(Completion, BashOffersEveryCommandAndOption) {
    const Shells shells;
    forEachCommand(commandLineWords(), "", [&](const auto& command, const auto& path) {
        const std::string before = "tavctl" + path;
        const std::string words = "\n" + shells.inBash(before + " \"\"");
        for (const CommandWords& each : command.commands)
            EXPECT_THAT(words, HasSubstr("\n" + each.name + "\n")) << before;
        const std::string options = "\n" + shells.inBash(before + " -");
        for (const std::string& name : dashedNames(command))
            EXPECT_THAT(options, HasSubstr("\n" + name + "\n")) << before;
    });
}

TEST(Completion, FishOffersEveryCommandAndOption) {
    const Shells shells;
    forEachCommand(commandLineWords(), "", [&](const auto& command, const auto& path) {
        const std::string before = "tavctl" + path;
        const std::string words = "\n" + shells.inFish(before + " ");
        for (const CommandWords& each : command.commands)
            EXPECT_THAT(words, HasSubstr("\n" + each.name + "\t")) << before;
        const std::string options = "\n" + shells.inFish(before + " -");
        for (const std::string& name : dashedNames(command))
            EXPECT_THAT(options + shells.inFish(before + " --"), HasSubstr("\n" + name + "\t"))
                << before;
    });
}

// zsh completes within its line editor only, so its script is looked at instead.
TEST(Completion, ZshScriptIsWellFormedAndHasEveryCommandAndOption) {
    const Shells shells;
    EXPECT_EQ(testsupport::runCommand("zsh -n " + shells.zsh + " 2>&1").output, "");
    const std::string script = shells.folder.read("zsh");
    EXPECT_TRUE(script.starts_with("#compdef tavctl\n"));
    // What parts the texts of an option is no part of them.
    EXPECT_THAT(script, HasSubstr("'--lanes[Lanes of a connector (1-32)\\: more take several "
                                  "labels]:value: '"));
    forEachCommand(commandLineWords(), "", [&](const auto& command, auto path) {
        std::replace(path.begin(), path.end(), ' ', '_');
        const std::size_t begin = script.find("\n_tavctl" + path + "() {\n");
        ASSERT_NE(begin, std::string::npos) << path;
        const std::string function = script.substr(begin, script.find("\n}\n", begin) - begin);
        for (const CommandWords& each : command.commands)
            EXPECT_THAT(function, HasSubstr("'" + each.name + ":")) << path;
        for (const std::string& name : dashedNames(command))
            EXPECT_THAT(function, HasSubstr("'" + name + "[")) << path;
    });
}

TEST(Completion, ValuesAreOfferedByTheirKind) {
    const Shells shells;
    static_cast<void>(shells.folder.write("bus.txt", ""));
    std::filesystem::create_directory(shells.folder.file("descriptions"));
    EXPECT_EQ(shells.inBash("tavctl draw --format \"\""), "svg\ndot\n");
    EXPECT_EQ(shells.inBash("tavctl completion z"), "zsh\n");
    EXPECT_EQ(shells.inBash("tavctl tree --dump bu"), "bus.txt\n");
    EXPECT_EQ(shells.inBash("tavctl tree --descriptions \"\""), "descriptions\n");
    EXPECT_EQ(shells.inBash("tavctl names preview --new-descriptions \"\""), "descriptions\n");
    EXPECT_EQ(shells.inBash("tavctl names check --state d"), "descriptions\n");
    EXPECT_EQ(shells.inBash("tavctl names backup bu"), "bus.txt\n");
    EXPECT_THAT(shells.inFish("tavctl draw --format "), HasSubstr("dot\t"));
    EXPECT_THAT(shells.inFish("tavctl tree --dump bu"), HasSubstr("bus.txt"));
    EXPECT_THAT(shells.inFish("tavctl tree --state "), HasSubstr("descriptions/"));
}

// In the shell tavctl is found by its name, and the line says which bus is meant.
TEST(Completion, DevicesOfTheBusAtHandAreOffered) {
    const Shells shells;
    const std::string path =
        "PATH=" + std::filesystem::path(TAVCTL_FILE).parent_path().string() + ":$PATH; ";
    const auto offered = [&](const std::string& typed) {
        const std::string line = "tavctl tree " + kDump + kDescriptions;
        return testsupport::runCommand(
                   "bash -c '" + path + "source " + shells.bash + "; COMP_WORDS=(" + line + "\"" +
                   typed + "\"); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); COMP_LINE=\"" + line + typed +
                   "\"; COMP_POINT=${#COMP_LINE}; _tavctl; printf \"%s\\n\" "
                   "\"${COMPREPLY[@]}\"' 2>&1")
            .output;
    };
    EXPECT_EQ(offered("TAVC"), "TAVCard1\n");
    EXPECT_THAT(offered("TAV"), HasSubstr("TAV-B3\\ Switch\\ Box\n"));
    EXPECT_EQ(offered("09:"), "00.0\n") << "bash divides words at colons";
    EXPECT_THAT(testsupport::runCommand(path + "HOME=" + shells.folder.file("") +
                                        " fish --no-config -c 'source " + shells.fish +
                                        "; complete -C \"tavctl list " + kDump + kDescriptions +
                                        "TAVC\"' 2>&1")
                    .output,
                HasSubstr("TAVCard1"));
}

TEST(CompletionCommand, TellsTheWordsForDevices) {
    EXPECT_EQ(outputOf("completion devices " + kDump + kDescriptions),
              "TAV1\nTAV2\nTAVCard1\nTAV3\n01:00.0\n09:00.0\n04:00.0\n41:00.0\n"
              "TAV-B3 Switch Box\nTAV-C1 Adapter Card\nTAV-W7 Wide Switch Box\n");
}

TEST(CompletionCommand, WritesTheScriptOfAShell) {
    EXPECT_EQ(outputOf("completion bash"), bashCompletion(commandLineWords()));
    EXPECT_EQ(outputOf("completion zsh"), zshCompletion(commandLineWords()));
    EXPECT_EQ(outputOf("completion fish"), fishCompletion(commandLineWords()));
    EXPECT_EQ(outputOf("completion powershell"), powershellCompletion(commandLineWords()));
    EXPECT_TRUE(says(tavctltest::runTavctl("completion csh"), 2,
                     "csh not in {bash,zsh,fish,powershell,devices}"));
}

} // namespace

// tavctl as a person runs it: usage, exit statuses, sentences.
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testsupport::TemporaryFolder;

std::string state(const TemporaryFolder& folder) {
    return "--state " + folder.path().string() + " ";
}

TEST(CommandLine, ListsTheSampleMachine) {
    const TemporaryFolder folder;
    const auto result = runTavctl("list " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(
        says(result, 0, "TAVCard1  TAV-C1 Adapter Card     04:00.0  PCI           LEFT,RIGHT"));
}

TEST(CommandLine, LinesFitEightyColumns) {
    const TemporaryFolder folder;
    const auto result = runTavctl("list " + kDump + kDescriptions + state(folder));
    std::size_t start = 0;
    for (auto end = result.output.find('\n'); end != std::string::npos;
         start = end + 1, end = result.output.find('\n', start))
        EXPECT_LE(end - start, 80U) << result.output.substr(start, end - start);
    EXPECT_GT(start, 0U);
}

TEST(CommandLine, FolderNamesMayEndWithASeparator) {
    const TemporaryFolder folder;
    const auto result =
        runTavctl("list " + kDump + "--descriptions " TAV_SOURCE_DIR "/descriptions/ --state " +
                  folder.path().string() + "/");
    EXPECT_TRUE(says(result, 0, "TAV3"));
}

TEST(CommandLine, WrongUsageExitsWithTwoAndNamesTheWrongWord) {
    EXPECT_TRUE(
        says(runTavctl(""), 2, "tavctl: read the command line: no command given\nCommands: "));
    EXPECT_TRUE(says(runTavctl("frobnicate"), 2,
                     "tavctl: read the command line (frobnicate): unknown command\n"));
    EXPECT_TRUE(says(runTavctl("lst"), 2, "(lst): unknown command; did you mean \"list\"?\n"));
    EXPECT_TRUE(says(runTavctl("list --no-such-option"), 2,
                     "tavctl: read the command line (--no-such-option): unknown option\n"
                     "\"tavctl list --help\" says more.\n"));
    EXPECT_TRUE(says(runTavctl("list --descriptons=x"), 2,
                     "(--descriptons): unknown option; did you mean \"--descriptions\"?\n"));
    EXPECT_TRUE(says(runTavctl("list --dump"), 2, "--dump: 1 required PATH missing"));
    // What stands behind an option may be its value: only the word itself is told.
    EXPECT_TRUE(
        says(runTavctl("names --state /tmp lst"), 2, "was not expected: lst\nCommands: list,"));
    EXPECT_TRUE(says(runTavctl("record extra"), 2, "extra"));
}

TEST(CommandLine, EmptyValueIsWrongUsageAndNamesTheOption) {
    for (const char* option : {"--dump", "--descriptions", "--state", "--plugin", "--model", "-s",
                               "--output", "--pci-ids", "--format"}) {
        const std::string sentence =
            "tavctl: read the command line: " + std::string(option) + ": the value is empty\n";
        EXPECT_TRUE(says(runTavctl("draw " + std::string(option) + " ''"), 2, sentence));
    }
    EXPECT_TRUE(says(runTavctl("describe 01:00.0 --model ''"), 2, "--model: the value is empty"));
    EXPECT_TRUE(says(runTavctl("list --dump= -v"), 2, "--dump: the value is empty"));
    EXPECT_TRUE(says(runTavctl("explain ''"), 2, "MODEL: the value is empty"));
    EXPECT_TRUE(says(runTavctl("lint ''"), 2, "FILE: the value is empty"));
    EXPECT_TRUE(says(runTavctl("names backup ''"), 2, "FILE: the value is empty"));
}

TEST(CommandLine, WrongUsageIsJsonOnDemand) {
    EXPECT_TRUE(says(runTavctl("tre --json"), 2,
                     R"("error":{"operation":"read the command line","object":"tre",)"
                     R"("reason":"unknown command; did you mean \"tree\"?","status":null,)"));
}

TEST(CommandLine, TreeMarksTheDevicesOfTheSampleMachine) {
    const TemporaryFolder folder;
    const std::string options = kDump + kDescriptions + state(folder);
    runTavctl("list " + options);
    const auto whole = runTavctl("tree " + options);
    EXPECT_TRUE(says(whole, 0, " |  |     |  \\-00.0-[05-07]  {TAVCard1: TAV-C1 Adapter Card}  "));
    EXPECT_TRUE(says(whole, 0, "{TAVCard1 anchor}"));
    EXPECT_TRUE(says(whole, 0, "{TAV3 ports \"C1\" \"C2\" \"C3\" \"C4\", empty}"));
    const auto part = runTavctl("tree -n -s 0000:05:01.0 " + options);
    EXPECT_EQ(part.output,
              "-[0000:00]\n"
              " \\-04.0-[01-08]  x1 2.5 GT/s  8086:3420 8086:0000\n"
              "    \\-00.0-[02-08]  {TAV1: TAV-B3 Switch Box}  104c:8232 0000:0000\n"
              "       \\-01.0-[04-07]  {TAV1 port \"2\"}  x1 2.5 GT/s  104c:8233 0000:0000\n"
              "          \\-00.0-[05-07]  {TAVCard1: TAV-C1 Adapter Card}  1b36:000e 0000:0000\n"
              "             \\-01.0  {TAVCard1 anchor}  1b36:0002 1af4:1100\n");
    EXPECT_EQ(runTavctl("tree -n 05:01.0 " + options).output,
              "tavctl: 05:01.0 is an address: no device is reported there\n" + part.output);
}

TEST(CommandLine, TreeOfAModelShowsNoOtherDevices) {
    const TemporaryFolder folder;
    const auto result =
        runTavctl("tree -n --model TAV-W7 " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 0, "-[0000:40]\n"));
    EXPECT_TRUE(says(result, 0, "{TAV3*: TAV-W7 Wide Switch Box}"));
    EXPECT_EQ(result.output.find("TAV1"), std::string::npos) << result.output;
}

TEST(CommandLine, TreeOfWhatIsNotThereExitsWithOne) {
    const TemporaryFolder folder;
    const std::string options = kDump + kDescriptions + state(folder);
    EXPECT_TRUE(says(runTavctl("tree -s 01:01.0 " + options), 1,
                     "tavctl: find function (01:01.0): there is no function at this address"));
    EXPECT_TRUE(
        says(runTavctl("tree -s 1.0 " + options), 1, "expected an address such as 01:00.0"));
    EXPECT_TRUE(says(runTavctl("tree --model X " + options), 1,
                     "tavctl: find model (X): no device of this model is present; there is "
                     "TAV-B3 Switch Box, TAV-C1 Adapter Card, TAV-W7 Wide Switch Box\n"));
    EXPECT_TRUE(says(runTavctl("tree --json --model X " + options), 1,
                     R"("error":{"operation":"find model","object":"X",)"));
}

TEST(CommandLine, NamesOfVendorsComeFromTheNamedFile) {
    const TemporaryFolder folder;
    const std::string options = kDump + kDescriptions + state(folder);
    const auto ids = folder.file("pci.ids", "8086  The Maker\n\t3420  The Port\n").string();
    EXPECT_TRUE(says(runTavctl("tree --pci-ids " + ids + " " + options), 0,
                     "+-04.0-[01-08]  x1 2.5 GT/s  The Maker The Port\n"));
    EXPECT_TRUE(says(runTavctl("tree --pci-ids /nonexistent " + options), 3,
                     "read names of vendors and devices (/nonexistent): No such file"));
}

// The commands that a wrong word makes the program name, each with its blank before it.
std::vector<std::string> commandsNamed(const std::string& words) {
    const std::string output = runTavctl(words).output;
    const std::size_t start = output.find("Commands: ") + std::string("Commands: ").size();
    std::stringstream list(output.substr(start, output.find('\n', start) - start));
    std::vector<std::string> commands;
    for (std::string word; list >> word;) {
        word.erase(word.find_last_not_of(',') + 1);
        commands.push_back(word);
    }
    return commands;
}

void expectHelpFitsAScreen(const std::string& words) {
    const auto help = runTavctl(words + " --help");
    EXPECT_TRUE(says(help, 0, "Example: tavctl " + words));
    EXPECT_TRUE(words.empty() || says(help, 0, "\nWrites: "));
    EXPECT_LE(std::count(help.output.begin(), help.output.end(), '\n'), 24) << help.output;
    std::stringstream text(help.output);
    for (std::string line; std::getline(text, line);)
        EXPECT_LE(line.size(), 80U) << line;
}

TEST(CommandLine, EveryHelpFitsAScreenAndHasAnExample) {
    expectHelpFitsAScreen("");
    const auto commands = commandsNamed("");
    EXPECT_EQ(commands.size(), 14U);
    for (const std::string& command : commands)
        expectHelpFitsAScreen(command);
    const auto actions = commandsNamed("names wrong");
    EXPECT_EQ(actions.size(), 8U);
    for (const std::string& action : actions)
        expectHelpFitsAScreen("names " + action);
}

TEST(CommandLine, HelpAndVersionExitWithZero) {
    EXPECT_TRUE(says(runTavctl("--help"), 0, "Exit status"));
    EXPECT_TRUE(says(runTavctl("list --help"), 0, "--descriptions"));
    EXPECT_EQ(runTavctl("--version").output, "tavctl " TAV_VERSION "\n");
}

TEST(CommandLine, VersionIsADocumentWithJson) {
    const std::string document =
        R"({"version":1,"program":"tavctl","programVersion":")" TAV_VERSION "\"}\n";
    EXPECT_TRUE(says(runTavctl("--version --json"), 0, document));
    EXPECT_EQ(runTavctl("--json --version").output, document);
    // Elsewhere it is no option.
    EXPECT_TRUE(says(runTavctl("--json"), 2, R"("object":"--json","reason":"unknown option")"));
    EXPECT_TRUE(says(runTavctl("--json list"), 2, "unknown option"));
}

TEST(CommandLine, MissingPluginIsNamed) {
    const TemporaryFolder folder;
    const auto result = runTavctl("list --plugin /nonexistent/zotavpci.so " + kDump +
                                  kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "tavctl: load plug-in (/nonexistent/zotavpci.so): "));
}

TEST(CommandLine, LibraryThatIsNoPluginIsNamedWithTheMissingFunction) {
    const TemporaryFolder folder;
    const auto result =
        runTavctl("list --plugin " ZOPCIBRD_FILE " " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "it does not export tavPlugin_initialize"));
}

// tavctl and the plug-in in a folder of their own, with a bridge library beside them or none.
class Programs {
public:
    explicit Programs(const char* bridgeLibrary = nullptr) {
        fs::copy_file(TAVCTL_FILE, folder_.path() / "tavctl");
        fs::copy_file(ZOTAVPCI_FILE, folder_.path() / "zotavpci.so");
        if (bridgeLibrary != nullptr)
            fs::copy_file(bridgeLibrary, folder_.path() / "zopcibrd.so");
    }

    [[nodiscard]] testsupport::CommandResult runTavctl(const std::string& arguments) const {
        return testsupport::runCommand((folder_.path() / "tavctl").string() + " " + arguments +
                                       " 2>&1");
    }

private:
    TemporaryFolder folder_;
};

TEST(CommandLine, MissingBridgeLibraryIsNamedWithTheErrorRecord) {
    const TemporaryFolder folder;
    const Programs programs;
    const auto result = programs.runTavctl("list --debug " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "tavctl: load bridge library (zopcibrd.so): "));
    EXPECT_TRUE(says(result, 3, "-52005 (0xFFFF34DB)"));
    EXPECT_TRUE(says(result, 3, "zodynlib_debug.path = zopcibrd.so"));
    EXPECT_TRUE(says(result, 3, "internal_error.api = posix"));
    EXPECT_FALSE(fs::exists(folder.path() / "zotavpci.ini"));
    const auto explained = programs.runTavctl("explain " + kDump + kDescriptions);
    EXPECT_TRUE(says(explained, 3, "tavctl: load bridge library (zopcibrd.so): "));
    EXPECT_TRUE(says(explained, 3, "-52005 (0xFFFF34DB)"));
    EXPECT_EQ(explained.output.find("error record"), std::string::npos) << "only with --debug";
}

// Descriptions that lint finds an error in, as every command that loads them comes to it.
TEST(CommandLine, FaultOfADescriptionLeadsToLint) {
    for (const char* rule :
         {"bad-number", "missing-key", "missing-section", "unknown-category", "wide-encoding",
          "ids-same-as-nowhere", "desktop-ini", "empty-number", "text-too-long"}) {
        const TemporaryFolder folder;
        fs::copy(fs::path(TAV_SOURCE_DIR) / "tests" / "tavctl" / "lint" / "rules" / rule / "bad",
                 folder.path() / "PCI Hardware Descriptions");
        const std::string machine =
            kDump + "--descriptions '" + folder.path().string() + "' " + state(folder);
        for (const char* command : {"list ", "tree ", "draw --format dot ", "names ", "explain "}) {
            // That the text is too long shows when it is read.
            if (rule == std::string("text-too-long") && command != std::string("list "))
                continue;
            const auto result = runTavctl(command + machine);
            EXPECT_TRUE(says(result, 3, "\n  see: tavctl lint\n")) << rule << " " << command;
            EXPECT_EQ(result.output.find("source"), std::string::npos) << result.output;
            EXPECT_EQ(result.output.find("cIniFile"), std::string::npos) << result.output;
            EXPECT_TRUE(says(runTavctl(command + machine + " --debug"), 3, "see: tavctl lint"));
        }
    }
}

TEST(CommandLine, PlacesInTheSourcesAreToldAsSuchAndWithDebugAlone) {
    const TemporaryFolder folder;
    fs::copy(fs::path(TAV_SOURCE_DIR) / "tests" / "tavctl" / "lint" / "rules" / "bad-number" /
                 "bad",
             folder.path() / "PCI Hardware Descriptions");
    const std::string list =
        "list " + kDump + "--descriptions '" + folder.path().string() + "' " + state(folder);
    EXPECT_TRUE(says(runTavctl(list + " --debug"), 3,
                     "  error record; file and line are of the plug-in's own sources\n"
                     "    file = pxidrivertools"));
    EXPECT_EQ(runTavctl(list).output.find("pxidrivertools"), std::string::npos);
}

// The loader finds the name, and so has nothing to say.
TEST(CommandLine, FunctionOfTheBridgeLibraryThatStandsNowhereIsNamed) {
    const TemporaryFolder folder;
    const Programs programs(BRIDGE_WITH_NULL_FILE);
    const auto result = programs.runTavctl("list --debug " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "tavctl: load bridge library (zopcibrd.so): "));
    EXPECT_TRUE(says(result, 3, "zodynlib_debug.zodynlib_symbol = ZoPciBrd_GetBridgeParent"));
    // The loader has neither a code nor words for that.
    EXPECT_TRUE(says(result, 3, "internal_error.api = posix"));
    for (const char* member : {"internal_error.code", "internal_error.string"})
        EXPECT_EQ(result.output.find(member), std::string::npos) << result.output;
}

// The real bridge library behind one that answers a status of its own.
TEST(CommandLine, StatusOfTheBridgeLibraryStandsWhereTheBusItselfCanBeRead) {
    const testsupport::EnvironmentValue behind("SCRIPTED_BRIDGE_BEHIND", ZOPCIBRD_FILE);
    const testsupport::EnvironmentValue faults("SCRIPTED_BRIDGE_FAULTS", "OpenSession=-313007");
    const TemporaryFolder folder;
    const Programs programs(SCRIPTED_BRIDGE_FILE);
    const auto listed = programs.runTavctl("list " + kDump + kDescriptions + state(folder));
    EXPECT_TRUE(says(
        listed, 3, "tavctl: open bridge session (" TAV_SOURCE_DIR "/samples/switchboxes.dump): "));
    EXPECT_TRUE(says(listed, 3, "status -313007 "));
    const auto explained = programs.runTavctl("explain " + kDump + kDescriptions);
    EXPECT_TRUE(says(explained, 3, "tavctl: open bridge session ("));
    EXPECT_TRUE(says(explained, 3, "status -313007 "));
}

TEST(CommandLine, ExplainSaysWhatTheBridgeLibraryFailsAt) {
    const testsupport::EnvironmentValue behind("SCRIPTED_BRIDGE_BEHIND", ZOPCIBRD_FILE);
    const Programs programs(SCRIPTED_BRIDGE_FILE);
    const std::string arguments = "explain 'TAV-B3 Switch Box' " + kDump + kDescriptions;
    testsupport::EnvironmentValue faults("SCRIPTED_BRIDGE_FAULTS", "GetBridgeAddress=-313007");
    const auto withoutAddresses = programs.runTavctl(arguments);
    EXPECT_TRUE(says(withoutAddresses, 1, "TAV-B3 Switch Box: not listed"));
    EXPECT_TRUE(says(withoutAddresses, 1, "    ff:ff.ff  not listed"));
    faults.set("FindBridgeBySlotPath=-313007");
    EXPECT_TRUE(says(programs.runTavctl(arguments), 1, "      FAIL  ["));
    EXPECT_TRUE(says(programs.runTavctl(arguments), 1, "can be looked up\n"));
}

// A plug-in that fails as it is told to.
TEST(CommandLine, FailingPluginIsNamedWithWhatItWasAskedFor) {
    const TemporaryFolder folder;
    const std::string arguments =
        "list --plugin " FAULTY_PLUGIN_FILE " " + kDump + kDescriptions + state(folder);
    testsupport::EnvironmentValue faults("FAULTY_PLUGIN", "none");
    EXPECT_TRUE(says(runTavctl(arguments), 0, "TAV7"));
    faults.set("initialize=-313322");
    EXPECT_TRUE(says(runTavctl(arguments), 3, "initialize plug-in (" FAULTY_PLUGIN_FILE "): "));
    faults.set("count=-313007");
    const auto count = runTavctl(arguments);
    EXPECT_TRUE(says(count, 3, "count devices (" FAULTY_PLUGIN_FILE "): "));
    EXPECT_TRUE(says(count, 3, "status -313007 "));
    faults.set("integer=-313007");
    EXPECT_TRUE(says(runTavctl(arguments), 3, "read attribute (device 0, attribute 0x"));
    faults.set("text=-313007");
    EXPECT_TRUE(says(runTavctl(arguments), 3, "read attribute (device 0, attribute 0x"));
}

// As on a full disk: the limit is one block of a kilobyte, and the names need more.
TEST(CommandLine, NamesThatCannotBeSavedAreNamedWithTheReasonAndKept) {
    const TemporaryFolder folder;
    std::string names;
    for (int number = 10; number < 50; ++number)
        names += "[MR00:" + std::to_string(number) + "]\r\nModel = M\r\nTerminalName = X1\r\n";
    const fs::path file = folder.file("zotavpci.ini", names);
    const std::string limited = "ulimit -f 1; " TAVCTL_FILE " ";
    const auto listed = testsupport::runCommand(limited + "list " + kDump + kDescriptions +
                                                state(folder) + " 2>&1");
    EXPECT_TRUE(says(listed, 3, "nothing is stored (" + file.string() + ": File too large)"));
    EXPECT_TRUE(says(listed, 3, "copy terminal names ("));
    EXPECT_EQ(testsupport::fileText(file), names);
    const fs::path backup = folder.path() / "backup.ini";
    const auto saved = testsupport::runCommand(limited + "names backup " + state(folder) + " " +
                                               backup.string() + " 2>&1");
    EXPECT_TRUE(says(saved, 3, "write terminal names (" + backup.string() + "): File too large"));
    EXPECT_FALSE(fs::exists(backup));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2)
        << "the names and their lock";
}

// A plug-in that says so without a reason that can be found.
TEST(CommandLine, NamesThatAnotherPluginDoesNotSaveAreNamed) {
    const TemporaryFolder folder;
    const testsupport::EnvironmentValue faults("FAULTY_PLUGIN", "initialize=-313319");
    EXPECT_TRUE(says(
        runTavctl("list --plugin " FAULTY_PLUGIN_FILE " " + kDump + kDescriptions + state(folder)),
        3,
        "nothing is stored (" + (folder.path() / "zotavpci.ini").string() +
            ": INI file: saving or storing failed)"));
}

TEST(CommandLine, MissingFoldersAreNamed) {
    const TemporaryFolder folder;
    EXPECT_TRUE(says(runTavctl("list " + kDump + "--descriptions /nonexistent " + state(folder)), 3,
                     "use --descriptions (/nonexistent): there is no such folder"));
    EXPECT_TRUE(says(runTavctl("list " + kDump + kDescriptions + "--state /nonexistent"), 3,
                     "use --state (/nonexistent): there is no such folder"));
}

TEST(CommandLine, FolderWithoutDescriptionsIsNamedForWhatItIs) {
    const TemporaryFolder folder;
    const std::string options = kDump + "--descriptions ";
    const std::string outer = folder.path().string();
    const std::string inner = outer + "/PCI Hardware Descriptions";
    for (const std::string command : {"list ", "tree ", "draw ", "explain ", "lint "}) {
        EXPECT_TRUE(says(runTavctl(command + options + outer), 3,
                         "use --descriptions (" + outer +
                             "): there is no folder \"PCI Hardware Descriptions\" in it"))
            << command;
        fs::create_directory(inner);
        for (const char* end : {"'", "/'"})
            EXPECT_TRUE(
                says(runTavctl(command + options + "'" + inner + end), 3,
                     "): this is the inner folder; the one that holds it is " + outer + "\n"))
                << command;
        const auto empty = runTavctl(command + options + outer);
        EXPECT_TRUE(says(empty, command == "lint " ? 1 : 0, "there are no description files"))
            << command;
        EXPECT_NE(empty.output.find(" in " + inner + "/\n"), std::string::npos) << empty.output;
        fs::remove(inner);
    }
}

TEST(CommandLine, FolderThatNoConfigurationCanNameIsTold) {
    const TemporaryFolder folder;
    const std::string name = (folder.path() / "two\nlines").string();
    fs::create_directory(name);
    EXPECT_TRUE(says(runTavctl("list " + kDump + kDescriptions + "--state '" + name + "'"), 3,
                     "configure (this process): Invalid argument"));
}

TEST(CommandLine, FolderThatCannotBeSearchedIsNamed) {
    const TemporaryFolder folder;
    fs::create_symlink("PCI Hardware Descriptions", folder.path() / "PCI Hardware Descriptions");
    const auto result = runTavctl("lint --descriptions " + folder.path().string());
    EXPECT_TRUE(says(result, 3,
                     "list descriptions (" + folder.path().string() +
                         "/PCI Hardware Descriptions/*.ini): "));
}

TEST(CommandLine, NamesAndDescriptionsOfAWrongEncodingAreNamed) {
    const std::string utf16("\xFF\xFE[\0a\0]\0", 8);
    const TemporaryFolder folder;
    const std::string names = folder.file("zotavpci.ini", utf16).string();
    EXPECT_TRUE(says(runTavctl("list " + kDump + kDescriptions + state(folder)), 3,
                     "tavctl: read terminal names (" + names + "): "));
    const TemporaryFolder other;
    fs::create_directory(folder.path() / "PCI Hardware Descriptions");
    const std::string file = folder.file("PCI Hardware Descriptions/box.ini", utf16).string();
    EXPECT_TRUE(says(runTavctl("list " + kDump + "--descriptions " + folder.path().string() + " " +
                               state(other)),
                     3,
                     "tavctl: load description (" + file +
                         "): the file starts with the mark of UTF-16 or UTF-32 text; expected "));
}

// In the words of lint, by every command that loads descriptions.
TEST(CommandLine, DescriptionThatDoesNotLoadIsToldAlikeByEveryCommand) {
    const TemporaryFolder folder;
    const TemporaryFolder names;
    fs::create_directory(folder.path() / "PCI Hardware Descriptions");
    const std::string file = folder
                                 .file("PCI Hardware Descriptions/box.ini",
                                       "[UpstreamTAV]\nModel = Box\nDeviceCategory = pci\n")
                                 .string();
    for (const std::string command :
         {"list", "tree", "draw", "explain", "names check", "names preview"}) {
        EXPECT_TRUE(says(runTavctl(command + " " + kDump + "--descriptions " +
                                   folder.path().string() + " " + state(names)),
                         3,
                         "tavctl: load description (" + file +
                             ":3:18): DeviceCategory: \"pci\" is no device category; expected "
                             "exactly PCI, Expresscard or SwitchboxTav"))
            << command;
    }
}

TEST(CommandLine, MissingDumpIsNamed) {
    const TemporaryFolder folder;
    const auto result = runTavctl("list --dump /nonexistent.dump " + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, "/nonexistent.dump"));
    EXPECT_TRUE(says(result, 3, "No such file or directory"));
    EXPECT_TRUE(says(result, 3, "-313004 (0xFFFB3954)"));
}

TEST(CommandLine, MissingConfigurationIsNamed) {
    const testsupport::EnvironmentValue configuration("TAV_MANAGER_CONF", "/nonexistent.conf");
    const auto result = runTavctl("list " + kDump);
    EXPECT_TRUE(says(result, 3, "read configuration value \"Path\" (/nonexistent.conf"));
    EXPECT_TRUE(says(result, 3, "-52003 (0xFFFF34DD)"));
    EXPECT_TRUE(says(result, 3, "--descriptions and --state take the place of the configuration"));
    EXPECT_TRUE(says(runTavctl("names list --stored"), 3,
                     "read configuration value \"ConfigPath\" (/nonexistent.conf"));
    EXPECT_TRUE(says(runTavctl("lint"), 3, "list descriptions (configuration): "));
}

TEST(CommandLine, FailuresAreJsonOnDemand) {
    const TemporaryFolder folder;
    const auto result =
        runTavctl("list --json --dump /nonexistent.dump " + kDescriptions + state(folder));
    EXPECT_TRUE(says(result, 3, R"("error":{"operation":"open bridge session",)"));
}

TEST(CommandLine, EmptyListIsSaidOnStandardErrorOnly) {
    const TemporaryFolder folder;
    const std::string arguments = "list --dump " + folder.file("empty.dump", "").string() + " " +
                                  kDescriptions + state(folder);
    EXPECT_TRUE(says(runTavctl(arguments), 0, "no described device is present on this bus"));
    EXPECT_EQ(testsupport::runCommand(TAVCTL_FILE " " + arguments + " 2>/dev/null").output, "");
}

// The machine that runs the tests may have any bus, or none; either way it is the live one that is
// asked.
TEST(CommandLine, ReadsTheLiveBusWithoutADump) {
    const TemporaryFolder folder;
    const testsupport::EnvironmentValue noDump("TAV_PCI_DUMP", std::nullopt);
    const auto result = runTavctl("list " + kDescriptions + state(folder));
    const bool hasBus = fs::exists("/sys/bus/pci/devices");
    EXPECT_TRUE(says(result, hasBus ? 0 : 3, hasBus ? "" : "/sys"));
}

} // namespace

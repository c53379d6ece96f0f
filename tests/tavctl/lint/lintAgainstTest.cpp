// Which models recorded buses have, gain and lose; and buses made up from models.
#include "tavctl/description/description.h"
#include "tavctl/lint/modelTree.h"
#include "tavctl/match/busBridges.h"
#include "tests/support/command.h"
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/sample.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tavctltest::kProject;
using tavctltest::kSample;
using tavctltest::kSampleDescriptions;
using testsupport::FileFolder;

testsupport::CommandResult runLint(const std::string& arguments) {
    return testsupport::runCommand(TAVCTL_FILE " lint " + arguments);
}

// A folder of descriptions: the sample of the box under another name, and the card.
void writeOlder(const FileFolder& folder) {
    const fs::path source = kProject / "descriptions" / "PCI Hardware Descriptions";
    const fs::path target = folder.file("PCI Hardware Descriptions");
    fs::create_directory(target);
    std::string box = testsupport::fileText(source / "tav-b3-switch-box.ini");
    const std::string name = "Model = TAV-B3";
    box.replace(box.find(name), name.size(), "Model = TAV-B2");
    std::ofstream(target / "box.ini") << box;
    fs::copy_file(source / "tav-c1-adapter-card.ini", target / "card.ini");
}

TEST(LintAgainst, SaysWhatABusHas) {
    const auto result = runLint("--descriptions " + kSampleDescriptions + " --against " + kSample);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "3 files, no problems\n\n" + kSample +
                                 "\n"
                                 "  has    01:00.0  TAV-B3 Switch Box\n"
                                 "  has    09:00.0  TAV-B3 Switch Box\n"
                                 "  has    04:00.0  TAV-C1 Adapter Card\n"
                                 "  has    41:00.0  TAV-W7 Wide Switch Box\n");
}

TEST(LintAgainst, SaysWhatABusGainsAndLoses) {
    const FileFolder older;
    writeOlder(older);
    const std::string arguments = "--descriptions " + kSampleDescriptions + " --compared-with '" +
                                  older.file("") + "' --against " + kSample;
    const auto result = runLint(arguments);
    EXPECT_EQ(result.exitStatus, 1) << "a model is lost";
    EXPECT_NE(result.output.find("  loses  01:00.0  TAV-B2 Switch Box\n"
                                 "  gains  01:00.0  TAV-B3 Switch Box\n"
                                 "  loses  09:00.0  TAV-B2 Switch Box\n"
                                 "  gains  09:00.0  TAV-B3 Switch Box\n"
                                 "  has    04:00.0  TAV-C1 Adapter Card\n"
                                 "  gains  41:00.0  TAV-W7 Wide Switch Box\n"),
              std::string::npos)
        << result.output;
    const json whole = json::parse(runLint("--json " + arguments).output);
    EXPECT_EQ(whole.at("against").at(0).at("dump"), kSample);
    EXPECT_EQ(whole.at("against").at(0).at("models").at(0).at("change"), "loses");
    EXPECT_EQ(whole.at("against").at(0).at("models").at(0).at("slotPath"), "MR00:00,20");
}

TEST(LintAgainst, SeveralBusesAreLookedAt) {
    const FileFolder folder;
    const std::string empty = folder.write("empty.dump", "");
    const auto result =
        runLint("--descriptions " + kSampleDescriptions + " --against " + kSample + " " + empty);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.output.find("\n" + empty + "\n  has none of the models\n"), std::string::npos);
}

TEST(LintAgainst, AFolderOfRecordingsIsEachOfThem) {
    const FileFolder folder;
    folder.write("notes.txt", "This is no bus.\n");
    fs::copy_file(kSample, folder.file("rack1.dump"));
    const auto result =
        runLint("--json --descriptions " + kSampleDescriptions + " --against " + folder.file("") +
                " " + kProject.string() + "/samples/one-switch.dump 2>/dev/null");
    EXPECT_EQ(result.exitStatus, 3) << "one could not be read";
    const json against = json::parse(result.output).at("against");
    ASSERT_EQ(against.size(), 3U);
    EXPECT_EQ(against[0].at("failure").at("object"), folder.file("notes.txt"));
    EXPECT_TRUE(against[0].at("models").empty());
    EXPECT_EQ(against[1].at("dump"), folder.file("rack1.dump"));
    EXPECT_TRUE(against[1].at("failure").is_null());
    EXPECT_EQ(against[1].at("models").size(), 4U);
    EXPECT_EQ(against[2].at("models").size(), 1U);
    const auto text = runLint("--descriptions " + kSampleDescriptions + " --against " +
                              folder.file("") + " 2>&1");
    EXPECT_NE(text.output.find("\n" + folder.file("notes.txt") + "\n  not looked at: "),
              std::string::npos)
        << text.output;
    EXPECT_NE(text.output.find("tavctl: read the bus (" + folder.file("notes.txt") + "): "),
              std::string::npos)
        << text.output;
}

TEST(LintAgainst, FilesThatDoNotLoadAreNotMatched) {
    const FileFolder folder;
    const auto result =
        runLint(folder.write("bad.ini", "[UpstreamTAV]\n") + " --against " + kSample);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.output.find("the recorded buses were not looked at"), std::string::npos);
    EXPECT_EQ(result.output.find("has none"), std::string::npos);
}

TEST(LintAgainst, FaultsOfTheOtherFolderAndOfDumpsAreTold) {
    const FileFolder older;
    writeOlder(older);
    const std::string bad = older.write("PCI Hardware Descriptions/card.ini", "[UpstreamTAV]\n");
    const auto result = runLint("--descriptions " + kSampleDescriptions + " --compared-with '" +
                                older.file("") + "' --against " + kSample);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.output.find("load description (" + bad +
                                 ":1:2): [UpstreamTAV] has no key Model; expected Model, "),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("\n  see: tavctl lint\n"), std::string::npos) << result.output;
    EXPECT_EQ(
        runLint("--descriptions " + kSampleDescriptions + " --against /nonexistent").exitStatus, 3);
    EXPECT_EQ(runLint("--compared-with " + kSampleDescriptions).exitStatus, 2);
}

// The bus that is made up from a sound model is one on which the plug-in lists it.
TEST(ModelTree, FitsItsModel) {
    using namespace nZoTavManagerPciPlugin_15_0;
    std::size_t models = 0;
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::directory_iterator(fs::path(kSampleDescriptions) / "PCI Hardware Descriptions"))
        files.push_back(entry.path());
    for (const auto& entry :
         fs::directory_iterator(kProject / "tests" / "tavctl" / "lint" / "rules"))
        files.push_back(entry.path() / "good" / "box.ini");
    for (const fs::path& file : files) {
        if (!fs::exists(file))
            continue; // a fixture of several files
        const tavctl::lint::Description description(file.string());
        ASSERT_TRUE(description.loads()) << file;
        const tModelDescription* const model[] = {&description.model()};
        bool listed = false;
        for (const bool withOptional : {true, false}) {
            const auto bus = tavctl::lint::busOf(model, 0, withOptional);
            ASSERT_NE(bus, nullptr) << file;
            const auto devices =
                tavctl::ModelMatcher(tavctl::recordedBus(bus)).match({description.model()});
            listed = listed || !devices.empty();
        }
        EXPECT_TRUE(listed) << file;
        ++models;
    }
    EXPECT_GT(models, 35U);
}

// A box whose upstream port is the anchor, with one port at each of the maps.
nZoTavManagerPciPlugin_15_0::tModelDescription modelWith(const std::vector<std::string>& maps) {
    using namespace nZoTavManagerPciPlugin_15_0;
    tModelDescription model;
    model.model = "Box";
    model.anchors = {{kHeaderTypeBridge, {0x104C, 0x8232, 0, 0}}};
    model.upstreamPort.traversalMap = "";
    model.upstreamPort.ids = model.anchors.front().ids;
    model.connectorLabels = {"HOST"};
    for (const std::string& map : maps) {
        tBridgeDescription port;
        port.traversalMap = map;
        port.ids = {0x104C, 0x8233, 0, 0};
        model.downstreamPorts.push_back(port);
        model.connectorLabels.push_back(map);
    }
    model.terminalNameBase = "BOX";
    return model;
}

TEST(ModelTree, ThereIsNoneForMapsThatCannotBeApplied) {
    for (const char* map : {"nonsense", "-,-,-,-,-,-,-,-", "-,-,-,-,-,-,-,-,-"}) {
        const auto model = modelWith({map});
        const nZoTavManagerPciPlugin_15_0::tModelDescription* const models[] = {&model};
        EXPECT_EQ(tavctl::lint::busOf(models, 0, true), nullptr) << map;
        EXPECT_FALSE(tavctl::lint::satisfiedByOneTree(model, modelWith({"d0f0"}))) << map;
    }
}

TEST(ModelTree, ThereIsNoneForMoreBridgesThanBuses) {
    std::vector<std::string> maps;
    for (int device = 0; device < 32; ++device) {
        for (int function = 0; function < 8; ++function)
            maps.push_back("d" + std::to_string(device) + "f" + std::to_string(function));
    }
    const auto model = modelWith(maps);
    const nZoTavManagerPciPlugin_15_0::tModelDescription* const models[] = {&model};
    EXPECT_EQ(tavctl::lint::busOf(models, 0, true), nullptr);
    // Below another port there is no room either.
    for (std::string& map : maps)
        map.insert(0, "d0f0,");
    const auto deeper = modelWith(maps);
    const nZoTavManagerPciPlugin_15_0::tModelDescription* const others[] = {&deeper};
    EXPECT_EQ(tavctl::lint::busOf(others, 0, true), nullptr);
}

// What is not listed on its own tree, for want of labels here, fits no tree together with another.
TEST(ModelTree, ModelThatIsNeverListedSharesNone) {
    auto never = modelWith({"d0f0"});
    never.connectorLabels.clear();
    const auto other = modelWith({"d0f0"});
    EXPECT_FALSE(tavctl::lint::satisfiedByOneTree(never, other));
    EXPECT_TRUE(tavctl::lint::satisfiedByOneTree(other, other));
}

} // namespace

// Loading the description files once, in listing order, and asking for the models by index.
#include "platform/hostConfiguration.h"
#include "pxidrivertools/configuration.h"
#include "source/cPciModelInfoDb.h"
#include "source/cPciTavFilesystem.h"
#include "tests/source/support/descriptionFixture.h"
#include "tests/source/support/listedFiles.h"
#include "tests/source/support/slotOf.h"
#include "tests/support/allocationFaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DescriptionText;
using testsupport::fullDescription;
using testsupport::ListedFiles;
using testsupport::Raised;
using testsupport::raisedBy;
using testsupport::smallestDescription;

// The full description without an alternate anchor: two internal bridges, one downstream port.
DescriptionText singleAnchor(const std::string& model = "Model 1") {
    return fullDescription(model)
        .remove("Anchor", "AlternateAnchors")
        .removeSection("AlternateAnchor2");
}

class ModelDatabase : public testing::Test {
protected:
    std::string write(const std::string& name, const DescriptionText& text) const {
        return folder_.file(name, text.text()).string();
    }
    // Loads these descriptions, one file each.
    void load(const std::vector<DescriptionText>& texts) {
        for (const DescriptionText& text : texts)
            files_.paths.push_back(write(std::to_string(files_.paths.size()), text));
        database_.LoadDescriptions(files_);
    }
    static std::vector<std::string> names(const iPciModelInfoDb& database) {
        std::vector<std::string> result;
        for (std::uint32_t index = 0; index < database.GetModelCount(); ++index)
            result.push_back(database.GetModel(index).model);
        return result;
    }
    [[nodiscard]] std::vector<std::string> names() const { return names(database_); }
    Raised loadRaises() {
        return raisedBy([this] { database_.LoadDescriptions(files_); });
    }

    static std::vector<std::string> mapsOf(const std::vector<tBridgeDescription>& bridges) {
        std::vector<std::string> result;
        result.reserve(bridges.size());
        for (const tBridgeDescription& bridge : bridges)
            result.push_back(bridge.traversalMap);
        return result;
    }
    static std::vector<std::string> allBridges(const iPciModelInfoDb& database) {
        std::vector<tBridgeDescription> bridges(3);
        database.GetAllBridges(0, bridges);
        return mapsOf(bridges);
    }

    testsupport::TemporaryFolder folder_;
    ListedFiles files_;
    cPciModelInfoDb database_;
};

TEST(ModelDatabaseInterface, OperationsStandInTheirSlots) {
    // The table begins with them; the destructor is behind the last one.
    const auto slot = [](auto function) { return testsupport::entryOf(function); };
    EXPECT_EQ(slot(&iPciModelInfoDb::LoadDescriptions), 0U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetModelCount), 1U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetModel), 2U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetDeviceCategory), 3U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetAnchors), 4U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetAllBridges), 5U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetDownstreamPorts), 6U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetUpstreamPort), 7U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetConnectorLabels), 8U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetLinkWidthPerLabel), 9U);
    EXPECT_EQ(slot(&iPciModelInfoDb::HasLinkWidthPerLabel), 10U);
    EXPECT_EQ(slot(&iPciModelInfoDb::GetTerminalNameBase), 11U);
}

TEST_F(ModelDatabase, AsksForThePatternAndListsIt) {
    load({smallestDescription()});
    EXPECT_THAT(files_.calls, ElementsAre("GetDescriptionFilePattern", "ListFiles the pattern"));
}

TEST_F(ModelDatabase, ModelsStandInTheOrderOfTheListing) {
    files_.paths = {write("z.ini", smallestDescription("Z")),
                    write("a.ini", smallestDescription("A")),
                    write("m.ini", smallestDescription("M"))};
    database_.LoadDescriptions(files_);
    EXPECT_THAT(names(), ElementsAre("Z", "A", "M"));
}

TEST_F(ModelDatabase, TwoFilesOfOneModelAreTwoModels) {
    load({smallestDescription("Same"), smallestDescription("Other"), smallestDescription("Same")});
    EXPECT_THAT(names(), ElementsAre("Same", "Other", "Same"));
}

TEST_F(ModelDatabase, LoadedModelsAreNotLoadedAgain) {
    load({smallestDescription("First")});
    files_.calls.clear();
    files_.paths.push_back(write("late.ini", smallestDescription("Late")));
    database_.LoadDescriptions(files_);
    EXPECT_THAT(files_.calls, IsEmpty());
    EXPECT_THAT(names(), ElementsAre("First"));
}

TEST_F(ModelDatabase, AnEmptyDatabaseLooksAgain) {
    load({});
    EXPECT_EQ(database_.GetModelCount(), 0U);
    load({smallestDescription("Late")});
    EXPECT_EQ(files_.calls.size(), 4U);
    EXPECT_THAT(names(), ElementsAre("Late"));
}

TEST_F(ModelDatabase, OneModelHasNothingOfTheOneBefore) {
    load({singleAnchor("Full"), smallestDescription("Small")});
    const tModelDescription& model = database_.GetModel(1);
    EXPECT_THAT(model.internalBridges, IsEmpty());
    EXPECT_THAT(model.connectorLabels, IsEmpty());
    EXPECT_EQ(model.upstreamPort.traversalMap, "_");
    EXPECT_EQ(model.terminalNameBase, "TAV");
    EXPECT_EQ(model.linkWidthPerLabel, 0);
}

TEST_F(ModelDatabase, AFaultyFileEndsTheLoadAndTheModelsBeforeItStay) {
    DescriptionText faulty = smallestDescription("Faulty").remove("Anchor", "SsPid");
    files_.paths = {write("1.ini", smallestDescription("First")), write("2.ini", faulty),
                    write("3.ini", smallestDescription("Third"))};
    const Raised raised = loadRaises();
    EXPECT_EQ(raised.code, -313322);
    EXPECT_EQ(raised.member("file"), "pxidrivertools\\cIniFile");
    EXPECT_THAT(names(), ElementsAre("First"));
    // Not even when the file has been mended: the database is not empty.
    write("2.ini", smallestDescription("Mended"));
    EXPECT_EQ(loadRaises().code, 0);
    EXPECT_THAT(names(), ElementsAre("First"));
}

TEST_F(ModelDatabase, AfterAFaultyFirstFileALaterLoadStartsAfresh) {
    files_.paths = {
        write("1.ini", smallestDescription("First").set("UpstreamTAV", "DeviceCategory", "pci")),
        write("2.ini", smallestDescription("Second"))};
    const Raised raised = loadRaises();
    EXPECT_EQ(raised.code, -388801);
    EXPECT_TRUE(raised.hasSite("source\\cPciModelInfoDb", "kTavManErrSoftwareFault"));
    EXPECT_EQ(database_.GetModelCount(), 0U);
    write("1.ini", smallestDescription("First"));
    database_.LoadDescriptions(files_);
    EXPECT_THAT(names(), ElementsAre("First", "Second"));
}

TEST_F(ModelDatabase, AListedFileThatIsGoneEndsTheLoad) {
    files_.paths = {folder_.path().string() + "/gone.ini"};
    EXPECT_EQ(loadRaises().code, -313316);
    EXPECT_EQ(database_.GetModelCount(), 0U);
}

TEST_F(ModelDatabase, WhatTheFilesystemRaisesPassesThrough) {
    for (const char* call : {"GetDescriptionFilePattern", "ListFiles the pattern"}) {
        files_.calls.clear();
        files_.onCall = [&](const std::string& made) {
            if (made == call)
                zoerr::raise(-5, nZOQUIL000::siteHere("elsewhere", "kSome"));
        };
        EXPECT_EQ(loadRaises().code, -5);
        EXPECT_EQ(files_.calls.back(), call);
        EXPECT_EQ(database_.GetModelCount(), 0U);
    }
}

// Every query that takes an index, by name.
using Query = std::function<void(const iPciModelInfoDb&, std::uint32_t)>;
std::vector<std::pair<std::string, Query>> queries() {
    return {
        {"GetModel", [](auto& db, auto index) { (void)db.GetModel(index); }},
        {"GetDeviceCategory", [](auto& db, auto index) { (void)db.GetDeviceCategory(index); }},
        {"GetAnchors",
         [](auto& db, auto index) {
             std::vector<tAnchorIdentity> anchors;
             db.GetAnchors(index, anchors);
         }},
        {"GetAllBridges",
         [](auto& db, auto index) {
             std::vector<tBridgeDescription> bridges;
             db.GetAllBridges(index, bridges);
         }},
        {"GetDownstreamPorts",
         [](auto& db, auto index) {
             std::vector<tBridgeDescription> ports;
             db.GetDownstreamPorts(index, ports);
         }},
        {"GetUpstreamPort",
         [](auto& db, auto index) {
             tBridgeDescription port;
             db.GetUpstreamPort(index, port);
         }},
        {"GetConnectorLabels",
         [](auto& db, auto index) {
             std::list<std::string> labels;
             db.GetConnectorLabels(index, labels);
         }},
        {"GetLinkWidthPerLabel",
         [](auto& db, auto index) {
             std::int32_t width = 0;
             db.GetLinkWidthPerLabel(index, width);
         }},
        {"HasLinkWidthPerLabel",
         [](auto& db, auto index) { (void)db.HasLinkWidthPerLabel(index); }},
        {"GetTerminalNameBase", [](auto& db, auto index) { (void)db.GetTerminalNameBase(index); }},
    };
}

TEST_F(ModelDatabase, AnEmptyDatabaseAnswersNoQuery) {
    EXPECT_EQ(database_.GetModelCount(), 0U);
    for (const auto& [name, query] : queries()) {
        EXPECT_THROW(query(database_, 0), std::out_of_range) << name;
        EXPECT_THROW(query(database_, 0xFFFFFFFF), std::out_of_range) << name;
    }
}

TEST_F(ModelDatabase, AnIndexFromTheCountOnIsOutOfRange) {
    load({smallestDescription(), smallestDescription()});
    for (const auto& [name, query] : queries()) {
        EXPECT_NO_THROW(query(database_, 0)) << name;
        EXPECT_NO_THROW(query(database_, 1)) << name;
        EXPECT_THROW(query(database_, 2), std::out_of_range) << name;
        EXPECT_THROW(query(database_, 0x80000000), std::out_of_range) << name;
        EXPECT_THROW(query(database_, 0xFFFFFFFF), std::out_of_range) << name;
    }
}

TEST_F(ModelDatabase, EachQueryAnswersFromItsModel) {
    load({smallestDescription("Small"), singleAnchor("Full")});
    EXPECT_EQ(database_.GetModelCount(), 2U);
    EXPECT_EQ(database_.GetModel(0).model, "Small");
    EXPECT_EQ(database_.GetModel(1).model, "Full");
    EXPECT_EQ(database_.GetDeviceCategory(0), eDeviceCategory::Pci);
    EXPECT_EQ(static_cast<std::uint32_t>(database_.GetDeviceCategory(1)), 12U);
    EXPECT_EQ(database_.GetTerminalNameBase(0), "TAV");
    EXPECT_EQ(database_.GetTerminalNameBase(1), "BOX");
    std::int32_t width = -1;
    database_.GetLinkWidthPerLabel(1, width);
    EXPECT_EQ(width, 4);
    EXPECT_TRUE(database_.HasLinkWidthPerLabel(1));
    tBridgeDescription port;
    database_.GetUpstreamPort(1, port);
    EXPECT_EQ(port, (tBridgeDescription{"-", {0x1C01, 0x1C02, 0x1C03, 0x1C04}, true, false}));
    database_.GetUpstreamPort(0, port);
    EXPECT_EQ(port, tBridgeDescription());
}

TEST_F(ModelDatabase, ListsHandedInAreReplaced) {
    load({singleAnchor()});
    std::vector<tAnchorIdentity> anchors(3);
    database_.GetAnchors(0, anchors);
    EXPECT_THAT(anchors, ElementsAre(tAnchorIdentity{1, {0x1A01, 0x1A02, 0x1A03, 0x1A04}}));
    std::vector<tBridgeDescription> ports(3);
    database_.GetDownstreamPorts(0, ports);
    EXPECT_THAT(mapsOf(ports), ElementsAre("d1f0,d2f0"));
    EXPECT_EQ(ports[0].ids, anchors[0].ids);
    std::list<std::string> labels{"before"};
    database_.GetConnectorLabels(0, labels);
    EXPECT_THAT(labels, ElementsAre("A", "B"));
    std::vector<tBridgeDescription> bridges(5);
    database_.GetAllBridges(0, bridges);
    EXPECT_EQ(bridges.size(), 4U);
}

TEST_F(ModelDatabase, ThePrimaryAnchorIsTheFirst) {
    load({fullDescription()});
    std::vector<tAnchorIdentity> anchors;
    database_.GetAnchors(0, anchors);
    EXPECT_THAT(anchors, ElementsAre(tAnchorIdentity{1, {0x1A01, 0x1A02, 0x1A03, 0x1A04}},
                                     tAnchorIdentity{0, {0x2A01, 0x2A02, 0x2A03, 0x2A04}}));
}

TEST_F(ModelDatabase, TheModelAndItsNameBaseAreGivenByReference) {
    load({smallestDescription()});
    EXPECT_EQ(&database_.GetModel(0), &database_.GetModel(0));
    EXPECT_EQ(&database_.GetTerminalNameBase(0), &database_.GetModel(0).terminalNameBase);
}

TEST_F(ModelDatabase, WithoutALinkWidthItIsZeroAndThereIsNone) {
    for (const auto& [text, number] : std::vector<std::pair<std::string, std::int32_t>>{
             {"", 0}, {"0", 0}, {"8", 8}, {"-1", -1}}) {
        files_.paths.clear();
        cPciModelInfoDb database;
        files_.paths = {write("width.ini",
                              smallestDescription().set("UpstreamTAV", "LinkWidthPerLabel", text))};
        database.LoadDescriptions(files_);
        std::int32_t width = 77;
        database.GetLinkWidthPerLabel(0, width);
        EXPECT_EQ(width, number);
        EXPECT_EQ(database.HasLinkWidthPerLabel(0), number != 0) << text;
    }
}

TEST_F(ModelDatabase, AllBridgesAreDownstreamPortsInternalBridgesAndTheUpstreamPort) {
    load({singleAnchor()});
    EXPECT_THAT(allBridges(database_), ElementsAre("d1f0,d2f0", "", "d1f0", "-"));
}

TEST_F(ModelDatabase, WithoutAnUpstreamPortAllBridgesEndWithTheInternalOnes) {
    load({singleAnchor().set("UpstreamTAV", "HasUpstreamPort", "0")});
    EXPECT_THAT(allBridges(database_), ElementsAre("d1f0,d2f0", "", "d1f0"));
}

TEST_F(ModelDatabase, AnUpstreamPortWhoseMapSaysNoneIsLeftOutOfAllBridges) {
    load({singleAnchor().set("UpstreamPort", "TraversalMapFromAnchor", "_")});
    EXPECT_THAT(allBridges(database_), ElementsAre("d1f0,d2f0", "", "d1f0"));
    // The port itself is there.
    tBridgeDescription port;
    database_.GetUpstreamPort(0, port);
    EXPECT_EQ(port.ids.vendor, 0x1C01);
}

TEST_F(ModelDatabase, OnlyThatMapExactlySaysNone) {
    for (const char* map : {"__", "\" _\"", "\"\""}) {
        cPciModelInfoDb database;
        files_.paths = {
            write("map.ini", singleAnchor().set("UpstreamPort", "TraversalMapFromAnchor", map))};
        database.LoadDescriptions(files_);
        EXPECT_EQ(allBridges(database).size(), 4U) << map;
    }
}

TEST_F(ModelDatabase, AnInternalBridgeOrDownstreamPortIsNeverLeftOut) {
    load({singleAnchor()
              .set("InternalBridgeFirst", "TraversalMapFromAnchor", "_")
              .set("DownstreamPort1", "TraversalMapFromAnchor", "_")});
    EXPECT_THAT(allBridges(database_), ElementsAre("_", "_", "d1f0", "-"));
}

class OtherPorts : public cPciModelInfoDb {
public:
    void GetDownstreamPorts(std::uint32_t, std::vector<tBridgeDescription>& ports) const override {
        ports.assign(2, tBridgeDescription{"other", {}, false, false});
    }
};

TEST_F(ModelDatabase, ASubclassWithOtherDownstreamPortsHasOtherBridges) {
    OtherPorts database;
    files_.paths = {write("model.ini", singleAnchor())};
    database.LoadDescriptions(files_);
    EXPECT_THAT(allBridges(database), ElementsAre("other", "other", "", "d1f0", "-"));
}

TEST(TheModelDatabase, IsOneOfTheProcess) {
    EXPECT_EQ(&modelDatabase(), &modelDatabase());
    EXPECT_NE(dynamic_cast<cPciModelInfoDb*>(&modelDatabase()), nullptr);
}

// The database over the real locator and a real folder.
class ModelFolder : public ModelDatabase {
protected:
    static constexpr const char* kFolder = "PCI Hardware Descriptions/";

    std::string describe(const std::string& name, const DescriptionText& text) const {
        return write(kFolder + name, text);
    }

    platform::HostConfiguration configuration_{nZoPxiDriverTools_1_0::kConfigurationKey,
                                               {{"Path", folder_.path().string() + "/"}}};
    cPciTavFilesystem filesystem_;
};

TEST_F(ModelFolder, LoadsWhatTheConfiguredFolderHolds) {
    describe("b.ini", smallestDescription("B"));
    describe("a.ini", smallestDescription("A"));
    describe("c.txt", smallestDescription("C"));
    database_.LoadDescriptions(filesystem_);
    EXPECT_THAT(names(), ElementsAre("A", "B"));
}

TEST_F(ModelFolder, WithoutTheFolderThereAreNoModels) {
    database_.LoadDescriptions(filesystem_);
    EXPECT_EQ(database_.GetModelCount(), 0U);
}

TEST_F(ModelFolder, AFolderThatMatchesIsListedAndCannotBeOpened) {
    describe("a.ini", smallestDescription("A"));
    std::filesystem::create_directory(folder_.path() / kFolder / "b.ini");
    describe("c.ini", smallestDescription("C"));
    const Raised raised = raisedBy([&] { database_.LoadDescriptions(filesystem_); });
    EXPECT_EQ(raised.code, -313316);
    EXPECT_EQ(raised.member("file"), "pxidrivertools\\cIniFile");
    EXPECT_THAT(names(), ElementsAre("A"));
}

TEST_F(ModelFolder, RunningOutOfMemoryEndsTheLoadAsAStatusOrAStandardException) {
    describe("a.ini", fullDescription("A model with a name that takes memory of its own"));
    describe("b.ini", fullDescription("Another model with a name that takes memory of its own"));
    constexpr std::int32_t kStandardException = 1;
    std::size_t nth = 1;
    for (;; ++nth) {
        cPciModelInfoDb database;
        std::int32_t code = 0;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            try {
                database.LoadDescriptions(filesystem_);
            } catch (const zoerr::Exception& exception) {
                code = exception.status().code;
            } catch (const std::bad_alloc&) {
                code = kStandardException;
            }
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(code, 0);
            EXPECT_EQ(database.GetModelCount(), 2U);
            break;
        }
        EXPECT_THAT(code, testing::AnyOf(-52000, kStandardException)) << "allocation " << nth;
        EXPECT_LT(database.GetModelCount(), 2U);
    }
    EXPECT_GT(nth, 50U);
}

} // namespace

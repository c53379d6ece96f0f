// Building the list of devices: what is opened, walked, saved and closed, and in which order.
#include "tests/source/support/cacheBuild.h"

#include "include/tavPlugin.h"
#include "tests/source/support/tavBox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <new>
#include <stdexcept>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::boxModel;
using testsupport::BusBuilder;
using testsupport::CacheBuild;
using testsupport::Ids;
using testsupport::kCardIds;
using testsupport::kRootPortIds;
using testsupport::kUpIds;
using testsupport::ModelBuilder;
using testsupport::raisedBy;
using testsupport::TavBox;

constexpr Ids kOtherUpIds{0x10B5, 0x8724, 0x1234, 0x0101};

class CacheBuilding : public testing::Test {
protected:
    // Everything is given back, and the cache is built.
    static void expectBuilt(CacheBuild& build) {
        EXPECT_TRUE(build.cache.IsBuilt());
        EXPECT_FALSE(build.db.names.IsLoaded());
        EXPECT_FALSE(build.db.filesystem.IsLocked());
        EXPECT_FALSE(build.wrapper.IsSessionOpen());
    }

    static TavBox otherBox(BusBuilder& machine, unsigned rootDevice) {
        TavBox::Shape shape;
        shape.upIds = kOtherUpIds;
        return {machine, rootDevice, shape};
    }

    BusBuilder machine;
};

TEST_F(CacheBuilding, FreshCacheIsEmptyAndNotBuilt) {
    const cPciTavPluginCache cache;
    EXPECT_FALSE(cache.IsBuilt());
    EXPECT_EQ(cache.Count(), 0U);
    EXPECT_THROW(static_cast<void>(cache.RecordAt(0)), std::out_of_range);
}

TEST_F(CacheBuilding, DevicesAreListedAndNamesAreSaved) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.build();
    expectBuilt(build);
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 01:00.0 ports P1,P2"));
    EXPECT_THAT(build.db.filesystem.names(),
                ElementsAre("[MR00:00,E0]", "Model = Box", "TerminalName = TAV1"));
    EXPECT_THROW(static_cast<void>(build.cache.RecordAt(1)), std::out_of_range);
}

TEST_F(CacheBuilding, NamesAreOpenedThenDescriptionsThenTheSession) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    bool loaded = false;
    build.models.onLoad = [&] {
        loaded = true;
        EXPECT_TRUE(build.db.names.IsLoaded());
        EXPECT_THAT(build.wrapper.calls(), IsEmpty());
    };
    build.build();
    EXPECT_TRUE(loaded);
    EXPECT_EQ(build.models.loads(), 1U);
    EXPECT_EQ(build.wrapper.calls().front(), "OpenSession 0");
    EXPECT_EQ(build.wrapper.calls().back(), "CloseSession");
}

TEST_F(CacheBuilding, AsksNoMoreThanItNeeds) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.build();
    EXPECT_THAT(build.wrapper.calls(),
                ElementsAre("OpenSession 0", "FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001", "GetBridgeSlotPath 01:00.0",
                            "GetBridgeAddress 01:00.0 bdf", "FindBridgeBySlotPath MR00:00,E0",
                            "GetBridgeAddress 01:00.0 b", "FindBridgeBySlotPath MR00:08,00,E0",
                            "GetAttributeU32 02:01.0 20000300",
                            "FindBridgeBySlotPath MR00:10,00,E0",
                            "GetAttributeU32 02:02.0 20000300", "CloseSession"));
    EXPECT_THAT(build.finder.searches(), IsEmpty());
    EXPECT_THAT(build.db.filesystem.calls(),
                ElementsAre("GetConfigPath", "EnsureFileExists zotavpci.loc",
                            "LockFile zotavpci.loc", "EnsureFileExists zotavpci.ini",
                            "UnlockFile"));
}

TEST_F(CacheBuilding, SecondBuildTouchesNothing) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.build();
    const auto devices = build.devices();
    build.wrapper.forgetCalls();
    const std::size_t fileCalls = build.db.filesystem.calls().size();
    build.models.onQuery = [](const std::string& query, std::uint32_t) {
        ADD_FAILURE() << query << " in the second build";
    };
    build.build();
    EXPECT_EQ(build.devices(), devices);
    EXPECT_THAT(build.wrapper.calls(), IsEmpty());
    EXPECT_EQ(build.db.filesystem.calls().size(), fileCalls);
    EXPECT_EQ(build.models.loads(), 1U);
    EXPECT_TRUE(build.cache.IsBuilt());
}

TEST_F(CacheBuilding, SecondBuildTouchesNothingAlsoWithoutDevices) {
    CacheBuild build(machine, {});
    build.build();
    build.build();
    EXPECT_EQ(build.models.loads(), 1U);
    EXPECT_EQ(build.cache.Count(), 0U);
}

TEST_F(CacheBuilding, ClearedCacheCanBeBuiltAfresh) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.build();
    build.cache.Clear();
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_EQ(build.cache.Count(), 0U);
    EXPECT_THROW(static_cast<void>(build.cache.RecordAt(0)), std::out_of_range);
    build.build();
    expectBuilt(build);
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 01:00.0 ports P1,P2"));
}

TEST_F(CacheBuilding, NothingFoundIsBuiltWithoutSaving) {
    machine.rootPort(0, 0x1C, 0, kRootPortIds);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.db.filesystem.setNames("[MR00:08]\nModel=Written by hand\n");
    build.build();
    expectBuilt(build);
    EXPECT_EQ(build.cache.Count(), 0U);
    EXPECT_THAT(build.db.filesystem.names(), ElementsAre("[MR00:08]", "Model=Written by hand"));
}

TEST_F(CacheBuilding, FoundDevicesSaveAlsoWhatStoodThere) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.db.filesystem.setNames("[MR00:08]\nModel=Written by hand\n");
    build.build();
    EXPECT_THAT(build.db.filesystem.names(),
                ElementsAre("[MR00:08]", "Model = Written by hand", "[MR00:00,E0]", "Model = Box",
                            "TerminalName = TAV1"));
}

TEST_F(CacheBuilding, WithoutModelsThereAreNoDevices) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {});
    build.build();
    expectBuilt(build);
    EXPECT_EQ(build.cache.Count(), 0U);
    EXPECT_THAT(build.wrapper.calls(), ElementsAre("OpenSession 0", "CloseSession"));
}

TEST_F(CacheBuilding, ModelWithoutAnchorsYieldsNothingAndNoError) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine,
                     {ModelBuilder("Nothing").labels({"A"}).build(), boxModel("Box").build()});
    build.build();
    expectBuilt(build);
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 01:00.0 ports P1,P2"));
}

TEST_F(CacheBuilding, RecordsAreInTheOrderOfModelsThenAddresses) {
    const TavBox first(machine, 0x1C);
    const TavBox other = otherBox(machine, 0x02);
    const TavBox second(machine, 0x1D);
    CacheBuild build(machine, {boxModel("Box").build(), boxModel("Other", 2, kOtherUpIds).build()});
    build.build();
    EXPECT_THAT(build.devices(),
                ElementsAre("Box TAV1 at " + machine.address(first.up) + " ports P1,P2",
                            "Box TAV2 at " + machine.address(second.up) + " ports P1,P2",
                            "Other TAV3 at " + machine.address(other.up) + " ports P1,P2"));
}

TEST_F(CacheBuilding, AddressesFollowTheOrderOfTheAnchors) {
    const TavBox box(machine, 0x02);
    const TavBox other = otherBox(machine, 0x1C);
    ModelBuilder model("Box");
    model.anchor(kOtherUpIds).anchor(kUpIds).internalBridge({"", kUpIds});
    CacheBuild build(machine, {model.build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at " + machine.address(other.up),
                                             "Box TAV2 at " + machine.address(box.up)));
}

TEST_F(CacheBuilding, DuplicatesAreKept) {
    // Two models describe one device: two records; the slot goes by the later one's name.
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build(), boxModel("Same").build()});
    build.build();
    EXPECT_THAT(build.devices(),
                ElementsAre("Box TAV1 at 01:00.0 ports P1,P2", "Same TAV2 at 01:00.0 ports P1,P2"));
    EXPECT_THAT(build.db.filesystem.names(),
                ElementsAre("[MR00:00,E0]", "Model = Same", "TerminalName = TAV2"));
}

TEST_F(CacheBuilding, NamesStayWithTheirSlots) {
    const TavBox first(machine, 0x1C);
    const TavBox second(machine, 0x1D);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.db.filesystem.setNames("[MR00:00,E8]\nModel = Box\nTerminalName = TAV1\n");
    build.build();
    EXPECT_EQ(build.cache.RecordAt(0).terminalName, "TAV2");
    EXPECT_EQ(build.cache.RecordAt(1).terminalName, "TAV1");
}

TEST_F(CacheBuilding, CountOfModelsIsAskedAgainAtEveryStep) {
    const TavBox box(machine, 0x1C);
    const TavBox other = otherBox(machine, 0x1D);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.models.onQuery = [&, done = false](const std::string& query, std::uint32_t) mutable {
        if (query == "GetTerminalNameBase" && !std::exchange(done, true))
            build.models.append(boxModel("Other", 2, kOtherUpIds).build());
    };
    build.build();
    EXPECT_THAT(build.devices(),
                testing::Contains("Other TAV2 at " + machine.address(other.up) + " ports P1,P2"));
}

TEST_F(CacheBuilding, ManyAlternateAnchorsTakeTwoQuestionsEach) {
    const TavBox box(machine, 0x1C);
    ModelBuilder model("Box");
    constexpr std::uint16_t kAlternates = 255;
    for (std::uint16_t i = 0; i < kAlternates; ++i)
        model.anchor({0x1234, i, 0, 0});
    model.anchor(kUpIds).internalBridge({"", kUpIds}).labels({"A"});
    model.downstreamPort({"d1f0", kUpIds, true});
    CacheBuild build(machine, {model.build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 01:00.0 ports A"));
    // The session, each anchor, the one found, its port.
    EXPECT_THAT(build.wrapper.calls(), SizeIs(2 + 2 * (kAlternates + 1) + 2 + 2));
}

TEST_F(CacheBuilding, RecordsOutliveEverythingThatTheyCameFrom) {
    const TavBox box(machine, 0x1C);
    cPciTavPluginCache cache;
    {
        CacheBuild build(machine, {boxModel("Box").build()});
        cache.Build(build.finder, build.wrapper, build.db.filesystem, build.db.names, build.models);
    }
    EXPECT_EQ(testsupport::describe(cache.RecordAt(0)), "Box TAV1 at 01:00.0 ports P1,P2");
    const tDeviceRecord copy = cache.RecordAt(0);
    cache.Clear();
    EXPECT_EQ(testsupport::describe(copy), "Box TAV1 at 01:00.0 ports P1,P2");
}

// Models that fail.

TEST_F(CacheBuilding, SecondAddressThatFailsKeepsTheFirstAndTheNextModel) {
    const TavBox whole(machine, 0x02);
    TavBox::Shape shape;
    shape.widths = {8}; // its second port is missing, so a label is left
    const TavBox part(machine, 0x1C, shape);
    const TavBox behind(machine, 0x1D);
    const TavBox other = otherBox(machine, 0x1E);
    CacheBuild build(machine, {boxModel("Box").build(), boxModel("Other", 2, kOtherUpIds).build()});
    build.build();
    expectBuilt(build);
    // What comes behind the failing address in its model is skipped.
    EXPECT_THAT(build.devices(),
                ElementsAre("Box TAV1 at " + machine.address(whole.up) + " ports P1,P2",
                            "Other TAV2 at " + machine.address(other.up) + " ports P1,P2"));
    EXPECT_THAT(build.db.filesystem.names(),
                ElementsAre("[" + machine.slotPath(whole.up) + "]", "Model = Box",
                            "TerminalName = TAV1", "[" + machine.slotPath(other.up) + "]",
                            "Model = Other", "TerminalName = TAV2"));
}

TEST_F(CacheBuilding, SaveNeedsOneWalkThatReturned) {
    TavBox::Shape shape;
    shape.widths = {8};
    const TavBox part(machine, 0x1C, shape);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.db.filesystem.setNames("[MR00:08]\nModel=Written by hand\n");
    build.build();
    expectBuilt(build);
    EXPECT_EQ(build.cache.Count(), 0U);
    EXPECT_THAT(build.db.filesystem.names(), ElementsAre("[MR00:08]", "Model=Written by hand"));
}

TEST_F(CacheBuilding, StandardExceptionOfAnyKindSkipsTheModel) {
    const TavBox box(machine, 0x1C);
    const TavBox other = otherBox(machine, 0x1D);
    const std::vector<std::function<void()>> failures = {
        [] { throw std::runtime_error("broken"); }, [] { throw std::bad_alloc(); },
        [] { throw std::out_of_range("index"); },
        [] { zoerr::raise(-1, nZOQUIL000::siteHere("test", "code")); }};
    for (const auto& fail : failures) {
        for (const char* where :
             {"GetAnchors", "GetAllBridges", "GetConnectorLabels", "GetModel"}) {
            CacheBuild build(machine,
                             {boxModel("Box").build(), boxModel("Other", 2, kOtherUpIds).build()});
            build.models.onQuery = [&](const std::string& query, std::uint32_t model) {
                if (query == where && model == 0)
                    fail();
            };
            build.build();
            expectBuilt(build);
            EXPECT_THAT(build.devices(),
                        ElementsAre("Other TAV1 at " + machine.address(other.up) + " ports P1,P2"))
                << where;
        }
    }
}

TEST_F(CacheBuilding, WhatIsNoStandardExceptionEndsTheBuild) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.models.onQuery = [](const std::string&, std::uint32_t) { throw 5; };
    EXPECT_THROW(build.build(), int);
    EXPECT_FALSE(build.cache.IsBuilt());
}

TEST_F(CacheBuilding, DeviceFinderThatFailsSkipsTheModel) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {ModelBuilder("Card").anchor(kCardIds, ModelBuilder::kDevice).build(),
                               boxModel("Box").build()});
    build.finder.onSearch = [](std::size_t) {
        zoerr::raise(-52006, nZOQUIL000::siteHere("test", "code"));
    };
    build.build();
    expectBuilt(build);
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 01:00.0 ports P1,P2"));
    EXPECT_THAT(build.finder.searches(), SizeIs(1));
}

// Failures that end the build.

TEST_F(CacheBuilding, NamesThatCannotBeOpenedEndTheBuildFirst) {
    CacheBuild build(machine, {boxModel("Box").build()});
    std::filesystem::create_directory(build.db.filesystem.nameFile());
    EXPECT_EQ(raisedBy([&] { build.build(); }).code, nZoPxiDriverTools_1_0::kIniFileErrCannotOpen);
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_EQ(build.models.loads(), 0U);
    EXPECT_THAT(build.wrapper.calls(), IsEmpty());
    // The lock goes with the names.
    EXPECT_TRUE(build.db.filesystem.IsLocked());
}

TEST_F(CacheBuilding, DescriptionsThatCannotBeLoadedEndTheBuild) {
    CacheBuild build(machine, {boxModel("Box").build()});
    build.models.onLoad = [] { zoerr::raise(-313322, nZOQUIL000::siteHere("test", "code")); };
    EXPECT_EQ(raisedBy([&] { build.build(); }).code, -313322);
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_THAT(build.wrapper.calls(), IsEmpty());
}

TEST_F(CacheBuilding, SessionThatCannotBeOpenedEndsTheBuild) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build()});
    build.wrapper.failCall(1, -313004);
    EXPECT_EQ(raisedBy([&] { build.build(); }).code, -313004);
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_EQ(build.cache.Count(), 0U);
    EXPECT_THAT(build.wrapper.calls(), ElementsAre("OpenSession 0"));
}

TEST_F(CacheBuilding, DevicesWithoutOpenNamesAreASoftwareFault) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build(), ModelBuilder("Second").build()});
    build.models.onQuery = [&](const std::string&, std::uint32_t model) {
        if (model == 1)
            build.db.names.Close();
    };
    const auto raised = raisedBy([&] { build.build(); });
    EXPECT_EQ(raised.code, kTavManErrSoftwareFault);
    EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrSoftwareFault"));
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_FALSE(build.wrapper.IsSessionOpen());
}

TEST_F(CacheBuilding, DevicesWithoutTheLockAreASoftwareFault) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build(), ModelBuilder("Second").build()});
    build.models.onQuery = [&](const std::string&, std::uint32_t model) {
        if (model == 1)
            build.db.filesystem.UnlockFile();
    };
    const auto raised = raisedBy([&] { build.build(); });
    EXPECT_EQ(raised.code, kTavManErrSoftwareFault);
    EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrSoftwareFault"));
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_THAT(build.db.filesystem.names(), IsEmpty());
}

TEST_F(CacheBuilding, LostNamesAreNoFaultWithoutDevices) {
    CacheBuild build(machine, {ModelBuilder("Nothing").build()});
    build.models.onQuery = [&](const std::string&, std::uint32_t) { build.db.names.Close(); };
    build.build();
    expectBuilt(build);
}

TEST_F(CacheBuilding, FailedSaveEndsTheBuildWithItsStatus) {
    const TavBox box(machine, 0x1C);
    CacheBuild build(machine, {boxModel("Box").build(), ModelBuilder("Second").build()});
    build.models.onQuery = [&](const std::string&, std::uint32_t model) {
        if (model == 1) {
            std::filesystem::remove(build.db.filesystem.nameFile());
            std::filesystem::create_directory(build.db.filesystem.nameFile());
        }
    };
    EXPECT_EQ(raisedBy([&] { build.build(); }).code, nZoPxiDriverTools_1_0::kIniFileErrNotStored);
    EXPECT_FALSE(build.cache.IsBuilt());
    EXPECT_FALSE(build.wrapper.IsSessionOpen());
}

} // namespace

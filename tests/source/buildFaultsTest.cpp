// One failure after the other through a whole build: who is left out, who stays, what is saved.
#include "tests/source/support/cacheBuild.h"
#include "tests/source/support/tavBox.h"
#include "tests/support/allocationFaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::BusBuilder;
using testsupport::CacheBuild;
using testsupport::kCardIds;
using testsupport::kRootPortIds;
using testsupport::ModelBuilder;
using testsupport::TavBox;

// Two boxes of one model with link widths, one of another model without, and a card.
struct Machine {
    BusBuilder bus;
    TavBox firstBox{bus, 0x02};
    TavBox secondBox{bus, 0x03};
    TavBox other = makeOther();
    BusBuilder::Node cardPort = bus.rootPort(0, 0x1C, 0, kRootPortIds);
    BusBuilder::Node card = bus.endpoint(cardPort, 0, 0, kCardIds);

    static constexpr testsupport::Ids kOtherIds{0x10B5, 0x8724, 0x1234, 0x0101};

    // Each model has a base of its own, so that names do not depend on who else is found.
    static std::vector<nZoTavManagerPciPlugin_15_0::tModelDescription> models() {
        return {testsupport::boxModel("Box")
                    .linkWidthPerLabel(4)
                    .labels({"H1", "H2", "A", "B", "C"})
                    .terminalNameBase("BOX")
                    .build(),
                ModelBuilder("Card")
                    .anchor(kCardIds, ModelBuilder::kDevice)
                    .terminalNameBase("CARD")
                    .build(),
                testsupport::boxModel("Other", 2, kOtherIds).terminalNameBase("OTHER").build()};
    }

private:
    TavBox makeOther() {
        TavBox::Shape shape;
        shape.upIds = kOtherIds;
        return {bus, 0x04, shape};
    }
};

// A device that a build finds, and how many wrapper calls were made before its record was.
struct Milestone {
    std::uint32_t model;
    std::size_t calls;
};

// What a build without failures asks: its calls, the first call of each model, and its devices.
struct Course {
    std::vector<std::string> calls;
    std::vector<std::size_t> modelsFrom;
    std::vector<Milestone> devices;
    std::vector<std::string> records;
};

Course courseOf(const Machine& machine) {
    Course course;
    CacheBuild build(machine.bus, Machine::models());
    build.models.onQuery = [&](const std::string& query, std::uint32_t model) {
        if (query == "GetAnchors")
            course.modelsFrom.push_back(build.wrapper.calls().size() + 1);
        if (query == "GetTerminalNameBase") // the last thing that a walk asks for
            course.devices.push_back({model, build.wrapper.calls().size()});
    };
    build.build();
    course.calls = build.wrapper.calls();
    course.records = build.devices();
    return course;
}

TEST(BuildFaults, WholeBuildFindsEveryone) {
    const Machine machine;
    const Course course = courseOf(machine);
    EXPECT_THAT(course.records,
                ElementsAre("Box BOX1 at 01:00.0 ports A,B,C", "Box BOX2 at 05:00.0 ports A,B,C",
                            "Card CARD1 at 0d:00.0", "Other OTHER1 at 09:00.0 ports P1,P2"));
    // Session 2; boxes: 2 searches, 2 calls and 17 a box; card 2; other: 2 searches, 2 calls and 6.
    EXPECT_THAT(course.calls, SizeIs(2 + (2 + 2 * (2 + 17)) + 2 + (2 + 2 + 6)));
    EXPECT_THAT(course.modelsFrom, ElementsAre(2U, 42U, 44U));
}

TEST(BuildFaults, FailingCallLeavesOutItsModelFromThereOnAndNobodyElse) {
    const Machine machine;
    const Course course = courseOf(machine);
    std::size_t endedBuilds = 0;
    std::size_t complete = 0;
    std::size_t modelsLeftOut = 0;
    for (std::size_t nth = 1; nth <= course.calls.size(); ++nth) {
        SCOPED_TRACE(course.calls[nth - 1] + ", call " + std::to_string(nth));
        CacheBuild build(machine.bus, Machine::models());
        build.wrapper.failCall(nth);
        const auto raised = testsupport::raisedBy([&] { build.build(); });
        EXPECT_TRUE(build.wrapper.hasFailed());
        if (course.calls[nth - 1].starts_with("OpenSession")) {
            EXPECT_EQ(raised.code, testsupport::kBridgeFault);
            EXPECT_FALSE(build.cache.IsBuilt());
            EXPECT_THAT(build.devices(), IsEmpty());
            ++endedBuilds;
            continue;
        }
        EXPECT_EQ(raised.code, 0);
        EXPECT_TRUE(build.cache.IsBuilt());
        EXPECT_FALSE(build.wrapper.IsSessionOpen());
        EXPECT_EQ(build.wrapper.calls().back(), "CloseSession");
        EXPECT_FALSE(build.db.filesystem.IsLocked());

        const bool closes = course.calls[nth - 1].starts_with("Close");
        const auto failing = static_cast<std::uint32_t>(
            std::upper_bound(course.modelsFrom.begin(), course.modelsFrom.end(), nth) -
            course.modelsFrom.begin() - 1);
        std::vector<std::string> expected;
        for (std::size_t i = 0; i < course.devices.size(); ++i) {
            if (closes || course.devices[i].model != failing || course.devices[i].calls < nth)
                expected.push_back(course.records[i]);
        }
        EXPECT_EQ(build.devices(), expected);
        // Names are stored for those who are listed, and for nobody else.
        EXPECT_THAT(build.db.filesystem.names(), SizeIs(3 * expected.size()));
        complete += expected.size() == course.records.size() ? 1 : 0;
        modelsLeftOut += expected.size() == course.records.size() ? 0 : 1;
    }
    EXPECT_EQ(endedBuilds, 1U);
    EXPECT_EQ(complete, 6U + 1U); // closing a bridge, three times a box, and the session
    EXPECT_EQ(modelsLeftOut, course.calls.size() - 8);
}

TEST(BuildFaults, NothingIsSavedWhenTheOnlyWalkFails) {
    const Machine machine;
    for (std::size_t nth = 2; nth <= 3; ++nth) { // the two calls that the card takes
        CacheBuild build(machine.bus, {Machine::models()[1]});
        build.db.filesystem.setNames("[MR00:08]\nModel=Written by hand\n");
        build.wrapper.failCall(nth);
        build.build();
        EXPECT_TRUE(build.wrapper.hasFailed());
        EXPECT_TRUE(build.cache.IsBuilt());
        EXPECT_THAT(build.devices(), IsEmpty());
        EXPECT_THAT(build.db.filesystem.names(), ElementsAre("[MR00:08]", "Model=Written by hand"));
    }
}

// Memory that gives out ends the build or leaves a model out; it never ends the program, keeps the
// lock, or lists half a device.
TEST(BuildFaults, MemoryThatGivesOutAnywhereLeavesWholeDevicesOnly) {
    const Machine machine;
    const Course course = courseOf(machine);
    std::size_t ended = 0;
    std::size_t shortened = 0;
    std::size_t nth = 1;
    for (;; ++nth) {
        ASSERT_LT(nth, 20000U);
        SCOPED_TRACE("allocation " + std::to_string(nth));
        CacheBuild build(machine.bus, Machine::models());
        bool raised = false;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            try {
                build.build();
            } catch (const std::exception&) {
                raised = true;
            }
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_FALSE(raised);
            EXPECT_EQ(build.devices(), course.records);
            break;
        }
        EXPECT_NE(raised, build.cache.IsBuilt());
        for (const std::string& device : build.devices())
            EXPECT_THAT(course.records, testing::Contains(device));
        ended += raised ? 1 : 0;
        shortened += !raised && build.cache.Count() < course.records.size() ? 1 : 0;
        build.db.names.Close();
        EXPECT_FALSE(build.db.filesystem.IsLocked());
    }
    EXPECT_GT(ended, 10U);
    EXPECT_GT(shortened, 100U);
}

} // namespace

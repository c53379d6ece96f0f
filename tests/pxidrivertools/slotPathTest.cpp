// Slot paths: the machine form, the relative form, and how errors travel through them.
#include "pxidrivertools/cSlotPath.h"
#include "quil/setError.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using nZOQUIL000::setError;
using nZOQUIL000::tErrorStatus;
using Hops = std::vector<int>;

Hops hopsOf(const cSlotPath& path) {
    return {path.hops.begin(), path.hops.end()};
}

std::string textOf(const cSlotPath& path) {
    tErrorStatus status;
    std::string text;
    path.ToString(text, status);
    EXPECT_EQ(status.code, 0);
    return text;
}

int parse(cSlotPath& path, const char* text) {
    tErrorStatus status;
    path.ParseMachineText(text, status);
    return status.code;
}

int apply(cSlotPath& path, const char* steps) {
    tErrorStatus status;
    path.ApplyRelativePath(steps, status);
    return status.code;
}

std::string recordOf(cSlotPath& path, const char* steps) {
    tErrorStatus status;
    path.ApplyRelativePath(steps, status);
    return status.textOrEmpty();
}

std::string record(const char* constant, int line) {
    return std::string(R"({"error_constant":")") + constant +
           R"(","file":"pxidrivertools\\slotpath\\cslotpath","line":)" + std::to_string(line) +
           R"(,"component":"zotavpci"})";
}

TEST(SlotPathParse, MachineRootWithoutHops) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "MR1A:"), 0);
    EXPECT_EQ(path.rootBus, 0x1A);
    EXPECT_TRUE(path.hops.empty());
}

TEST(SlotPathParse, DecimalRootWithHops) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "3:1C,00"), 0);
    EXPECT_EQ(path.rootBus, 3);
    EXPECT_EQ(hopsOf(path), (Hops{0x1C, 0x00}));
}

TEST(SlotPathParse, HopsWithoutARootPartStandOnRootBusZero) {
    cSlotPath path;
    path.rootBus = 9;
    EXPECT_EQ(parse(path, "1C,00"), 0);
    EXPECT_EQ(path.rootBus, 0);
    EXPECT_EQ(hopsOf(path), (Hops{0x1C, 0x00}));
}

TEST(SlotPathParse, DecimalRootIsCutToEightBits) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "300:08"), 0);
    EXPECT_EQ(path.rootBus, 300 - 256);
}

TEST(SlotPathParse, TrailingCommaEndsTheList) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "MR00:1C,"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x1C});
}

TEST(SlotPathParse, ReplacesTheOldPath) {
    cSlotPath path;
    ASSERT_EQ(parse(path, "MR00:01,02,03"), 0);
    EXPECT_EQ(parse(path, "MR02:10"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x10});
    EXPECT_EQ(path.rootBus, 2);
}

TEST(SlotPathParse, EmptyTextIsAnEmptyPath) {
    cSlotPath path;
    EXPECT_EQ(parse(path, ""), 0);
    EXPECT_EQ(textOf(path), "MR00:");
}

TEST(SlotPathParse, OneDigitHopMisreadsTheRest) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "MR00:1,20"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x01}); // two places on stands "2", which ends the list
}

TEST(SlotPathParse, OneDigitRootSkipsFiveCharactersAllTheSame) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "MR1:E0"), 0);
    EXPECT_EQ(path.rootBus, 1);
    EXPECT_EQ(hopsOf(path), Hops{0x00});
    EXPECT_EQ(parse(path, "MR1:"), 0);
    EXPECT_TRUE(path.hops.empty());
}

TEST(SlotPathParse, UnreadableHopKeepsTheHopsBefore) {
    cSlotPath path;
    tErrorStatus status;
    path.ParseMachineText("MR00:1C,zz", status);
    EXPECT_EQ(status.code, -313325);
    EXPECT_EQ(status.textOrEmpty(), record("kSlotPathErrBadText", 456));
    EXPECT_EQ(hopsOf(path), Hops{0x1C});
}

TEST(SlotPathParse, RootMarkWithoutNumberIsUnreadable) {
    cSlotPath path;
    EXPECT_EQ(parse(path, "MR:00"), -313325);
}

TEST(SlotPathPrint, RootAndHopsInListOrder) {
    cSlotPath path;
    path.hops = {0x1C << 3, 0};
    EXPECT_EQ(textOf(path), "MR00:E0,00");
    path.rootBus = 0xAB;
    path.hops.clear();
    EXPECT_EQ(textOf(path), "MRAB:");
}

TEST(SlotPathPrint, HopsAlone) {
    cSlotPath path;
    tErrorStatus status;
    std::string text = "before";
    path.FormatHops(text, status);
    EXPECT_EQ(text, "");
    path.hops = {0x0A, 0xFF};
    path.FormatHops(text, status);
    EXPECT_EQ(text, "0A,FF");
}

TEST(SlotPathPrint, ParsingReadsBackEveryPrintedPath) {
    for (int root = 0; root < 256; ++root) {
        cSlotPath path;
        path.rootBus = static_cast<std::uint8_t>(root);
        path.hops = {static_cast<std::uint8_t>(root), static_cast<std::uint8_t>(255 - root)};
        cSlotPath again;
        ASSERT_EQ(parse(again, textOf(path).c_str()), 0);
        EXPECT_EQ(again.rootBus, path.rootBus);
        EXPECT_EQ(again.hops, path.hops);
    }
}

TEST(SlotPathRelative, StepsWorkAtTheFront) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "d2f0,d3f1"), 0);
    EXPECT_EQ(hopsOf(path), (Hops{0x19, 0x10}));
    EXPECT_EQ(apply(path, "f4"), 0);
    EXPECT_EQ(hopsOf(path), (Hops{0x1C, 0x10}));
    EXPECT_EQ(apply(path, "-"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x10});
}

TEST(SlotPathRelative, OversizedNumbersAreCutToEightBits) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "d40f9"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x49});
}

TEST(SlotPathRelative, RootBusIsNotTouched) {
    cSlotPath path;
    path.rootBus = 5;
    EXPECT_EQ(apply(path, "d1f0"), 0);
    EXPECT_EQ(path.rootBus, 5);
}

TEST(SlotPathRelative, EmptyTextChangesNothing) {
    cSlotPath path;
    path.hops = {1};
    EXPECT_EQ(apply(path, ""), 0);
    EXPECT_EQ(hopsOf(path), Hops{1});
}

TEST(SlotPathRelative, GoingUpFromNowhereFails) {
    cSlotPath path;
    EXPECT_EQ(recordOf(path, "-"), record("kSlotPathErrBadText", 903));
    EXPECT_EQ(apply(path, "-"), -313325);
}

TEST(SlotPathRelative, FunctionStepWithoutHopsReportsTheEmptyPath) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "f1"), -313324);
    EXPECT_EQ(recordOf(path, "f1"), record("kSlotPathErrEmptyPath", 513));
}

TEST(SlotPathRelative, FunctionStepIsReadBeforeThePathIsLookedAt) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "fx"), -313325);
    EXPECT_EQ(apply(path, "f1x"), -313325);
}

TEST(SlotPathRelative, AnythingElseIsBadText) {
    for (const char* step : {"x", "d", "d1", "d1f", "d1f1x", "D1f1", "--", "- ", " d1f1", ","}) {
        cSlotPath path;
        path.hops = {0x10};
        EXPECT_EQ(recordOf(path, step), record("kSlotPathErrBadText", 944)) << step;
        EXPECT_EQ(hopsOf(path), Hops{0x10});
    }
}

TEST(SlotPathRelative, NumbersMayHaveWhiteSpaceAndSign) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "d 2f+1"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x11});
    EXPECT_EQ(apply(path, "f 3"), 0);
    EXPECT_EQ(hopsOf(path), Hops{0x13});
}

TEST(SlotPathRelative, StepsBeforeABadOneStayApplied) {
    cSlotPath path;
    EXPECT_EQ(apply(path, "d1f0,,d2f0"), -313325);
    EXPECT_EQ(hopsOf(path), Hops{0x08});
    EXPECT_EQ(apply(path, "d2f0,"), -313325);
    EXPECT_EQ(hopsOf(path), (Hops{0x10, 0x08}));
}

TEST(SlotPath, ClearKeepsTheRootBus) {
    cSlotPath path;
    path.rootBus = 4;
    path.hops = {1, 2};
    tErrorStatus status;
    path.Clear(status);
    EXPECT_TRUE(path.hops.empty());
    EXPECT_EQ(path.rootBus, 4);
}

TEST(SlotPath, CopyHasRootHopsAndAnErrorOfTheSource) {
    cSlotPath path;
    path.rootBus = 7;
    path.hops = {3, 4};
    setError(path.state, -9, {"f", 1, "zotavpci", "k"});
    const cSlotPath copy(path);
    EXPECT_EQ(copy.rootBus, 7);
    EXPECT_EQ(copy.hops, path.hops);
    EXPECT_EQ(copy.state.code, -9);
    EXPECT_STREQ(copy.state.textOrEmpty(), path.state.textOrEmpty());
    EXPECT_STRNE(path.state.textOrEmpty(), "");
}

TEST(SlotPath, CopyDoesNotTakeOverAWarning) {
    cSlotPath path;
    path.state.code = 5;
    const cSlotPath copy(path); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.state.code, 0);
}

// Runs every operation on a path and reports the status that each leaves.
std::vector<int> runAll(cSlotPath& path, int before) {
    std::vector<int> codes;
    std::string text = "untouched";
    const auto run = [&](auto operation) {
        tErrorStatus status;
        status.code = before;
        operation(status);
        codes.push_back(status.code);
    };
    run([&](tErrorStatus& s) { path.ParseMachineText("MR01:10", s); });
    run([&](tErrorStatus& s) { path.FormatMachineText(text, s); });
    run([&](tErrorStatus& s) { path.ToString(text, s); });
    run([&](tErrorStatus& s) { path.FormatHops(text, s); });
    run([&](tErrorStatus& s) { path.PrependHop(1, 1, s); });
    run([&](tErrorStatus& s) { path.ApplyRelativePath("d1f1", s); });
    run([&](tErrorStatus& s) { path.Clear(s); });
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(hopsOf(path), (Hops{5, 6}));
    EXPECT_EQ(path.rootBus, 3);
    return codes;
}

TEST(SlotPath, OperationsDoNothingWhenTheCallersStatusHasFailed) {
    cSlotPath path;
    path.rootBus = 3;
    path.hops = {5, 6};
    EXPECT_EQ(runAll(path, -77), std::vector<int>(7, -77));
}

TEST(SlotPath, OperationsPassOnAnErrorOfThePathAndDoNothingElse) {
    cSlotPath path;
    path.rootBus = 3;
    path.hops = {5, 6};
    setError(path.state, -9, {"f", 1, "zotavpci", "k"});
    EXPECT_EQ(runAll(path, 0), std::vector<int>(7, -9));
    tErrorStatus status;
    path.Clear(status);
    EXPECT_STREQ(status.textOrEmpty(), path.state.textOrEmpty());
}

} // namespace

// The listing's forms, and what it leaves out.
#include "tavctl/list/listing.h"

#include "tavctl/list/listFilter.h"
#include "tavctl/words/failure.h"
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>

namespace {

using namespace tavctl;
using testing::ElementsAre;

ListedDevice box() {
    ListedDevice device;
    device.model = "Box";
    device.category = kTavCategorySwitchboxTav;
    device.bus = 1;
    device.upstreamBus = 1;
    device.terminalName = "TAV1";
    device.ports.push_back({"A", 3, {}, {}});
    device.slotPath = "MR00:00,20";
    return device;
}

ListedDevice wideBox() {
    ListedDevice wide = box();
    wide.terminalName = "Wide10";
    wide.bus = 0x41;
    wide.upstreamBus.reset();
    wide.category = kTavCategoryPci;
    wide.ports = {{"B1", 0x44, 8, 3}, {"LONG", 0x45, 16, 99}};
    return wide;
}

Listing listingOf(const std::vector<ListedDevice>& devices) {
    return makeListing(devices, {}, nullptr);
}

std::string tableOf(const std::vector<ListedDevice>& devices, bool verbose = false,
                    std::size_t width = kUnbounded) {
    return listingAsTable(listingOf(devices), {verbose, false, width});
}

// The box on bus 1, at a root port of sixteen lanes; a card of eight lanes at 5 GT/s in A, which
// runs at four of them.
struct LinkedBox {
    testsupport::BusBuilder machine;
    testsupport::BusBuilder::Node root = machine.rootPort(0, 4, 0, {0x8086, 0x3420, 0, 0}, 16, 3);
    testsupport::BusBuilder::Node up = machine.bridge(root, 0, 0, {0x10B5, 0x8609, 0, 0}, 16, 3);
    testsupport::BusBuilder::Node portA = machine.bridge(up, 1, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node card =
        machine.endpoint(portA, 0, 0, {0x1172, 0xE001, 1, 2}, 8, 2);
    testsupport::BusBuilder::Node portB = machine.bridge(up, 2, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);

    LinkedBox() {
        machine.setRunningLink(root, 8, 3);
        machine.setRunningLink(portA, 4, 2);
    }

    [[nodiscard]] WholeBus bus() const {
        const testsupport::FileFolder folder;
        return readWholeBus(folder.write("machine", machine.dump()));
    }

    static ListedDevice device() {
        ListedDevice device = box();
        device.ports = {{"A", 3, 8, 3}, {"B", 4, 8, 3}};
        return device;
    }
};

TEST(ListingAsJson, HasTheDocumentedFormInOneLine) {
    Listing listing = listingOf({box()});
    listing.leftOut = pcibus::LeftOut{.otherDomains = 36};
    listing.absent = {{{"TAV4", "Old Box", "MR40:00,08"}, ""}};
    EXPECT_EQ(
        listingAsJson(listing),
        R"({"version":1,"leftOut":{"otherDomains":36,"dead":0,"unreadable":0,"headerOnly":0},)"
        R"("devices":[{"name":"TAV1","model":"Box","category":"SwitchboxTav",)"
        R"("address":"0000:01:00.0","slotPath":"MR00:00,20","stored":true,"index":0,)"
        R"("upstreamBus":1,"upstreamLink":{"negotiatedWidth":null,"negotiatedSpeed":null,)"
        R"("possibleWidth":null,"possibleSpeed":null,"degraded":null},"linkWidthPerLabel":null,)"
        R"("ports":[{"label":"A","secondaryBus":3,"linkWidth":null,"linkSpeed":null,)"
        R"("negotiatedWidth":null,"negotiatedSpeed":null,"possibleWidth":null,)"
        R"("possibleSpeed":null,"degraded":null,"occupied":null}]}],)"
        R"("absent":[{"name":"TAV4","model":"Old Box","slotPath":"MR40:00,08","place":null}]})"
        "\n");
}

TEST(ListingAsJson, HasTheLinksAsTheyRun) {
    const LinkedBox linked;
    const WholeBus bus = linked.bus();
    const std::string json = listingAsJson(makeListing({LinkedBox::device()}, {}, &bus));
    EXPECT_THAT(json, testing::HasSubstr(R"("upstreamLink":{"negotiatedWidth":8,)"
                                         R"("negotiatedSpeed":3,"possibleWidth":16,)"
                                         R"("possibleSpeed":3,"degraded":true})"));
    EXPECT_THAT(json, testing::HasSubstr(
                          R"("negotiatedWidth":4,"negotiatedSpeed":2,"possibleWidth":8,)"
                          R"("possibleSpeed":2,"degraded":true,"occupied":true},{"label":"B")"));
    EXPECT_THAT(json, testing::HasSubstr(R"("degraded":null,"occupied":false})"));
}

TEST(Listing, MarksNamesThatAreNotStored) {
    ListedDevice device = box();
    EXPECT_EQ(markedName(device), "TAV1");
    device.isStored = false;
    EXPECT_EQ(markedName(device), "TAV1*");
    EXPECT_NE(tableOf({device}).find("\nTAV1*  Box"), std::string::npos);
    EXPECT_NE(listingAsJson(listingOf({device})).find(R"("stored":false)"), std::string::npos);
}

TEST(ListingAsJson, NoDevicesAreAnEmptyList) {
    EXPECT_EQ(listingAsJson({}), "{\"version\":1,\"leftOut\":null,\"devices\":[],\"absent\":[]}\n");
}

TEST(ListingAsJson, BytesThatAreNotUtf8AreReplaced) {
    ListedDevice device = box();
    device.model = "B\xFFx";
    EXPECT_NE(listingAsJson(listingOf({device})).find("B\xEF\xBF\xBDx"), std::string::npos);
}

TEST(ListingAsTable, ShowsNameFirstAndADeviceALine) {
    EXPECT_EQ(tableOf({box(), wideBox()}), "NAME    MODEL  ADDRESS  CATEGORY      PORTS\n"
                                           "TAV1    Box    01:00.0  SwitchboxTav  A\n"
                                           "Wide10  Box    41:00.0  PCI           B1,LONG\n");
    EXPECT_EQ(tableOf({}), "");
}

TEST(ListingAsTable, CategoryThatNobodyKnowsIsANumber) {
    ListedDevice other = box();
    other.category = 77;
    EXPECT_EQ(tableOf({other}), "NAME  MODEL  ADDRESS  CATEGORY     PORTS\n"
                                "TAV1  Box    01:00.0  category 77  A\n");
}

TEST(ListingAsTable, VerboselyHasALineForThePortsAndTheirValues) {
    EXPECT_EQ(tableOf({box(), wideBox()}, true), "NAME    MODEL  ADDRESS  CATEGORY      PORTS\n"
                                                 "TAV1    Box    01:00.0  SwitchboxTav  A\n"
                                                 "  upstream  bus 01\n"
                                                 "  port  A  bus 03\n"
                                                 "Wide10  Box    41:00.0  PCI           B1,LONG\n"
                                                 "  port  B1    bus 44  x8  8 GT/s\n"
                                                 "  port  LONG  bus 45  x16  speed code 99\n");
}

TEST(ListingAsTable, VerboselyTellsHowLinksRunAndWhatIsEmpty) {
    const LinkedBox linked;
    const WholeBus bus = linked.bus();
    const Listing listing = makeListing({LinkedBox::device()}, {}, &bus);
    EXPECT_EQ(listingAsTable(listing, {true}),
              "NAME  MODEL  ADDRESS  CATEGORY      PORTS\n"
              "TAV1  Box    01:00.0  SwitchboxTav  A,B\n"
              "  upstream  bus 01  runs x8 of x16 8 GT/s\n"
              "  port  A  bus 03  x8  8 GT/s  runs x4 of x8 5 GT/s\n"
              "  port  B  bus 04  x8  8 GT/s  empty\n");
    EXPECT_EQ(listingAsTable(listing, {false, true}),
              "NAME  MODEL  ADDRESS  CATEGORY      PORTS\n"
              "TAV1  Box    01:00.0  SwitchboxTav  A,B\n"
              "  upstream  bus 01  runs x8 of x16 8 GT/s\n"
              "  port  A  bus 03  x8  8 GT/s  runs x4 of x8 5 GT/s\n");
}

TEST(ListingAsTable, DeviceWithoutPortsHasADash) {
    ListedDevice bare = box();
    bare.ports.clear();
    EXPECT_EQ(tableOf({bare}), "NAME  MODEL  ADDRESS  CATEGORY      PORTS\n"
                               "TAV1  Box    01:00.0  SwitchboxTav  -\n");
}

TEST(ListingAsTable, LeavesOutLabelsThenCutsModelThenNameToTheWidth) {
    ListedDevice longOne = box();
    longOne.model = std::string(60, 'm') + "end";
    longOne.ports.push_back({std::string(60, 'l'), 4, {}, {}});
    EXPECT_EQ(tableOf({longOne}, false, 80),
              "NAME  MODEL                                      ADDRESS  CATEGORY      PORTS\n"
              "TAV1  mmmmmmmmmmmmmmmmmmm...mmmmmmmmmmmmmmmmend  01:00.0  SwitchboxTav  A,+1\n");
    longOne.terminalName = std::string(255, 'n');
    EXPECT_EQ(tableOf({longOne}, false, 80),
              "NAME                                   MODEL     ADDRESS  CATEGORY      PORTS\n"
              "nnnnnnnnnnnnnnnnn...nnnnnnnnnnnnnnnnn  mmm...nd  01:00.0  SwitchboxTav  A,+1\n");
    EXPECT_NE(tableOf({longOne}, true, 80).find(longOne.terminalName), std::string::npos);
    EXPECT_NE(tableOf({longOne}).find(longOne.terminalName), std::string::npos);
}

TEST(ListingAsTable, ColumnsCountCharactersNotBytes) {
    ListedDevice umlaut = box();
    umlaut.model = "B\xC3\xB6xes";
    umlaut.ports.clear();
    ListedDevice plain = umlaut;
    plain.model = "Boxes";
    const std::string table = tableOf({umlaut, plain});
    EXPECT_NE(table.find("B\xC3\xB6xes  01:00.0"), std::string::npos) << table;
    EXPECT_NE(table.find("Boxes  01:00.0"), std::string::npos) << table;
}

TEST(AbsentAsTable, TellsWhatStandsNearestToThePlace) {
    const LinkedBox linked;
    const WholeBus bus = linked.bus();
    const Listing listing = makeListing({LinkedBox::device()},
                                        {{"TAV4", "Old Box", "MR00:00,10,00,20"},
                                         {"TAV5", "Old Box", "MR00:00,00,F8,00,20"},
                                         {"TAV6", "Old Box", "MR00:30"},
                                         {"TAV7", "Old Box", "MR00:00,20"}},
                                        &bus);
    EXPECT_EQ(absentAsTable(listing, {}), "ABSENT  MODEL    STOOD AT             BELOW\n"
                                          "TAV4    Old Box  MR00:00,10,00,20     TAV1 connector B\n"
                                          "TAV5    Old Box  MR00:00,00,F8,00,20  01:00.0\n"
                                          "TAV6    Old Box  MR00:30              -\n"
                                          "TAV7    Old Box  MR00:00,20           00:04.0\n");
    EXPECT_EQ(absentAsTable({}, {}), "");
}

std::vector<std::string> namesIn(const Listing& listing) {
    std::vector<std::string> names;
    for (const ListingEntry& entry : listing.devices)
        names.push_back(entry.device.terminalName);
    for (const ListingAbsence& absence : listing.absent)
        names.push_back("no " + absence.device.name);
    return names;
}

std::vector<std::string> filtered(const std::function<void(ListFilter&)>& ask) {
    const LinkedBox linked;
    const WholeBus bus = linked.bus();
    Listing listing =
        makeListing({LinkedBox::device(), wideBox()}, {{"TAV4", "Old Box", "MR00:30"}}, &bus);
    ListFilter filter;
    ask(filter);
    filter.apply(listing);
    return namesIn(listing);
}

std::vector<std::string> named(const std::vector<std::string>& words) {
    return filtered([&](ListFilter& filter) { filter.devices = words; });
}

std::vector<std::string> flagged(std::initializer_list<bool ListFilter::*> flags) {
    return filtered([&](ListFilter& filter) {
        for (bool ListFilter::*const flag : flags)
            filter.*flag = true;
    });
}

TEST(ListFilter, KeepsWhatIsAskedFor) {
    EXPECT_THAT(named({}), ElementsAre("TAV1", "Wide10", "no TAV4"));
    EXPECT_THAT(named({"Wide10"}), ElementsAre("Wide10"));
    EXPECT_THAT(named({"TAV4", "01:00.0"}), ElementsAre("TAV1", "no TAV4"));
    EXPECT_THAT(named({"Box"}), ElementsAre("TAV1", "Wide10"));
    EXPECT_THAT(filtered([](ListFilter& filter) { filter.category = "PCI"; }),
                ElementsAre("Wide10"));
    EXPECT_THAT(flagged({&ListFilter::present}), ElementsAre("TAV1", "Wide10"));
    EXPECT_THAT(flagged({&ListFilter::absent}), ElementsAre("no TAV4"));
    EXPECT_THAT(flagged({&ListFilter::freePort}), ElementsAre("TAV1"));
    EXPECT_THAT(flagged({&ListFilter::degraded}), ElementsAre("TAV1"));
}

TEST(ListFilter, RefusesWhatIsNotThereAndWhatContradictsItself) {
    EXPECT_THROW(named({"TAV9"}), FailureException);
    EXPECT_THROW(named({"00:04.0"}), FailureException);
    EXPECT_THROW(flagged({&ListFilter::all, &ListFilter::present}), FailureException);
    EXPECT_THROW(flagged({&ListFilter::present, &ListFilter::absent}), FailureException);
}

} // namespace

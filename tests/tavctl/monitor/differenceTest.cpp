// What two looks at a machine differ in, as events.
#include "tavctl/monitor/difference.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace tavctl;
using namespace tavctl::monitor;
using testing::ElementsAre;
using testing::IsEmpty;

SeenFunction seenCard(const std::string& place, const std::string& under,
                      const std::string& address, std::uint16_t deviceId = 0x10d3) {
    SeenFunction function;
    function.place = place;
    function.slotPath = "MR00:" + place + under;
    function.address = address;
    function.vendorId = 0x8086;
    function.deviceId = deviceId;
    return function;
}

// A box at root port 04.0 with a card in connector 1 and one in 2; a second box at 05.0.
MachineState seenMachine() {
    MachineState state;
    SeenDevice box{"TAV1", "Box", true, "0000:01:00.0", "MR00:00,20", {}, {}, {}};
    box.connectors.push_back({{"1"}, {4, 2, 4, 2}, {seenCard("00,", "00,00,20", "0000:03:00.0")}});
    box.connectors.push_back({{"2"}, {4, 2, 4, 2}, {seenCard("00,", "08,00,20", "0000:04:00.0")}});
    SeenDevice other{"TAV2", "Box", true, "0000:05:00.0", "MR00:00,28", {}, {}, {}};
    other.connectors.push_back({{"1"}, {}, {}});
    state.devices = {box, other};
    for (const SeenConnector& connector : box.connectors)
        state.functions.insert(keyOf(connector.functions.front()));
    return state;
}

std::vector<std::string> sentences(const std::vector<Event>& events) {
    std::vector<std::string> texts;
    for (const Event& event : events) {
        const std::string text = eventAsText(event, {});
        EXPECT_TRUE(text.starts_with("1970-01-01T00:00:00Z  ")) << text;
        texts.push_back(text.substr(22, text.size() - 23));
    }
    return texts;
}

// From the machine to what it is after the change, and back.
std::vector<std::string> after(const std::function<void(MachineState&)>& change) {
    MachineState now = seenMachine();
    change(now);
    return sentences(differences(seenMachine(), now));
}
std::vector<std::string> backFrom(const std::function<void(MachineState&)>& change) {
    MachineState before = seenMachine();
    change(before);
    return sentences(differences(before, seenMachine()));
}

TEST(MonitorDifference, OfTheSameIsNothing) {
    EXPECT_THAT(after([](MachineState&) {}), IsEmpty());
}

TEST(MonitorDifference, TellsOfDevicesThatComeAndGoWithAllThatIsInThem) {
    const auto withoutFirst = [](MachineState& state) {
        state.devices.erase(state.devices.begin());
        state.functions.clear();
    };
    EXPECT_THAT(after(withoutFirst), ElementsAre("TAV1 (Box) has vanished; it was at 01:00.0"));
    EXPECT_THAT(backFrom(withoutFirst), ElementsAre("TAV1 (Box) has arrived, at 01:00.0"));
}

TEST(MonitorDifference, TellsInWhichConnectorADeviceComesAndGoes) {
    const auto withCard = [](MachineState& state) {
        state.devices.push_back({"Card1",
                                 "Card",
                                 false,
                                 "0000:06:00.0",
                                 "MR00:00,00,28",
                                 ConnectorName{"TAV2", true, {"1", "1b"}},
                                 {},
                                 {}});
    };
    EXPECT_THAT(after(withCard),
                ElementsAre("Card1* (Card) has arrived, at 06:00.0, in TAV2 connectors 1 1b"));
    EXPECT_THAT(backFrom(withCard), ElementsAre("Card1* (Card) has vanished; it was at 06:00.0, in "
                                                "TAV2 connectors 1 1b"));
}

TEST(MonitorDifference, TellsOfWhatIsPluggedAndPulled) {
    const auto withoutSecond = [](MachineState& state) {
        state.functions.erase(keyOf(state.devices[0].connectors[1].functions.front()));
        state.devices[0].connectors[1].functions.clear();
    };
    EXPECT_THAT(after(withoutSecond),
                ElementsAre("pulled out of TAV1 connector 2: 04:00.0 8086:10d3"));
    EXPECT_THAT(backFrom(withoutSecond),
                ElementsAre("plugged into TAV1 connector 2: 04:00.0 8086:10d3"));
}

TEST(MonitorDifference, AnotherCardInTheSamePlaceIsPulledAndPlugged) {
    EXPECT_THAT(after([](MachineState& state) {
                    SeenFunction& function = state.devices[0].connectors[0].functions.front();
                    state.functions.erase(keyOf(function));
                    function.deviceId = 0x1521;
                    function.deviceName = "Four Ports";
                    state.functions.insert(keyOf(function));
                }),
                ElementsAre("pulled out of TAV1 connector 1: 03:00.0 8086:10d3",
                            "plugged into TAV1 connector 1: 03:00.0 Four Ports"));
}

TEST(MonitorDifference, NewBusNumbersMoveDevicesAndNothingElse) {
    EXPECT_THAT(
        after([](MachineState& state) {
            state.devices[0].address = "0000:11:00.0";
            state.devices[0].connectors[0].functions.front().address = "0000:13:00.0";
            state.devices[0].connectors[1].functions.front().address = "0000:14:00.0";
        }),
        ElementsAre("TAV1 (Box) has moved from 01:00.0 to 11:00.0: bus numbers have changed"));
}

TEST(MonitorDifference, AConnectorNeedsNoLabelAndAVendorNoNameOfItsDevice) {
    MachineState before = seenMachine();
    before.devices[0].connectors[0].labels.clear();
    before.devices[0].isStored = false;
    before.devices[0].connectors[0].functions[0].vendorName = "Maker";
    MachineState now = before;
    now.devices[0].connectors[0].functions.clear();
    now.functions.erase(keyOf(before.devices[0].connectors[0].functions[0]));
    EXPECT_THAT(
        sentences(differences(before, now)),
        ElementsAre("pulled out of a port of TAV1* without a label: 03:00.0 Maker 8086:10d3"));
}

TEST(MonitorDifference, ADeviceInAnotherSlotTakesWhatIsPluggedInAlong) {
    EXPECT_THAT(after([](MachineState& state) {
                    SeenDevice& box = state.devices[0];
                    box.address = "0000:21:00.0";
                    box.slotPath = "MR00:00,30";
                    state.functions.clear();
                    for (SeenConnector& connector : box.connectors) {
                        SeenFunction& function = connector.functions.front();
                        function.slotPath.replace(function.slotPath.size() - 2, 2, "30");
                        state.functions.insert(keyOf(function));
                    }
                }),
                ElementsAre("TAV1 (Box) has moved from 01:00.0 to another slot, at 21:00.0"));
}

TEST(MonitorDifference, TellsOfAnotherNameOfTheSameDevice) {
    EXPECT_THAT(after([](MachineState& state) { state.devices[0].name = "Left"; }),
                ElementsAre("TAV1 (Box) is called Left now"));
    EXPECT_THAT(after([](MachineState& state) {
                    state.devices[0].name = "TAV2";
                    state.devices[1].name = "TAV1";
                }),
                ElementsAre("TAV1 (Box) has moved from 01:00.0 to another slot, at 05:00.0",
                            "TAV2 (Box) has moved from 05:00.0 to another slot, at 01:00.0"))
        << "as whoever goes by the names has it";
}

TEST(MonitorDifference, ANameThatIsStoredNowIsNoEvent) {
    EXPECT_THAT(after([](MachineState& state) { state.devices[0].isStored = false; }), IsEmpty());
}

TEST(MonitorDifference, TellsOfLinksThatAreDegradedAndRestored) {
    const auto narrow = [](MachineState& state) {
        state.devices[0].connectors[1].link = {1, 2, 4, 2};
        state.devices[1].upstream = {8, 1, 8, 3};
    };
    EXPECT_THAT(
        after(narrow),
        ElementsAre("the link of TAV1 connector 2 is degraded: it runs x1 of x4 5 GT/s",
                    "the link of TAV2 to the computer is degraded: it runs x8 2.5 of 8 GT/s"));
    EXPECT_THAT(backFrom(narrow),
                ElementsAre("the link of TAV1 connector 2 is restored: it runs x4 5 GT/s"))
        << "nothing is known of the other one";
    const auto narrower = [&](MachineState& state) {
        narrow(state);
        state.devices[0].connectors[1].link.width = 2;
    };
    MachineState before = seenMachine();
    MachineState now = seenMachine();
    narrow(before);
    EXPECT_THAT(differences(before, before), IsEmpty());
    narrower(now);
    EXPECT_THAT(sentences(differences(before, now)),
                ElementsAre("the link of TAV1 connector 2 is degraded: it runs x2 of x4 5 GT/s"));
}

TEST(MonitorDifference, WhatIsPulledWithADegradedLinkRestoresNone) {
    MachineState before = seenMachine();
    before.devices[0].connectors[1].link = {1, 2, 4, 2};
    MachineState now = seenMachine();
    now.devices[0].connectors[1] = {{"2"}, {}, {}};
    now.functions.erase(keyOf(before.devices[0].connectors[1].functions.front()));
    EXPECT_THAT(sentences(differences(before, now)),
                ElementsAre("pulled out of TAV1 connector 2: 04:00.0 8086:10d3"));
}

// As after a change of descriptions: the functions are where they were.
TEST(MonitorDifference, WhatHasOnlyAnotherConnectorIsNeitherPulledNorPlugged) {
    EXPECT_THAT(after([](MachineState& state) {
                    auto& connectors = state.devices[0].connectors;
                    connectors[0].functions.push_back(connectors[1].functions.front());
                    connectors[0].functions.back().place = "00,08,";
                    connectors[1].functions.clear();
                }),
                IsEmpty());
    EXPECT_THAT(after([](MachineState& state) { state.devices[0].connectors.pop_back(); }),
                IsEmpty());
}

TEST(MonitorDifference, LeavingIsToldBeforeComing) {
    EXPECT_THAT(after([](MachineState& state) {
                    state.devices[0].connectors[0].functions.push_back(
                        seenCard("01,", "00,00,20", "0000:03:00.1"));
                    state.functions.erase(keyOf(state.devices[0].connectors[1].functions.front()));
                    state.devices[0].connectors[1].functions.clear();
                    state.devices[1] = {"Card1",      "Card", true, "0000:06:00.0",
                                        "MR00:00,30", {},     {},   {}};
                }),
                ElementsAre("TAV2 (Box) has vanished; it was at 05:00.0",
                            "pulled out of TAV1 connector 2: 04:00.0 8086:10d3",
                            "Card1 (Card) has arrived, at 06:00.0",
                            "plugged into TAV1 connector 1: 03:00.1 8086:10d3"));
}

TEST(MonitorDifference, DevicesWithOneNameAreToldApartByTheirSlots) {
    MachineState before = seenMachine();
    before.devices[1].name = "TAV1";
    MachineState now = before;
    now.devices.erase(now.devices.begin());
    now.functions.clear();
    EXPECT_THAT(sentences(differences(before, now)),
                ElementsAre("TAV1 (Box) has vanished; it was at 01:00.0"));
}

TEST(MonitorDifference, TheStateIsDevicesThenLinksThenAbsentNames) {
    MachineState state = seenMachine();
    state.devices[0].upstream = {1, 1, 4, 1};
    state.absent.push_back({"TAV9", "Box", "MR00:00,40"});
    EXPECT_THAT(
        sentences(initialEvents(state)),
        ElementsAre("TAV1 (Box) is there, at 01:00.0", "TAV2 (Box) is there, at 05:00.0",
                    "the link of TAV1 to the computer is degraded: it runs x1 of x4 2.5 GT/s",
                    "TAV9 (Box) is absent; it stood at MR00:00,40"));
}

} // namespace

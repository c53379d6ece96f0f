// The bus as a tree, with the devices in it.
#include "tavctl/tree/treeText.h"
#include "tests/tavctl/match/treeFixture.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;

const TextStyle kPlain(false);

PciNames namesForTree() {
    return PciNames::parse("8086  Maker\n\t3420  Root Port\n10b5  Switches\n\t8609  Switch\n");
}

std::string treeText(const BusTreeView& view, const TextStyle& style,
                     std::size_t width = kUnbounded) {
    return treeAsText({&view, 1}, namesForTree(), {false, width}, style);
}

std::string numericTreeOf(pcibus::Bus bus) {
    const WholeBus whole = wholeBusOf(std::move(bus));
    const std::vector<PlacedDevice> none;
    const BusTreeView view(whole.main(), none);
    return treeAsText({&view, 1}, PciNames(), {true}, kPlain);
}

TEST(TreeText, MarksDevicesPortsAndMissingOnes) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    const BusTreeView view(fixture.domain(), placed);
    EXPECT_EQ(treeText(view, kPlain),
              "-+-[0000:00]\n"
              " |  +-00.0  Maker Device 29c0\n"
              " |  \\-04.0-[01-05]  x8 5 GT/s  Maker Root Port\n"
              " |     \\-00.0-[02-05]  {TAV1: Box}  Switches Switch\n"
              " |        +-01.0-[03]  {TAV1 port \"A\"}  x4 8 GT/s  Switches Switch\n"
              " |        |  \\-00.0  Device 1172:e001\n"
              " |        +-02.0-[04]  {TAV1 ports \"B1\" \"B2\", empty}  Switches Switch\n"
              " |        +-03.0  {TAV1 port, missing}\n"
              " |        \\-04.0-[05]  {TAV1 port without a label}  Switches Switch\n"
              " \\-[0000:40]\n"
              "    \\-01.0-[41]  Maker Device 3421\n");
}

TEST(TreeText, PartKeepsItsWayToTheRoot) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    BusTreeView view(fixture.domain(), placed);
    view.showOnly({fixture.machine.handle(fixture.portA)});
    EXPECT_EQ(treeText(view, kPlain),
              "-[0000:00]\n"
              " \\-04.0-[01-05]  x8 5 GT/s  Maker Root Port\n"
              "    \\-00.0-[02-05]  {TAV1: Box}  Switches Switch\n"
              "       +-01.0-[03]  {TAV1 port \"A\"}  x4 8 GT/s  Switches Switch\n"
              "       |  \\-00.0  Device 1172:e001\n"
              "       \\-03.0  {TAV1 port, missing}\n");
}

TEST(TreeText, NumericallyHasAllIdentifiersInPlaceOfNames) {
    const TreeFixture fixture;
    const std::vector<PlacedDevice> none;
    BusTreeView view(fixture.domain(), none);
    view.showOnly({fixture.machine.handle(fixture.card)});
    EXPECT_EQ(treeAsText({&view, 1}, namesForTree(), {true}, kPlain),
              "-[0000:00]\n"
              " \\-04.0-[01-05]  x8 5 GT/s  8086:3420 8086:0000\n"
              "    \\-00.0-[02-05]  10b5:8609 0000:0000\n"
              "       \\-01.0-[03]  x4 8 GT/s  10b5:8609 0000:0000\n"
              "          \\-00.0  1172:e001 0001:0002\n");
}

TEST(TreeText, ReportedAddressAnchorAndUpstreamPortAreToldApart) {
    const TreeFixture fixture;
    auto placed = fixture.placed();
    placed[0].reported = fixture.machine.handle(fixture.portD);
    placed[0].anchor = fixture.machine.handle(fixture.card);
    placed[0].upstreamPort = fixture.machine.handle(fixture.root);
    const BusTreeView view(fixture.domain(), placed);
    const std::string text = treeText(view, kPlain);
    EXPECT_NE(text.find("04.0-[01-05]  {TAV1 upstream port}  x8 5 GT/s  Maker"), std::string::npos)
        << text;
    EXPECT_NE(text.find("00.0  {TAV1 anchor}  Device 1172:e001"), std::string::npos) << text;
    EXPECT_NE(text.find("04.0-[05]  {TAV1: Box}  {TAV1 port without"), std::string::npos) << text;
}

TEST(TreeText, ColoursMarksOnDemandOnly) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    const BusTreeView view(fixture.domain(), placed);
    const std::string text = treeText(view, TextStyle(true));
    EXPECT_NE(text.find("\033[1;32m{TAV1: Box}\033[0m"), std::string::npos);
    EXPECT_NE(text.find("\033[1;33m{TAV1 port, missing}\033[0m"), std::string::npos);
}

// Two bridges with one secondary bus: what is below belongs to the lower one; bus 0 is none.
TEST(TreeText, BridgesThatHaveNoBusOfTheirOwnSaySo) {
    TreeFixture fixture;
    fixture.machine.setSecondaryBus(fixture.portB, 3);
    fixture.machine.setSecondaryBus(fixture.portD, 0);
    const pcibus::Bus bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const std::string text = numericTreeOf(bus);
    EXPECT_NE(text.find("+-02.0-[]  "), std::string::npos) << text;
    EXPECT_NE(text.find("\\-04.0-[]  "), std::string::npos) << text;
}

TEST(TreeText, EmptyBusIsAnEmptyTree) {
    const std::vector<PlacedDevice> none;
    const DomainBus empty;
    const BusTreeView view(empty, none);
    EXPECT_EQ(treeText(view, kPlain), "");
    EXPECT_EQ(treeAsJson({&view, 1}, PciNames(), pcibus::LeftOut{.headerOnly = 1}),
              R"({"version":1,"leftOut":{"otherDomains":0,"dead":0,"unreadable":0,"headerOnly":1},)"
              R"("domains":[{"domain":0,"searched":true,"rootBuses":[]}]})"
              "\n");
}

// As many bridges as addresses allow, all functions of 255 buses below one root port: 65,000 lines.
TEST(TreeText, ShowsEveryFunctionOfAFullBus) {
    std::vector<pcibus::PciFunction> functions;
    for (unsigned bus = 0; bus < 255; ++bus) {
        for (unsigned hop = 0; hop < 256; ++hop) {
            pcibus::PciFunction function;
            function.bus = static_cast<std::uint8_t>(bus);
            function.device = static_cast<std::uint8_t>(hop >> 3);
            function.function = static_cast<std::uint8_t>(hop & 7);
            function.headerType = 1;
            function.secondaryBus = static_cast<std::uint8_t>(hop == 0 ? bus + 1 : 0);
            functions.push_back(function);
        }
    }
    const pcibus::Bus bus(std::move(functions), [](const auto&) { return std::string("made"); });
    const std::string text = numericTreeOf(bus);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 255 * 256 + 1);
    EXPECT_NE(text.find("+-00.0-[01-ff]  "), std::string::npos);
}

TEST(TreeJson, HasFunctionsWithTheirMarks) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    BusTreeView view(fixture.domain(), placed);
    view.showOnly({fixture.machine.handle(fixture.portA)});
    const auto json = nlohmann::ordered_json::parse(treeAsJson({&view, 1}, namesForTree(), {}));
    EXPECT_EQ(json.dump(1), R"({
 "version": 1,
 "leftOut": null,
 "domains": [
  {
   "domain": 0,
   "searched": true,
   "rootBuses": [
    {
     "bus": 0,
     "functions": [
      {
       "address": "0000:00:04.0",
       "vendorId": "8086",
       "deviceId": "3420",
       "subsystemVendorId": "8086",
       "subsystemId": "0000",
       "vendorName": "Maker",
       "deviceName": "Root Port",
       "marks": [],
       "bridge": "pci",
       "secondaryBus": 1,
       "subordinateBus": 5,
       "negotiatedWidth": 8,
       "negotiatedSpeed": 2,
       "possibleWidth": 8,
       "possibleSpeed": 2,
       "degraded": false,
       "functions": [
        {
         "address": "0000:01:00.0",
         "vendorId": "10b5",
         "deviceId": "8609",
         "subsystemVendorId": "0000",
         "subsystemId": "0000",
         "vendorName": "Switches",
         "deviceName": "Switch",
         "marks": [
          {
           "role": "device",
           "name": "TAV1",
           "model": "Box",
           "stored": true
          }
         ],
         "bridge": "pci",
         "secondaryBus": 2,
         "subordinateBus": 5,
         "negotiatedWidth": null,
         "negotiatedSpeed": null,
         "possibleWidth": null,
         "possibleSpeed": null,
         "degraded": null,
         "functions": [
          {
           "address": "0000:02:01.0",
           "vendorId": "10b5",
           "deviceId": "8609",
           "subsystemVendorId": "0000",
           "subsystemId": "0000",
           "vendorName": "Switches",
           "deviceName": "Switch",
           "marks": [
            {
             "role": "port",
             "name": "TAV1",
             "labels": [
              "A"
             ],
             "empty": false
            }
           ],
           "bridge": "pci",
           "secondaryBus": 3,
           "subordinateBus": 3,
           "negotiatedWidth": 4,
           "negotiatedSpeed": 3,
           "possibleWidth": 1,
           "possibleSpeed": 1,
           "degraded": false,
           "functions": [
            {
             "address": "0000:03:00.0",
             "vendorId": "1172",
             "deviceId": "e001",
             "subsystemVendorId": "0001",
             "subsystemId": "0002",
             "vendorName": null,
             "deviceName": null,
             "marks": [],
             "bridge": null
            }
           ],
           "missingPorts": []
          }
         ],
         "missingPorts": [
          {
           "name": "TAV1",
           "deviceNumber": 3,
           "functionNumber": 0
          }
         ]
        }
       ],
       "missingPorts": []
      }
     ]
    }
   ]
  }
 ]
})");
}

TEST(TreeJson, TellsAnchorAndUpstreamPortFromTheReportedAddress) {
    const TreeFixture fixture;
    auto placed = fixture.placed();
    placed[0].reported = fixture.machine.handle(fixture.portD);
    placed[0].anchor = fixture.machine.handle(fixture.card);
    placed[0].upstreamPort = fixture.machine.handle(fixture.root);
    const BusTreeView view(fixture.domain(), placed);
    const std::string json = treeAsJson({&view, 1}, namesForTree(), {});
    EXPECT_NE(json.find(R"({"role":"upstreamPort","name":"TAV1"})"), std::string::npos) << json;
    EXPECT_NE(json.find(R"({"role":"anchor","name":"TAV1"})"), std::string::npos) << json;
}

} // namespace

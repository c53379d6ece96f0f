// The listing's two forms.
#include "tavctl/host/deviceListing.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl;

ListedDevice box() {
    ListedDevice device;
    device.model = "Box";
    device.category = kTavCategorySwitchboxTav;
    device.bus = 1;
    device.walkValue = 1;
    device.terminalName = "TAV1";
    device.ports.push_back({"A", 3, {}, {}});
    return device;
}

TEST(ListingAsJson, HasTheDocumentedFormInOneLine) {
    EXPECT_EQ(listingAsJson({box()}, pcibus::LeftOut{.otherDomains = 36}),
              R"({"devices":[{"index":0,"model":"Box","category":12,"bus":1,"device":0,)"
              R"("function":0,"walkValue":1,"linkWidthPerLabel":null,"terminalName":"TAV1",)"
              R"("stored":true,"ports":[{"label":"A","first":3,"second":null,"third":null}]}],)"
              R"("leftOut":{"otherDomains":36,"dead":0,"unreadable":0,"headerOnly":0}})"
              "\n");
}

TEST(Listing, MarksNamesThatAreNotStored) {
    ListedDevice device = box();
    EXPECT_EQ(markedName(device), "TAV1");
    device.isStored = false;
    EXPECT_EQ(markedName(device), "TAV1*");
    EXPECT_NE(listingAsTable({device}, false).find("\nTAV1*  Box"), std::string::npos);
    EXPECT_NE(listingAsJson({device}, {}).find(R"("terminalName":"TAV1","stored":false)"),
              std::string::npos);
}

TEST(ListingAsJson, NoDevicesAreAnEmptyList) {
    EXPECT_EQ(listingAsJson({}, {}), "{\"devices\":[],\"leftOut\":null}\n");
}

TEST(ListingAsJson, BytesThatAreNotUtf8AreReplaced) {
    ListedDevice device = box();
    device.model = "B\xFFx";
    EXPECT_NE(listingAsJson({device}, {}).find("B\xEF\xBF\xBDx"), std::string::npos);
}

ListedDevice wideBox() {
    ListedDevice wide = box();
    wide.terminalName = "Wide10";
    wide.bus = 0x41;
    wide.walkValue.reset();
    wide.category = kTavCategoryPci;
    wide.ports = {{"B1", 0x44, 8, 3}, {"LONG", 0x45, 16, 99}};
    return wide;
}

TEST(ListingAsTable, ShowsNameFirstAndADeviceALine) {
    EXPECT_EQ(listingAsTable({box(), wideBox()}, false),
              "NAME    MODEL  ADDRESS  CATEGORY      PORTS\n"
              "TAV1    Box    01:00.0  SwitchboxTav  A\n"
              "Wide10  Box    41:00.0  PCI           B1,LONG\n");
}

TEST(ListingAsTable, CategoryThatNobodyKnowsIsANumber) {
    ListedDevice other = box();
    other.category = 77;
    EXPECT_EQ(listingAsTable({other}, false), "NAME  MODEL  ADDRESS  CATEGORY     PORTS\n"
                                              "TAV1  Box    01:00.0  category 77  A\n");
}

TEST(ListingAsTable, VerboselyHasALineForThePortsAndTheirValues) {
    EXPECT_EQ(listingAsTable({box(), wideBox()}, true),
              "NAME    MODEL  ADDRESS  CATEGORY      PORTS\n"
              "TAV1    Box    01:00.0  SwitchboxTav  A\n"
              "  upstream  bus 01\n"
              "  port  A  bus 03\n"
              "Wide10  Box    41:00.0  PCI           B1,LONG\n"
              "  port  B1    bus 44  x8  8 GT/s\n"
              "  port  LONG  bus 45  x16  speed code 99\n");
}

TEST(ListingAsTable, DeviceWithoutPortsHasADash) {
    ListedDevice bare = box();
    bare.ports.clear();
    EXPECT_EQ(listingAsTable({bare}, false), "NAME  MODEL  ADDRESS  CATEGORY      PORTS\n"
                                             "TAV1  Box    01:00.0  SwitchboxTav  -\n");
}

TEST(ListingAsTable, CutsLabelsThenModelThenNameToEightyColumns) {
    ListedDevice longOne = box();
    longOne.model = std::string(60, 'm');
    longOne.ports.push_back({std::string(60, 'l'), 4, {}, {}});
    EXPECT_EQ(listingAsTable({longOne}, false),
              "NAME  MODEL                                      ADDRESS  CATEGORY      PORTS\n"
              "TAV1  mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm...  01:00.0  SwitchboxTav  A,lll...\n");
    longOne.terminalName = std::string(255, 'n');
    EXPECT_EQ(listingAsTable({longOne}, false),
              "NAME                                   MODEL     ADDRESS  CATEGORY      PORTS\n"
              "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...  mmmmm...  01:00.0  SwitchboxTav  A,lll...\n");
    EXPECT_NE(listingAsTable({longOne}, true).find(longOne.terminalName), std::string::npos);
}

TEST(ListingAsTable, ColumnsCountCharactersNotBytes) {
    ListedDevice umlaut = box();
    umlaut.model = "B\xC3\xB6xes";
    umlaut.ports.clear();
    ListedDevice plain = umlaut;
    plain.model = "Boxes";
    const std::string table = listingAsTable({umlaut, plain}, false);
    EXPECT_NE(table.find("B\xC3\xB6xes  01:00.0"), std::string::npos) << table;
    EXPECT_NE(table.find("Boxes  01:00.0"), std::string::npos) << table;
}

} // namespace

// How the values of a description file are written: categories, numbers of both kinds, lists and
// texts, and which writings are refused.
#include "source/descriptionLoader.h"
#include "tests/source/support/descriptionFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DescriptionText;
using testsupport::fullDescription;
using testsupport::raisedBy;
using testsupport::smallestDescription;

using DescriptionValues = testsupport::DescriptionFixture;

DescriptionText withModelKey(const std::string& key, const std::string& value) {
    return smallestDescription().set("UpstreamTAV", key, value);
}

// The operation by which a key is read.
std::string read(std::string kind, const std::string& section, const std::string& key) {
    return kind.append(" ").append(section).append(".").append(key);
}

TEST_F(DescriptionValues, TheThreeCategoriesHaveTheirNumbers) {
    const std::vector<std::pair<std::string, std::uint32_t>> categories = {
        {"PCI", 10}, {"Expresscard", 11}, {"SwitchboxTav", 12}};
    for (const auto& [text, number] : categories) {
        EXPECT_EQ(static_cast<std::uint32_t>(deviceCategoryFromText(text)), number);
        const auto category = load(withModelKey("DeviceCategory", text)).deviceCategory;
        EXPECT_EQ(static_cast<std::uint32_t>(category), number);
        const auto quoted = load(withModelKey("DeviceCategory", "\"" + text + "\"")).deviceCategory;
        EXPECT_EQ(static_cast<std::uint32_t>(quoted), number);
    }
}

TEST_F(DescriptionValues, AnyOtherCategoryIsASoftwareFault) {
    for (const char* text : {"pci", "\"PCI \"", "\" PCI\"", "\"\"", "PCIe", "PC", "10",
                             "expresscard", "ExpressCard", "SwitchBoxTav", "Switchbox"}) {
        const Failure failure = failureOf(withModelKey("DeviceCategory", text));
        EXPECT_EQ(failure.loaderCode(), -388801) << text;
        EXPECT_EQ(failure.lastOperation, "string UpstreamTAV.DeviceCategory");
    }
    EXPECT_EQ(raisedBy([] { deviceCategoryFromText("PCI "); }).code, -388801);
    EXPECT_EQ(raisedBy([] { deviceCategoryFromText(std::string("PCI\0", 4)); }).code, -388801);
}

TEST_F(DescriptionValues, BlanksAroundAnUnquotedValueAreNoPartOfIt) {
    EXPECT_EQ(load(withModelKey("DeviceCategory", " PCI \t")).deviceCategory, eDeviceCategory::Pci);
    EXPECT_EQ(load(withModelKey("Model", "  Two words ")).model, "Two words");
    EXPECT_EQ(load(withModelKey("Model", "\" Two words \"")).model, " Two words ");
}

TEST_F(DescriptionValues, TextsAreTakenAsTheyStand) {
    EXPECT_EQ(load(withModelKey("Model", "\"\"")).model, "");
    EXPECT_EQ(load(withModelKey("Model", "a\\tb, %d; [c]=\xC3\xA4")).model,
              "a\\tb, %d; [c]=\xC3\xA4");
    EXPECT_EQ(load(withModelKey("TerminalNameBase", "\"\"")).terminalNameBase, "");
    EXPECT_EQ(load(withModelKey("TerminalNameBase", "%n")).terminalNameBase, "%n");
}

TEST_F(DescriptionValues, AnUnquotedEmptyValueIsAMissingKey) {
    for (const char* key :
         {"Model", "DeviceCategory", "InternalBridges", "ConnectorLabels", "DownstreamPorts"})
        EXPECT_EQ(failureOf(withModelKey(key, "")).iniCode(), -313322) << key;
    EXPECT_EQ(failureOf(withModelKey("HasUpstreamPort", "")).loaderCode(), -388801);
    EXPECT_EQ(load(withModelKey("TerminalNameBase", "")).terminalNameBase, "TAV");
    EXPECT_EQ(load(withModelKey("LinkWidthPerLabel", "")).linkWidthPerLabel, 0);
}

TEST_F(DescriptionValues, TheTraversalMapIsKeptUnparsed) {
    for (const char* map : {"d1f0,-", "not a map", "_", "d99f99,,", "d1f0, d2f0"}) {
        const tModelDescription model =
            load(fullDescription().set("UpstreamPort", "TraversalMapFromAnchor", map));
        EXPECT_EQ(model.upstreamPort.traversalMap, map);
    }
    EXPECT_EQ(load(fullDescription().set("UpstreamPort", "TraversalMapFromAnchor", "\"\""))
                  .upstreamPort.traversalMap,
              "");
}

TEST_F(DescriptionValues, IdentifiersAreHexadecimalWithOrWithoutThePrefix) {
    const std::vector<std::pair<std::string, std::uint16_t>> numbers = {
        {"10", 0x10},          {"0x10", 0x10},  {"0X1f", 0x1F},
        {"aBc", 0xABC},        {"0", 0},        {"ffff", 0xFFFF},
        {"\" 7\"", 7},         {"12 34", 0x12}, {"12g", 0x12},
        {"12345678", 0x5678},  {"0x10000", 0},  {"FFFFFFFF", 0xFFFF},
        {"1FFFF0000", 0xFFFF}, // beyond 32 bits: the greatest number there is
        {"-1", 0xFFFF},
    };
    for (const auto& [text, number] : numbers) {
        for (const char* key : {"Vid", "Pid", "SsVid", "SsPid"}) {
            const tPciIds ids = load(smallestDescription().set("Anchor", key, text)).anchors[0].ids;
            const std::string name = key;
            EXPECT_EQ(ids.vendor, name == "Vid" ? number : 1) << text;
            EXPECT_EQ(ids.device, name == "Pid" ? number : 2) << text;
            EXPECT_EQ(ids.subsystemVendor, name == "SsVid" ? number : 3) << text;
            EXPECT_EQ(ids.subsystem, name == "SsPid" ? number : 4) << text;
        }
    }
}

TEST_F(DescriptionValues, TheHeaderTypeKeepsItsThirtyTwoBits) {
    const std::vector<std::pair<std::string, std::uint32_t>> numbers = {{"0", 0},
                                                                        {"1", 1},
                                                                        {"10", 0x10},
                                                                        {"0x81", 0x81},
                                                                        {"12345678", 0x12345678},
                                                                        {"FFFFFFFF", 0xFFFFFFFF},
                                                                        {"100000000", 0xFFFFFFFF}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(
            load(smallestDescription().set("Anchor", "PciHeaderType", text)).anchors[0].headerType,
            number)
            << text;
}

TEST_F(DescriptionValues, WhatIsNoHexadecimalNumberEndsTheLoad) {
    const std::vector<std::pair<std::string, std::string>> places = {
        {"Anchor", "PciHeaderType"},
        {"Anchor", "Vid"},
        {"Anchor", "Pid"},
        {"Anchor", "SsVid"},
        {"Anchor", "SsPid"},
        {"AlternateAnchor2", "PciHeaderType"},
        {"AlternateAnchor2", "SsPid"},
        {"InternalBridgeFirst", "Vid"},
        {"InternalBridgeSecond", "Pid"},
        {"UpstreamPort", "SsVid"},
    };
    for (const auto& [section, key] : places) {
        for (const char* text : {"x", "0x", "0xg", "g1", "\"\"", "\" \"", "- 1", "#10"}) {
            const Failure failure = failureOf(fullDescription().set(section, key, text));
            EXPECT_EQ(failure.iniCode(), -313323) << section << "." << key << "=" << text;
            EXPECT_EQ(failure.lastOperation, read("hexadecimal", section, key));
        }
    }
}

TEST_F(DescriptionValues, DecimalNumbersMayHaveASignAndBlanks) {
    const std::vector<std::pair<std::string, std::int32_t>> numbers = {
        {"0", 0},
        {"4", 4},
        {"-4", -4},
        {"+4", 4},
        {"010", 10},
        {"\" 16 \"", 16},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(load(withModelKey("LinkWidthPerLabel", text)).linkWidthPerLabel, number) << text;
}

// Every key that is read as a decimal number.
const std::vector<std::pair<std::string, std::string>> kDecimalPlaces = {
    {"UpstreamTAV", "LinkWidthPerLabel"},
    {"UpstreamTAV", "HasUpstreamPort"},
    {"InternalBridgeFirst", "ReportAddressFromThisBridge"},
    {"InternalBridgeFirst", "IsOptional"},
    {"DownstreamPort1", "ReportAddressFromThisBridge"},
    {"DownstreamPort1", "IsOptional"},
    {"UpstreamPort", "ReportAddressFromThisBridge"},
    {"UpstreamPort", "IsOptional"},
};

TEST_F(DescriptionValues, WhatIsNoDecimalNumberEndsTheLoad) {
    for (const auto& [section, key] : kDecimalPlaces) {
        for (const char* text :
             {"x", "1.5", "1 2", "4x", "0x10", "--1", "+-1", "- 1", "1-", "true", "yes", "-",
              "2147483648", "-2147483649", "4294967295", "99999999999999999999"}) {
            const Failure failure = failureOf(fullDescription().set(section, key, text));
            EXPECT_EQ(failure.iniCode(), -313320) << section << "." << key << "=" << text;
            EXPECT_EQ(failure.lastOperation, read("decimal", section, key));
        }
    }
}

TEST_F(DescriptionValues, AQuotedEmptyOrBlankDecimalNumberIsAMissingKey) {
    for (const auto& [section, key] : kDecimalPlaces) {
        for (const char* text : {"\"\"", "\"  \""}) {
            const Failure failure = failureOf(fullDescription().set(section, key, text));
            EXPECT_EQ(failure.iniCode(), -313322) << section << "." << key << "=" << text;
            EXPECT_EQ(failure.lastOperation, read("decimal", section, key));
        }
    }
}

TEST_F(DescriptionValues, AnyNumberButZeroIsTrue) {
    const std::vector<std::pair<std::string, bool>> values = {
        {"0", false}, {"00", false}, {"-0", false}, {"1", true}, {"2", true}, {"-1", true}};
    for (const auto& [text, truth] : values) {
        const tModelDescription upstream =
            load(fullDescription().set("UpstreamTAV", "HasUpstreamPort", text));
        EXPECT_EQ(upstream.upstreamPort.traversalMap, truth ? "-" : "_") << text;
        const tModelDescription model =
            load(fullDescription()
                     .set("InternalBridgeFirst", "IsOptional", text)
                     .set("DownstreamPort1", "ReportAddressFromThisBridge", text)
                     .set("UpstreamPort", "ReportAddressFromThisBridge", text));
        EXPECT_EQ(model.internalBridges[0].isOptional, truth) << text;
        EXPECT_EQ(model.downstreamPorts[0].reportAddressFromThisBridge, truth) << text;
        EXPECT_EQ(model.upstreamPort.reportAddressFromThisBridge, truth) << text;
    }
}

TEST_F(DescriptionValues, ListsAreSplitAtCommasAndNothingElse) {
    const auto labels = [&](const std::string& text) {
        return load(withModelKey("ConnectorLabels", text)).connectorLabels;
    };
    EXPECT_THAT(labels("A"), ElementsAre("A"));
    EXPECT_THAT(labels("B,A,B"), ElementsAre("B", "A", "B"));
    EXPECT_THAT(labels("A, B ,C"), ElementsAre("A", " B ", "C"));
    EXPECT_THAT(labels("A,,B"), ElementsAre("A", "", "B"));
    EXPECT_THAT(labels("A,B,"), ElementsAre("A", "B"));
    EXPECT_THAT(labels(","), ElementsAre(""));
    EXPECT_THAT(labels(",A"), ElementsAre("", "A"));
    EXPECT_THAT(labels("\"\""), IsEmpty());
    EXPECT_THAT(labels("A;B"), ElementsAre("A;B"));
}

TEST_F(DescriptionValues, AnItemOfAListNamesItsSectionToTheLetter) {
    DescriptionText text = smallestDescription();
    text.set("UpstreamTAV", "DownstreamPorts", "1, 2,,1")
        .set("DownstreamPort1", "IDsSameAs", "Anchor")
        .set("DownstreamPort1", "TraversalMapFromAnchor", "d1f0")
        .set("DownstreamPort 2", "IDsSameAs", "Anchor")
        .set("DownstreamPort 2", "TraversalMapFromAnchor", "d2f0")
        .set("DownstreamPort", "IDsSameAs", "Anchor")
        .set("DownstreamPort", "TraversalMapFromAnchor", "d3f0");
    const tModelDescription model = load(text);
    std::vector<std::string> maps;
    for (const tBridgeDescription& port : model.downstreamPorts)
        maps.push_back(port.traversalMap);
    EXPECT_THAT(maps, ElementsAre("d1f0", "d2f0", "d3f0", "d1f0"));
    text.removeSection("DownstreamPort 2")
        .set("DownstreamPort2", "IDsSameAs", "Anchor")
        .set("DownstreamPort2", "TraversalMapFromAnchor", "d2f0");
    const Failure failure = failureOf(text);
    EXPECT_EQ(failure.iniCode(), -313317);
    EXPECT_EQ(failure.lastOperation, "hexadecimal DownstreamPort 2.Vid");
}

} // namespace

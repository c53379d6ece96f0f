// What a description file becomes, the order in which it is read, and how each failure ends the
// load.
#include "source/descriptionLoader.h"

#include "tests/source/support/descriptionFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DescriptionText;
using testsupport::fullDescription;
using testsupport::RecordingIniFile;
using testsupport::smallestDescription;

using DescriptionLoading = testsupport::DescriptionFixture;

constexpr tPciIds kAnchorIds{0x1A01, 0x1A02, 0x1A03, 0x1A04};
constexpr tPciIds kAlternateIds{0x2A01, 0x2A02, 0x2A03, 0x2A04};
constexpr tPciIds kFirstIds{0x1B01, 0x1B02, 0x1B03, 0x1B04};
constexpr tPciIds kSecondIds{0x2B01, 0x2B02, 0x2B03, 0x2B04};
constexpr tPciIds kUpstreamIds{0x1C01, 0x1C02, 0x1C03, 0x1C04};

// One without an alternate anchor.
DescriptionText withoutAlternate() {
    return fullDescription().remove("Anchor", "AlternateAnchors").removeSection("AlternateAnchor2");
}

TEST_F(DescriptionLoading, EveryFieldComesFromItsKey) {
    const tModelDescription model = load(withoutAlternate());
    EXPECT_EQ(model.model, "Model 1");
    EXPECT_EQ(model.deviceCategory, eDeviceCategory::SwitchboxTav);
    EXPECT_THAT(model.anchors, ElementsAre(tAnchorIdentity{1, kAnchorIds}));
    EXPECT_THAT(model.connectorLabels, ElementsAre("A", "B"));
    EXPECT_EQ(model.linkWidthPerLabel, 4);
    EXPECT_EQ(model.upstreamPort, (tBridgeDescription{"-", kUpstreamIds, true, false}));
    EXPECT_THAT(model.downstreamPorts,
                ElementsAre(tBridgeDescription{"d1f0,d2f0", kAnchorIds, false, true}));
    EXPECT_THAT(model.internalBridges,
                ElementsAre(tBridgeDescription{"", kFirstIds, false, false},
                            tBridgeDescription{"d1f0", kSecondIds, true, true}));
    EXPECT_EQ(model.terminalNameBase, "BOX");
}

TEST_F(DescriptionLoading, FieldsStandInTheirOrder) {
    const auto [model, category, anchors, labels, width, upstream, downstream, internal, base] =
        load(withoutAlternate());
    EXPECT_EQ(model, "Model 1");
    EXPECT_EQ(static_cast<std::uint32_t>(category), 12U);
    EXPECT_EQ(anchors.size(), 1U);
    EXPECT_EQ(labels.size(), 2U);
    EXPECT_EQ(width, 4);
    const auto& [map, ids, reportAddress, optional] = upstream;
    EXPECT_EQ(map, "-");
    const auto [vendor, device, subsystemVendor, subsystem] = ids;
    EXPECT_EQ(vendor, 0x1C01);
    EXPECT_EQ(device, 0x1C02);
    EXPECT_EQ(subsystemVendor, 0x1C03);
    EXPECT_EQ(subsystem, 0x1C04);
    EXPECT_TRUE(reportAddress);
    EXPECT_FALSE(optional);
    EXPECT_EQ(downstream.size(), 1U);
    EXPECT_EQ(internal.size(), 2U);
    EXPECT_EQ(base, "BOX");
}

TEST_F(DescriptionLoading, WhatIsOptionalHasItsDefault) {
    const tModelDescription model = load(smallestDescription());
    EXPECT_EQ(model.linkWidthPerLabel, 0);
    EXPECT_EQ(model.terminalNameBase, "TAV");
    EXPECT_EQ(model.anchors.size(), 1U);
    EXPECT_THAT(model.connectorLabels, IsEmpty());
    EXPECT_THAT(model.internalBridges, IsEmpty());
    EXPECT_THAT(model.downstreamPorts, IsEmpty());
    EXPECT_EQ(model.upstreamPort, (tBridgeDescription{"_", {0, 0, 0, 0}, false, false}));
}

// The operations by which the identifiers of a section are read.
std::vector<std::string> idReads(const std::string& section) {
    return {"hexadecimal " + section + ".Vid", "hexadecimal " + section + ".Pid",
            "hexadecimal " + section + ".SsVid", "hexadecimal " + section + ".SsPid"};
}

// The operations by which the full description is read.
std::vector<std::string> fullReads() {
    std::vector<std::string> all;
    const auto add = [&](const std::vector<std::string>& some) {
        all.insert(all.end(), some.begin(), some.end());
    };
    const auto addOwnIds = [&](const std::string& section) {
        add({"has " + section + ".IDsSameAs"});
        add(idReads(section));
    };
    add({"open 0", "string UpstreamTAV.Model", "string UpstreamTAV.DeviceCategory",
         "list UpstreamTAV.InternalBridges", "list UpstreamTAV.ConnectorLabels",
         "has UpstreamTAV.LinkWidthPerLabel", "decimal UpstreamTAV.LinkWidthPerLabel",
         "list UpstreamTAV.DownstreamPorts", "has UpstreamTAV.HasUpstreamPort",
         "decimal UpstreamTAV.HasUpstreamPort", "has Anchor.AlternateAnchors",
         "list Anchor.AlternateAnchors", "hexadecimal Anchor.PciHeaderType"});
    addOwnIds("Anchor");
    add({"hexadecimal AlternateAnchor2.PciHeaderType"});
    addOwnIds("AlternateAnchor2");
    for (int pass = 0; pass < 2; ++pass) {
        addOwnIds("InternalBridgeFirst");
        add({"string InternalBridgeFirst.TraversalMapFromAnchor",
             "has InternalBridgeFirst.ReportAddressFromThisBridge",
             "has InternalBridgeFirst.IsOptional"});
        addOwnIds("InternalBridgeSecond");
        add({"string InternalBridgeSecond.TraversalMapFromAnchor",
             "has InternalBridgeSecond.ReportAddressFromThisBridge",
             "decimal InternalBridgeSecond.ReportAddressFromThisBridge",
             "has InternalBridgeSecond.IsOptional", "decimal InternalBridgeSecond.IsOptional"});
    }
    for (int pass = 0; pass < 2; ++pass) {
        add({"has DownstreamPort1.IDsSameAs", "string DownstreamPort1.IDsSameAs"});
        add(idReads("Anchor"));
        add({"string DownstreamPort1.TraversalMapFromAnchor",
             "has DownstreamPort1.ReportAddressFromThisBridge", "has DownstreamPort1.IsOptional",
             "decimal DownstreamPort1.IsOptional"});
    }
    addOwnIds("UpstreamPort");
    add({"string UpstreamPort.TraversalMapFromAnchor",
         "has UpstreamPort.ReportAddressFromThisBridge",
         "decimal UpstreamPort.ReportAddressFromThisBridge", "has UpstreamPort.IsOptional",
         "has UpstreamTAV.TerminalNameBase", "string UpstreamTAV.TerminalNameBase"});
    return all;
}

TEST_F(DescriptionLoading, KeysAreReadInAFixedOrder) {
    RecordingIniFile file;
    (void)DescriptionLoader(file).load(write(fullDescription().text()));
    EXPECT_EQ(file.operations(), fullReads());
}

TEST_F(DescriptionLoading, AnyReadThatFailsEndsTheLoadWithItsStatus) {
    const std::string path = write(fullDescription().text());
    const std::size_t reads = fullReads().size();
    EXPECT_EQ(reads, 91U);
    for (std::size_t nth = 1; nth <= reads; ++nth) {
        RecordingIniFile file;
        const auto code = -1000 - static_cast<std::int32_t>(nth);
        file.failAt(nth, code);
        const testsupport::Raised raised =
            testsupport::raisedBy([&] { (void)DescriptionLoader(file).load(path); });
        EXPECT_EQ(raised.code, code);
        EXPECT_EQ(raised.record, (nlohmann::json{{"file", RecordingIniFile::kFailingFile},
                                                 {"line", 7},
                                                 {"component", "zotavpci"}}));
        EXPECT_EQ(file.operations().size(), nth);
    }
}

TEST_F(DescriptionLoading, AWarningOfAReadDoesNotEndTheLoad) {
    const std::string path = write(fullDescription().text());
    for (std::size_t nth = 1; nth <= fullReads().size(); ++nth) {
        RecordingIniFile file;
        file.failAt(nth, 5);
        EXPECT_EQ(DescriptionLoader(file).load(path).terminalNameBase, "BOX");
    }
}

struct Place {
    const char* section;
    const char* key;
};

TEST_F(DescriptionLoading, EachRequiredKeyThatIsMissingEndsTheLoad) {
    const std::vector<Place> required = {
        {"UpstreamTAV", "Model"},
        {"UpstreamTAV", "DeviceCategory"},
        {"UpstreamTAV", "InternalBridges"},
        {"UpstreamTAV", "ConnectorLabels"},
        {"UpstreamTAV", "DownstreamPorts"},
        {"Anchor", "PciHeaderType"},
        {"Anchor", "Vid"},
        {"Anchor", "Pid"},
        {"Anchor", "SsVid"},
        {"Anchor", "SsPid"},
        {"AlternateAnchor2", "PciHeaderType"},
        {"AlternateAnchor2", "Vid"},
        {"AlternateAnchor2", "Pid"},
        {"AlternateAnchor2", "SsVid"},
        {"AlternateAnchor2", "SsPid"},
        {"InternalBridgeFirst", "Vid"},
        {"InternalBridgeFirst", "Pid"},
        {"InternalBridgeFirst", "SsVid"},
        {"InternalBridgeFirst", "SsPid"},
        {"InternalBridgeFirst", "TraversalMapFromAnchor"},
        {"InternalBridgeSecond", "Vid"},
        {"InternalBridgeSecond", "Pid"},
        {"InternalBridgeSecond", "SsVid"},
        {"InternalBridgeSecond", "SsPid"},
        {"InternalBridgeSecond", "TraversalMapFromAnchor"},
        {"DownstreamPort1", "TraversalMapFromAnchor"},
        {"UpstreamPort", "Vid"},
        {"UpstreamPort", "Pid"},
        {"UpstreamPort", "SsVid"},
        {"UpstreamPort", "SsPid"},
        {"UpstreamPort", "TraversalMapFromAnchor"},
    };
    for (const auto& [section, key] : required) {
        const Failure failure = failureOf(fullDescription().remove(section, key));
        EXPECT_EQ(failure.iniCode(), -313322) << section << "." << key;
        EXPECT_THAT(failure.lastOperation,
                    testing::EndsWith(std::string(" ") + section + "." + key));
    }
}

TEST_F(DescriptionLoading, EachOptionalKeyMayBeMissing) {
    const std::vector<Place> optional = {
        {"UpstreamTAV", "LinkWidthPerLabel"},
        {"UpstreamTAV", "TerminalNameBase"},
        {"Anchor", "AlternateAnchors"},
        {"InternalBridgeSecond", "ReportAddressFromThisBridge"},
        {"InternalBridgeSecond", "IsOptional"},
        {"DownstreamPort1", "IsOptional"},
        {"UpstreamPort", "ReportAddressFromThisBridge"},
    };
    for (const auto& [section, key] : optional)
        EXPECT_NO_THROW((void)load(fullDescription().remove(section, key)))
            << section << "." << key;
    EXPECT_NO_THROW((void)load(fullDescription()
                                   .remove("DownstreamPort1", "IDsSameAs")
                                   .setIds("DownstreamPort1", "1", "2", "3", "4")));
}

TEST_F(DescriptionLoading, OfSeveralMissingKeysTheFirstInTheOrderOfReadingCounts) {
    // Taken away from the last to the first, so that each is the first one missing in its turn.
    DescriptionText text = smallestDescription();
    const std::vector<Place> order = {
        {"UpstreamTAV", "Model"},
        {"UpstreamTAV", "DeviceCategory"},
        {"UpstreamTAV", "InternalBridges"},
        {"UpstreamTAV", "ConnectorLabels"},
        {"UpstreamTAV", "DownstreamPorts"},
        {"UpstreamTAV", "HasUpstreamPort"},
        {"Anchor", "PciHeaderType"},
        {"Anchor", "Vid"},
        {"Anchor", "Pid"},
        {"Anchor", "SsVid"},
        {"Anchor", "SsPid"},
    };
    // Sections stay when all their keys are gone.
    text.set("UpstreamTAV", "Other", "1").set("Anchor", "Other", "1");
    for (auto place = order.rbegin(); place != order.rend(); ++place) {
        text.remove(place->section, place->key);
        EXPECT_THAT(failureOf(text).lastOperation,
                    testing::EndsWith(std::string(" ") + place->section + "." + place->key));
    }
}

TEST_F(DescriptionLoading, AMissingHasUpstreamPortIsASoftwareFault) {
    const Failure failure = failureOf(fullDescription().remove("UpstreamTAV", "HasUpstreamPort"));
    EXPECT_EQ(failure.loaderCode(), -388801);
    EXPECT_EQ(failure.lastOperation, "has UpstreamTAV.HasUpstreamPort");
}

TEST_F(DescriptionLoading, EachListedSectionThatIsMissingEndsTheLoad) {
    const std::vector<Place> sections = {
        {"UpstreamTAV", "string UpstreamTAV.Model"},
        {"Anchor", "hexadecimal Anchor.PciHeaderType"},
        {"AlternateAnchor2", "hexadecimal AlternateAnchor2.PciHeaderType"},
        {"InternalBridgeFirst", "hexadecimal InternalBridgeFirst.Vid"},
        {"InternalBridgeSecond", "hexadecimal InternalBridgeSecond.Vid"},
        {"DownstreamPort1", "hexadecimal DownstreamPort1.Vid"},
        {"UpstreamPort", "hexadecimal UpstreamPort.Vid"},
    };
    for (const auto& [section, lastOperation] : sections) {
        const Failure failure = failureOf(fullDescription().removeSection(section));
        EXPECT_EQ(failure.iniCode(), -313317) << section;
        EXPECT_EQ(failure.lastOperation, lastOperation);
    }
}

TEST_F(DescriptionLoading, AFileThatCannotBeReadEndsTheLoad) {
    EXPECT_EQ(failureOfFile(folder_.path().string() + "/missing.ini").iniCode(), -313316);
    EXPECT_EQ(failureOfFile(folder_.path().string()).iniCode(), -313316);
    EXPECT_EQ(failureOf(std::string("\xFF\xFE[\0", 4)).iniCode(), -313316);
    EXPECT_EQ(failureOfFile("").iniCode(), -313315);
}

TEST_F(DescriptionLoading, AnEmptyFileHasNoModel) {
    EXPECT_EQ(failureOf("").iniCode(), -313317);
}

TEST_F(DescriptionLoading, OtherKeysAndSectionsAreIgnored) {
    DescriptionText text = withoutAlternate();
    text.set("UpstreamTAV", "Colour", "blue")
        .set("InternalBridgeThird", "Vid", "no number")
        .set("AlternateAnchor2", "PciHeaderType", "no number");
    const tModelDescription model = load(text);
    EXPECT_EQ(model.internalBridges.size(), 2U);
    EXPECT_EQ(model.anchors.size(), 1U);
}

TEST_F(DescriptionLoading, SectionAndKeyNamesAreReadToTheLetter) {
    EXPECT_EQ(
        failureOf(
            smallestDescription().remove("UpstreamTAV", "Model").set("UpstreamTAV", "MODEL", "x"))
            .iniCode(),
        -313322);
    EXPECT_EQ(failureOf(smallestDescription()
                            .removeSection("Anchor")
                            .set("ANCHOR", "PciHeaderType", "1")
                            .setIds("ANCHOR", "1", "2", "3", "4"))
                  .iniCode(),
              -313317);
    const tModelDescription model = load(smallestDescription()
                                             .set("UpstreamTAV", "terminalnamebase", "x")
                                             .set("UpstreamTAV", "LINKWIDTHPERLABEL", "4"));
    EXPECT_EQ(model.terminalNameBase, "TAV");
    EXPECT_EQ(model.linkWidthPerLabel, 0);
}

TEST_F(DescriptionLoading, WithoutAnUpstreamPortItsSectionIsNotRead) {
    DescriptionText text = fullDescription();
    text.set("UpstreamTAV", "HasUpstreamPort", "0").set("UpstreamPort", "Vid", "no number");
    EXPECT_EQ(load(text).upstreamPort.traversalMap, "_");
    RecordingIniFile file;
    (void)DescriptionLoader(file).load(write(text.text()));
    for (const std::string& operation : file.operations())
        EXPECT_THAT(operation, testing::Not(testing::HasSubstr("UpstreamPort."))) << operation;
    EXPECT_EQ(load(text.removeSection("UpstreamPort")).upstreamPort.traversalMap, "_");
}

TEST_F(DescriptionLoading, AlternateAnchorsFollowThePrimaryOneInListOrder) {
    const tModelDescription model = load(smallestDescription()
                                             .set("Anchor", "AlternateAnchors", "Z,2")
                                             .set("AlternateAnchor2", "PciHeaderType", "0")
                                             .setIds("AlternateAnchor2", "21", "22", "23", "24")
                                             .set("AlternateAnchorZ", "PciHeaderType", "1")
                                             .set("AlternateAnchorZ", "IDsSameAs", "Anchor"));
    EXPECT_THAT(model.anchors,
                ElementsAre(tAnchorIdentity{1, {1, 2, 3, 4}}, tAnchorIdentity{1, {1, 2, 3, 4}},
                            tAnchorIdentity{0, {0x21, 0x22, 0x23, 0x24}}));
}

TEST_F(DescriptionLoading, WithAlternateAnchorsTheBridgesStandOncePerAnchorWithItsIdentifiers) {
    const tPciIds third{0x3A01, 0x3A02, 0x3A03, 0x3A04};
    const tModelDescription model =
        load(fullDescription()
                 .set("Anchor", "AlternateAnchors", "2,3")
                 .set("AlternateAnchor3", "PciHeaderType", "1")
                 .setIds("AlternateAnchor3", "3A01", "3A02", "3A03", "3A04"));
    EXPECT_EQ(model.anchors.size(), 3U);
    std::vector<tBridgeDescription> internalBridges;
    std::vector<tBridgeDescription> downstreamPorts;
    for (const tPciIds& ids : {kAnchorIds, kAlternateIds, third}) {
        internalBridges.push_back({"", ids, false, false});
        internalBridges.push_back({"d1f0", ids, true, true});
        downstreamPorts.push_back({"d1f0,d2f0", ids, false, true});
    }
    EXPECT_EQ(model.internalBridges, internalBridges);
    EXPECT_EQ(model.internalBridges.size(), 6U);
    EXPECT_EQ(model.downstreamPorts, downstreamPorts);
    // There is one upstream port, and it keeps its own.
    EXPECT_EQ(model.upstreamPort.ids, kUpstreamIds);
}

TEST_F(DescriptionLoading, OneAlternateAnchorIsEnoughForThat) {
    const tModelDescription model = load(fullDescription());
    EXPECT_THAT(model.internalBridges,
                ElementsAre(tBridgeDescription{"", kAnchorIds, false, false},
                            tBridgeDescription{"d1f0", kAnchorIds, true, true},
                            tBridgeDescription{"", kAlternateIds, false, false},
                            tBridgeDescription{"d1f0", kAlternateIds, true, true}));
    EXPECT_THAT(model.downstreamPorts,
                ElementsAre(tBridgeDescription{"d1f0,d2f0", kAnchorIds, false, true},
                            tBridgeDescription{"d1f0,d2f0", kAlternateIds, false, true}));
}

TEST_F(DescriptionLoading, AnEmptyListOfAlternateAnchorsLeavesTheIdentifiersOfTheBridges) {
    const tModelDescription model =
        load(withoutAlternate().set("Anchor", "AlternateAnchors", "\"\""));
    EXPECT_EQ(model.anchors.size(), 1U);
    EXPECT_EQ(model.internalBridges.at(0).ids, kFirstIds);
    EXPECT_EQ(model.internalBridges.at(1).ids, kSecondIds);
}

TEST_F(DescriptionLoading, IdentifiersMayComeFromAnyOtherSection) {
    DescriptionText text = fullDescription();
    text.setIds("Elsewhere", "91", "92", "93", "94");
    // The section's own identifiers are then not even looked at.
    for (const char* section : {"Anchor", "AlternateAnchor2", "InternalBridgeFirst",
                                "InternalBridgeSecond", "UpstreamPort"})
        text.set(section, "IDsSameAs", "Elsewhere")
            .set(section, "Vid", "no number")
            .remove(section, "SsPid");
    text.set("DownstreamPort1", "IDsSameAs", "Elsewhere");
    const tModelDescription model = load(text);
    const tPciIds ids{0x91, 0x92, 0x93, 0x94};
    EXPECT_THAT(model.anchors, ElementsAre(tAnchorIdentity{1, ids}, tAnchorIdentity{0, ids}));
    for (const tBridgeDescription& bridge : model.internalBridges)
        EXPECT_EQ(bridge.ids, ids);
    for (const tBridgeDescription& port : model.downstreamPorts)
        EXPECT_EQ(port.ids, ids);
    EXPECT_EQ(model.upstreamPort.ids, ids);
}

TEST_F(DescriptionLoading, ABridgeMayTakeTheIdentifiersOfTheAnchor) {
    const tModelDescription model =
        load(withoutAlternate().set("InternalBridgeFirst", "IDsSameAs", "Anchor"));
    EXPECT_EQ(model.internalBridges.at(0).ids, kAnchorIds);
    EXPECT_EQ(model.internalBridges.at(1).ids, kSecondIds);
}

TEST_F(DescriptionLoading, IdentifiersAreTakenOverOneLevelDeep) {
    DescriptionText text = withoutAlternate();
    text.set("InternalBridgeFirst", "IDsSameAs", "InternalBridgeSecond")
        .set("InternalBridgeSecond", "IDsSameAs", "Anchor");
    const tModelDescription model = load(text);
    EXPECT_EQ(model.internalBridges.at(0).ids, kSecondIds);
    EXPECT_EQ(model.internalBridges.at(1).ids, kAnchorIds);
    // Without identifiers of its own the section that is named is of no use.
    text.remove("InternalBridgeSecond", "Vid");
    const Failure failure = failureOf(text);
    EXPECT_EQ(failure.iniCode(), -313322);
    EXPECT_EQ(failure.lastOperation, "hexadecimal InternalBridgeSecond.Vid");
}

TEST_F(DescriptionLoading, ASectionMayNameItself) {
    const tModelDescription model =
        load(smallestDescription().set("Anchor", "IDsSameAs", "Anchor"));
    EXPECT_THAT(model.anchors, ElementsAre(tAnchorIdentity{1, {1, 2, 3, 4}}));
}

TEST_F(DescriptionLoading, IdentifiersThatShouldComeFromNowhereEndTheLoad) {
    for (const char* from : {"Nowhere", "\"\"", "anchor", "\" Anchor\""}) {
        const Failure failure =
            failureOf(fullDescription().set("InternalBridgeFirst", "IDsSameAs", from));
        EXPECT_EQ(failure.iniCode(), -313317) << from;
        EXPECT_THAT(failure.lastOperation, testing::EndsWith(".Vid"));
    }
}

TEST_F(DescriptionLoading, ANumberThatIsBadElsewhereEndsTheLoadToo) {
    const Failure failure = failureOf(fullDescription()
                                          .set("DownstreamPort1", "IDsSameAs", "Elsewhere")
                                          .setIds("Elsewhere", "1", "2", "no number", "4"));
    EXPECT_EQ(failure.iniCode(), -313323);
    EXPECT_EQ(failure.lastOperation, "hexadecimal Elsewhere.SsVid");
}

// A file class in which nothing is open whatever is opened.
class NeverOpen : public RecordingIniFile {
public:
    void open(const char*, std::uint32_t, Status&) {}
};

TEST_F(DescriptionLoading, AKeyTestOnAFileThatIsNotLoadedIsAFailure) {
    RecordingIniFile::Status status;
    EXPECT_FALSE(NeverOpen().hasKey("UpstreamTAV", "Model", status));
    EXPECT_EQ(status.code, -313317);
    NeverOpen file;
    EXPECT_EQ(testsupport::raisedBy([&] { (void)DescriptionLoader(file).load("any"); }).code,
              -313317);
}

} // namespace

// What the page of recorded machines says, and that it stays what it is.
#include "tavctl/report/reportPage.h"

#include "tavctl/report/pageParts.h"
#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::HasSubstr;
using testing::Not;
using PageJson = nlohmann::json;

const PciNames& reportNames() {
    static const PciNames names = PciNames::parse("1172  Maker\n\te001  Card\n");
    return names;
}

ReportedMachine boxMachine(const TreeFixture& fixture) {
    const testsupport::FileFolder folder;
    ReportedMachine machine;
    machine.machine = "rack1";
    machine.recording = "lab/rack1.dump";
    machine.bus = readWholeBus(folder.write("machine", fixture.machine.dump()));
    machine.devices = fixture.placed();
    machine.absent = {{"TAV9", "Box", "MR00:00,40"}};
    return machine;
}

PageJson dataOf(ReportedMachine machine) {
    ReportData data(reportNames());
    data.add(std::move(machine));
    return PageJson::parse(data.text("Lab"));
}

TEST(ReportData, HasTheBoxWithItsConnectorsAndWhatIsInThem) {
    const TreeFixture fixture;
    const PageJson page = dataOf(boxMachine(fixture));
    EXPECT_EQ(page["title"], "Lab");
    const PageJson& machine = page["machines"][0];
    EXPECT_EQ(machine["n"], "rack1");
    EXPECT_EQ(machine["r"], "lab/rack1.dump");
    EXPECT_TRUE(machine["f"].is_null());
    ASSERT_EQ(machine["b"].size(), 1U);
    const PageJson& box = machine["b"][0];
    EXPECT_EQ(box["n"], "TAV1");
    EXPECT_EQ(page["models"][box["m"].get<std::size_t>()], fixture.listed[0].model);
    EXPECT_EQ(box["a"], "01:00.0");
    EXPECT_EQ(box["i"], "");
    EXPECT_EQ(box["u"][0], 8);
    const PageJson& connector = box["k"][0];
    EXPECT_EQ(connector["l"], PageJson::array({"A"}));
    EXPECT_EQ(connector["w"][0], 4);
    EXPECT_EQ(connector["f"][0][0], "03:00.0");
    EXPECT_EQ(page["texts"][connector["f"][0][1].get<std::size_t>()], "Maker Card");
    EXPECT_TRUE(box["k"][1]["w"].is_null());
    EXPECT_EQ(machine["g"][0][0], "TAV9");
    EXPECT_EQ(machine["g"][0][2], "MR00:00,40");
}

TEST(ReportData, ABoxInABoxIsInItsConnector) {
    const TreeFixture fixture;
    ReportedMachine machine = boxMachine(fixture);
    PlacedDevice inner;
    inner.listed.terminalName = "Card1";
    inner.listed.model = "Card";
    inner.listed.bus = 3;
    for (const auto& function : machine.bus.searched->functions()) {
        if (pcibus::addressText(function) == "03:00.0")
            inner.reported = inner.anchor = function.handle();
    }
    machine.devices.push_back(inner);
    const PageJson page = dataOf(std::move(machine));
    const PageJson& boxes = page["machines"][0]["b"];
    EXPECT_EQ(boxes[1]["i"], "TAV1 connector A");
    EXPECT_EQ(boxes[0]["k"][0]["b"], PageJson::array({1}));
    EXPECT_TRUE(boxes[0]["k"][0]["f"].empty());
}

TEST(ReportData, AMachineThatCouldNotBeReadHasItsReason) {
    ReportedMachine machine;
    machine.recording = "a&b";
    machine.failure = Failure{"read the bus", "a&b", "it is <gone>", {}, {}};
    ReportData data(reportNames());
    data.add(std::move(machine));
    EXPECT_EQ(PageJson::parse(data.text({}))["machines"][0]["f"],
              "read the bus (a&b): it is <gone>");
    EXPECT_EQ(data.rows(), "<tr><td>a&amp;b</td><td>read the bus (a&amp;b): it is &lt;gone&gt;</td>"
                           "<td>0</td></tr>\n");
}

TEST(ReportPage, WhatIsSaidStaysText) {
    const std::string evil = "</script><!--<script>\"@SCRIPT@\xE2\x80\xA8";
    ReportedMachine machine = boxMachine(TreeFixture());
    machine.machine = evil;
    ReportData data(reportNames());
    data.add(std::move(machine));
    const std::string page = reportPage(data, evil);
    const std::regex scripts("<script");
    EXPECT_EQ(std::distance(std::sregex_iterator(page.begin(), page.end(), scripts), {}), 2);
    EXPECT_THAT(page, HasSubstr("<title>&lt;/script&gt;&lt;!--&lt;script&gt;&quot;@SCRIPT@"));
    const std::string opening = R"(<script type="application/json" id="data">)";
    const std::size_t begin = page.find(opening) + opening.size();
    const auto read = PageJson::parse(page.substr(begin, page.find("</script>", begin) - begin));
    EXPECT_EQ(read["machines"][0]["n"], evil);
    EXPECT_EQ(read["title"], evil);
}

TEST(ReportPage, WhatCannotBeSeenStandsByItsNumber) {
    const std::string page = reportPage(ReportData(reportNames()), "Lab\x1B[31m \xFF");
    EXPECT_THAT(page, HasSubstr(R"(<title>Lab\x1B[31m \xFF</title>)"));
}

// A page that is sent has everything inside, and tells nobody that it was read.
TEST(ReportPage, AsksNobodyForAnything) {
    const std::string page = reportPage(ReportData(reportNames()), "Lab");
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
    for (const char* word : {"http:", "https:", "//", "src=", "url(", "@import", "innerHTML",
                             "fetch(", "XMLHttpRequest", "localStorage"}) {
        for (const std::string_view part : {kPageMarkup, kPageStyle}) {
            EXPECT_EQ(part.find(word), std::string_view::npos) << word;
        }
        if (std::string_view(word) != "//") { // a comment
            EXPECT_EQ(kPageScript.find(word), std::string_view::npos) << word;
        }
    }
    for (const char* sign : {"@TITLE@", "@STYLE@", "@SCRIPT@", "@ROWS@", "@DATA@"})
        EXPECT_THAT(page, Not(HasSubstr(sign)));
}

} // namespace

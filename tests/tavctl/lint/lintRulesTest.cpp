// Every rule of lint has a folder of files that it must find fault with, at the places that
// expected.txt tells, and one of files that are faultless.
#include "tavctl/description/oddNames.h"
#include "tavctl/description/rules.h"
#include "tavctl/lint/lint.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace tavctl::lint;

const fs::path kFixtures = fs::path(TAV_SOURCE_DIR) / "tests" / "tavctl" / "lint" / "rules";

// The folder as it is searched for a rule: of names that are not *.ini only that of one rule is
// found, of all others each is passed over.
tavctl::DescriptionFolder searched(const fs::path& folder, std::string_view id) {
    tavctl::DescriptionFolder found;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string file = entry.path().string();
        if (entry.path().extension() == ".ini")
            found.files.push_back(file);
        else if (hasDescriptionShortName(entry.path().filename().string()))
            (id == "loaded-by-short-name" ? found.byShortName : found.elsewhere).push_back(file);
    }
    found.files.insert(found.files.end(), found.byShortName.begin(), found.byShortName.end());
    std::sort(found.files.begin(), found.files.end());
    if (found.files.empty() && found.elsewhere.empty())
        throw std::runtime_error("no description file in " + folder.string());
    return found;
}

// "file:line:column:length", a line each.
std::string placesOf(const Report& report, std::string_view id) {
    std::ostringstream text;
    for (const Finding& finding : report.findings) {
        if (finding.rule == id)
            text << fs::path(finding.file).filename().string() << ':' << finding.place.line << ':'
                 << finding.place.column << ':' << finding.place.length << '\n';
    }
    return text.str();
}

// The files of a rule. One whose faulty file is too large to be kept is made from the sound one.
fs::path fixtureOf(std::string_view id, const testsupport::TemporaryFolder& made) {
    if (id != "too-large")
        return kFixtures / id;
    fs::create_directory(made.path() / "good");
    fs::create_directory(made.path() / "bad");
    for (const char* name : {"good/box.ini", "bad/box.ini"})
        fs::copy_file(kFixtures / "odd-line" / "good" / "box.ini", made.path() / name);
    fs::resize_file(made.path() / "bad" / "box.ini", Description::kLargestText + 1);
    std::ofstream(made.path() / "bad" / "expected.txt", std::ios::binary) << "box.ini:0:0:0\n";
    return made.path();
}

class LintRule : public testing::TestWithParam<Rule> {};

TEST_P(LintRule, FindsItsFaultAndNoneInSoundFiles) {
    const Rule& each = GetParam();
    const testsupport::TemporaryFolder made;
    const fs::path folder = fixtureOf(each.id, made);

    const Report bad = tavctl::lint::lint(searched(folder / "bad", each.id));
    const std::string places = placesOf(bad, each.id);
    EXPECT_NE(places, "") << reportAsText(bad);
    EXPECT_EQ(places, testsupport::fileText(folder / "bad" / "expected.txt")) << reportAsText(bad);
    for (const Finding& finding : bad.findings) {
        if (finding.rule == each.id) {
            EXPECT_EQ(finding.severity, each.severity);
            EXPECT_NE(finding.found, "");
            EXPECT_NE(finding.expected, "");
        }
    }

    const Report good = tavctl::lint::lint(searched(folder / "good", each.id));
    EXPECT_TRUE(good.findings.empty()) << reportAsText(good);
}

std::string testName(const testing::TestParamInfo<Rule>& info) {
    std::string name(info.param.id);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Lint, LintRule, testing::ValuesIn(rules().begin(), rules().end()),
                         testName);

TEST(LintRules, FixturesAreOfRulesThatThereAre) {
    std::set<std::string> known;
    for (const Rule& each : rules())
        EXPECT_TRUE(known.insert(std::string(each.id)).second) << each.id << " twice";
    for (const auto& entry : fs::directory_iterator(kFixtures))
        EXPECT_TRUE(known.contains(entry.path().filename().string())) << entry.path();
}

TEST(LintRules, AreTold) {
    for (const Rule& each : rules()) {
        EXPECT_NE(rulesAsText().find(each.id), std::string::npos);
        EXPECT_NE(rulesAsJson().find(each.id), std::string::npos);
    }
    EXPECT_THROW(static_cast<void>(rule("no-such-rule")), std::logic_error);
}

} // namespace

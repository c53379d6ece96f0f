// Lint and the plug-in's loader come to the same verdict on every file, and lint points at what the
// INI engine reads.
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "source/descriptionLoader.h"
#include "source/exceptionStatus.h"
#include "tavctl/description/loadFailure.h"
#include "tavctl/lint/lint.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/explain/descriptionMutations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using namespace nZoPxiDriverTools_1_0;
using namespace tavctl::lint;

// What loading the file ends with; 0 when it is loaded.
std::int32_t loadStatus(const std::string& path) {
    try {
        cIniFile file;
        DescriptionLoader<cIniFile>(file).load(path);
        return 0;
    } catch (...) {
        return statusOfCurrentException();
    }
}

// What the commands say that cannot go on without the file is one of the findings of lint.
void expectToldAsLintDoes(const tavctl::Failure& failure, std::int32_t status,
                          const Report& report) {
    EXPECT_EQ(failure.operation, "load description");
    EXPECT_EQ(failure.status, status);
    EXPECT_TRUE(std::any_of(report.findings.begin(), report.findings.end(),
                            [&](const auto& each) {
                                return each.endsLoad && each.placeText() == failure.object &&
                                       each.sentence() == failure.reason;
                            }))
        << failure.sentence() << "\n"
        << reportAsText(report);
}

void expectSameVerdict(const std::string& path, const std::string& text) {
    const std::int32_t status = loadStatus(path);
    const Description description(path);
    const Report report = tavctl::lint::lint({path});
    ASSERT_EQ(report.endsLoad(), status != 0) << status << "\n" << text << reportAsText(report);
    ASSERT_EQ(description.loads(), status == 0) << text;
    if (status != 0) {
        ASSERT_EQ(description.reads().problems().front().status, status) << text;
        ASSERT_GT(report.errors(), 0U);
        expectToldAsLintDoes(loadFailure(description), status, report);
    }
}

TEST(LintAndLoader, AgreeOnEveryFixture) {
    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(TAV_SOURCE_DIR) / "tests" /
                                                              "tavctl" / "lint" / "rules")) {
        if (entry.path().extension() != ".ini")
            continue;
        expectSameVerdict(entry.path().string(), entry.path().string());
        ++files;
    }
    EXPECT_GT(files, 70U);
}

TEST(LintAndLoader, AgreeOnChangedDescriptions) {
    const testsupport::FileFolder folder;
    const auto samples = testtavctl::sampleDescriptions();
    std::mt19937 random(20261); // NOLINT(bugprone-random-generator-seed): the same each time
    std::size_t faulty = 0;
    for (int i = 0; i < 2500; ++i) {
        const std::string text =
            testtavctl::mutated(samples[testtavctl::below(random, samples.size())], random);
        const std::string path = folder.write("changed.ini", text);
        ASSERT_NO_FATAL_FAILURE(expectSameVerdict(path, text));
        faulty += loadStatus(path) != 0 ? 1U : 0U;
    }
    // Both kinds must occur, or the test shows nothing.
    EXPECT_GT(faulty, 500U);
    EXPECT_LT(faulty, 2000U);
}

// Every value of the engine's stands where lint says, unless it was joined from pieces.
void expectSamePlaces(const std::string& path, const std::string& text) {
    const IniFileOwner engine(createIniFile());
    engine->caseSensitive = true;
    const platform::Stream stream = platform::openStream(path.c_str(), "rb");
    ASSERT_EQ(loadIni(*engine, stream.get()), kIniDone);
    const PositionedIni positioned(text);
    ASSERT_EQ(positioned.sections().size(), sectionCount(*engine)) << text;
    for (std::uint32_t s = 1; s <= sectionCount(*engine); ++s) {
        const IniSection& section = *sectionAt(*engine, static_cast<std::int32_t>(s));
        const std::string sectionName(section.name.view());
        ASSERT_EQ(positioned.sections()[s - 1], sectionName);
        for (std::uint32_t k = 1; k <= keyCount(section); ++k) {
            const IniKey& key = *keyAt(section, static_cast<std::int32_t>(k));
            const auto lines = positioned.linesOf(sectionName, std::string(key.name.view()));
            if (key.value.owned != 0 || lines.empty())
                continue; // a piece that no first piece precedes has no place of its own
            const PositionedLine& line = *positioned.line(lines.back());
            if (line.name == key.name.view()) {
                ASSERT_EQ(line.value, key.value.view()) << text;
                ASSERT_EQ(line.quote, key.quote) << text;
                ASSERT_EQ(lines.front(), key.line) << text;
            }
        }
    }
}

TEST(LintAndEngine, PointAtTheSameValues) {
    const testsupport::FileFolder folder;
    const auto samples = testtavctl::sampleDescriptions();
    std::mt19937 random(4711); // NOLINT(bugprone-random-generator-seed): the same each time
    for (int i = 0; i < 1200; ++i) {
        const std::string text =
            testtavctl::mutated(samples[testtavctl::below(random, samples.size())], random);
        ASSERT_NO_FATAL_FAILURE(expectSamePlaces(folder.write("changed.ini", text), text));
    }
}

} // namespace

// Every example of the guides prints what the guide says. With TAV_REWRITE_GUIDE set
// in the environment, what is printed now is what it says from then on.
#include "tests/tavctl/documents/guide.h"

#include "tavctl/description/rules.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

const fs::path kGuides = fs::path(TAV_SOURCE_DIR) / "docs";

void expectExamples(const fs::path& file, std::size_t commands) {
    const testsupport::TemporaryFolder folder;
    for (const char* name : {"samples", "descriptions"})
        fs::create_directory_symlink(fs::path(TAV_SOURCE_DIR) / name, folder.path() / name);
    const std::string text = testsupport::fileText(file);
    const testtavctl::Guide guide(text);
    EXPECT_GE(guide.commands(), commands);
    const std::string now = guide.run(folder.path(), fs::path(TAVCTL_FILE).parent_path());
    if (std::getenv("TAV_REWRITE_GUIDE") != nullptr)
        std::ofstream(file, std::ios::binary) << now;
    else
        EXPECT_EQ(now, text);
}

TEST(DescriptionGuide, EveryExamplePrintsWhatItSays) {
    expectExamples(kGuides / "descriptions.md", 11);
}

TEST(RackGuide, EveryExamplePrintsWhatItSays) {
    expectExamples(kGuides / "rack.md", 11);
}

TEST(DescriptionGuide, TellsOfEveryRule) {
    const std::string text = testsupport::fileText(kGuides / "descriptions.md");
    for (const auto& rule : tavctl::lint::rules())
        EXPECT_NE(text.find(" " + std::string(rule.id) + " "), std::string::npos) << rule.id;
}

} // namespace

// Every example of the guide to descriptions prints what the guide says. With TAV_REWRITE_GUIDE set
// in the environment, what is printed now is what the guide says from then on.
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

const fs::path kGuide = fs::path(TAV_SOURCE_DIR) / "docs" / "descriptions.md";

TEST(DescriptionGuide, EveryExamplePrintsWhatItSays) {
    const testsupport::TemporaryFolder folder;
    for (const char* name : {"samples", "descriptions"})
        fs::create_directory_symlink(fs::path(TAV_SOURCE_DIR) / name, folder.path() / name);
    const std::string text = testsupport::fileText(kGuide);
    const testtavctl::Guide guide(text);
    EXPECT_GT(guide.commands(), 10U);
    const std::string now = guide.run(folder.path(), fs::path(TAVCTL_FILE).parent_path());
    if (std::getenv("TAV_REWRITE_GUIDE") != nullptr)
        std::ofstream(kGuide, std::ios::binary) << now;
    else
        EXPECT_EQ(now, text);
}

TEST(DescriptionGuide, TellsOfEveryRule) {
    const std::string text = testsupport::fileText(kGuide);
    for (const auto& rule : tavctl::lint::rules())
        EXPECT_NE(text.find(" " + std::string(rule.id) + " "), std::string::npos) << rule.id;
}

} // namespace

// Patterns on the command line, in the place of which shells have put the files already.
#include "platform/filePattern.h"

#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

TEST(FilePattern, IsAWordLikeAnyOther) {
    const testsupport::TemporaryFolder folder;
    const std::string pattern = folder.file("a.ini", "").parent_path().string() + "/*.ini";
    EXPECT_THAT(platform::filesOfPattern(pattern), ElementsAre(pattern));
    EXPECT_THAT(platform::filesOfPattern(""), ElementsAre(""));
}

} // namespace

// What is told to a person who waits.
#include "tavctl/words/progress.h"

#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>

namespace {

using tavctl::Progress;
using tavctl::ProgressLine;

struct Line {
    testsupport::FileFolder folder;
    std::FILE* stream = std::fopen(folder.file("line").c_str(), "wb");
    ~Line() { std::fclose(stream); }

    // Waits until the line is there: the work lasts that long.
    void waitUntilShown() const {
        while (folder.read("line").empty())
            std::this_thread::yield();
    }
};

TEST(Progress, IsShownWhileTheWorkLastsAndClearedAfterwards) {
    const Line line;
    {
        const Progress progress("reading the bus", {line.stream, true, {}});
        line.waitUntilShown();
        EXPECT_EQ(line.folder.read("line"), "\r\033[Ktavctl: reading the bus... 0 s");
    }
    EXPECT_TRUE(line.folder.read("line").ends_with("\r\033[K"));
}

TEST(Progress, SaysNothingOffATerminal) {
    const Line line;
    { const Progress progress("reading the bus", {line.stream, false, {}}); }
    EXPECT_EQ(line.folder.read("line"), "");
}

TEST(Progress, SaysNothingOfWorkThatIsDoneBeforeTheDelay) {
    const Line line;
    { const Progress progress("reading the bus", {line.stream, true, std::chrono::hours(1)}); }
    EXPECT_EQ(line.folder.read("line"), "");
}

} // namespace

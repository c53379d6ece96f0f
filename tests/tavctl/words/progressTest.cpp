// What is told to a person who waits.
#include "tavctl/words/progress.h"

#include "tests/support/allocationFaults.h"
#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <system_error>

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

constexpr std::chrono::milliseconds kForever = std::chrono::hours(1);

// Without a delay.
ProgressLine on(const Line& line) {
    return {line.stream, true, true, {}};
}

TEST(Progress, IsShownWhileTheWorkLastsAndClearedAfterwards) {
    const Line line;
    {
        const Progress progress("reading the bus", on(line));
        line.waitUntilShown();
        EXPECT_EQ(line.folder.read("line"), "\r\033[Ktavctl: reading the bus... 0 s");
    }
    EXPECT_TRUE(line.folder.read("line").ends_with("\r\033[K"));
}

TEST(Progress, IsClearedByBlanksWhereATerminalTakesNoEscapes) {
    const Line line;
    ProgressLine plainLine = on(line);
    plainLine.takesEscapes = false;
    {
        const Progress progress("reading the bus", plainLine);
        line.waitUntilShown();
        EXPECT_TRUE(line.folder.read("line").ends_with("\rtavctl: reading the bus... 0 s"));
    }
    const std::string blank = "\r" + std::string(79, ' ') + "\r";
    const std::string text = line.folder.read("line");
    EXPECT_TRUE(text.ends_with(blank));
    EXPECT_EQ(text.find('\033'), std::string::npos);
}

TEST(Progress, SaysNothingOffATerminal) {
    const Line line;
    { const Progress progress("reading the bus", ProgressLine{line.stream, false, true, {}}); }
    EXPECT_EQ(line.folder.read("line"), "");
}

TEST(Progress, SaysNothingOfWorkThatIsDoneBeforeTheDelay) {
    const Line line;
    { const Progress progress("reading the bus", ProgressLine{line.stream, true, true, kForever}); }
    EXPECT_EQ(line.folder.read("line"), "");
}

// One that has no thread left.
ProgressLine lineWithoutThread(const Line& line) {
    ProgressLine made = on(line);
    made.startThread = [](const std::function<void()>&) -> std::thread {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    };
    return made;
}

TEST(Progress, WorkGoesOnWithoutALineWhereThereIsNoThread) {
    const Line line;
    {
        Progress progress("reading the bus", 10, lineWithoutThread(line));
        progress.step();
        const Progress::Hidden hidden(progress);
    }
    EXPECT_EQ(line.folder.read("line"), "");
}

TEST(Progress, TellsOfStepsWhatIsDoneAndWhatIsLeft) {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    EXPECT_EQ(tavctl::progressText("reading descriptions", 51'234, 100'000, seconds(4)),
              "reading descriptions [#####-----] 51,234 of 100,000, about 4 s left");
    EXPECT_EQ(tavctl::progressText("reading", 0, 7, seconds(1)), "reading [----------] 0 of 7");
    EXPECT_EQ(tavctl::progressText("reading", 6, 7, milliseconds(600)),
              "reading [########--] 6 of 7, about 1 s left");
    EXPECT_EQ(tavctl::progressText("reading", 7, 7, seconds(9)),
              "reading [##########] 7 of 7, about 0 s left");
    EXPECT_EQ(tavctl::progressText("reading", 9, 7, seconds(9)), // never more than all
              "reading [##########] 7 of 7, about 0 s left");
    EXPECT_EQ(tavctl::progressText("reading", 1, 100, seconds(10)),
              "reading [----------] 1 of 100, about 17 min left");
}

TEST(Progress, OfWorkInStepsIsTheLine) {
    const Line line;
    {
        Progress progress("reading", 1234, on(line));
        line.waitUntilShown();
        EXPECT_EQ(line.folder.read("line"), "\r\033[Ktavctl: reading [----------] 0 of 1,234");
        progress.step();
    }
    EXPECT_TRUE(line.folder.read("line").ends_with("\r\033[K"));
}

// A line that a terminal breaks in two would not be cleared.
TEST(Progress, LineFitsATerminal) {
    for (const std::size_t total : {100'000U, 1'000'000U, 4'000'000'000U})
        EXPECT_LT(
            tavctl::progressText("checking descriptions", total / 2, total, std::chrono::hours(99))
                    .size() +
                std::string("tavctl: ").size(),
            80U);
    // Without the bar, and at last without the name.
    const auto half = [](std::size_t total) {
        return tavctl::progressText("checking descriptions", total / 2, total,
                                    std::chrono::hours(1));
    };
    EXPECT_EQ(half(1'000'000), "checking descriptions: 500,000 of 1,000,000, about 60 min left");
    EXPECT_EQ(half(4'000'000'000), "2,000,000,000 of 4,000,000,000, about 60 min left");
}

TEST(Progress, IsClearedWhileItIsHidden) {
    const Line line;
    Progress progress("reading the bus", on(line));
    line.waitUntilShown();
    {
        const Progress::Hidden hidden(progress);
        EXPECT_TRUE(line.folder.read("line").ends_with("\r\033[K"));
    }
    EXPECT_TRUE(line.folder.read("line").ends_with("\r\033[Ktavctl: reading the bus... 0 s"));
}

TEST(Progress, ComesWhenItWasDueWhileItWasHidden) {
    const Line line;
    {
        Progress progress("reading the bus",
                          ProgressLine{line.stream, true, true, std::chrono::milliseconds(20)});
        {
            const Progress::Hidden hidden(progress);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            EXPECT_EQ(line.folder.read("line"), "");
        }
        line.waitUntilShown();
    }
    EXPECT_TRUE(line.folder.read("line").starts_with("\r\033[Ktavctl: reading the bus... 0 s"));
}

TEST(Progress, DoesNotComeBackWhereItWasNotYet) {
    const Line line;
    {
        Progress progress("reading the bus", ProgressLine{line.stream, true, true, kForever});
        const Progress::Hidden hidden(progress);
    }
    EXPECT_EQ(line.folder.read("line"), "");
}

TEST(Progress, WorkGoesOnWithoutMemoryForTheLine) {
    const Line line;
    Progress progress("reading the bus", on(line));
    line.waitUntilShown();
    std::optional<Progress::Hidden> hidden(progress);
    const testsupport::AllocationFault fault(1);
    hidden.reset();
    EXPECT_TRUE(fault.happened());
}

TEST(Progress, LineIsPlainText) {
    const Line line;
    {
        const Progress progress("reading \033[31m\n\x7F", on(line));
        line.waitUntilShown();
        EXPECT_EQ(line.folder.read("line"), "\r\033[Ktavctl: reading ?[31m??... 0 s");
    }
}

} // namespace

// Trace lines: their prefix, their way to the destination, and what many threads make of them.
#include "quil/debugPrinter.h"
#include "quil/tConsoleTraceDestination.h"
#include "quil/tTrace.h"
#include "quil/tracePrefix.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/debugOutputCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace nZOQUIL000;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::debugOutputOf;

std::string prefixOf(const tTracePrefix& prefix) {
    char buffer[100];
    const char* const end = writeTracePrefix(buffer, sizeof buffer, prefix);
    EXPECT_EQ(end, buffer + std::strlen(buffer));
    return buffer;
}

const std::string kPrefix = "[  zotavpci|                          source|  42] ";

TEST(TracePrefix, ColumnsAreAlignedToTheRight) {
    EXPECT_EQ(prefixOf({"zotavpci", "source", 42}), kPrefix);
    EXPECT_EQ(kPrefix.size(), kTracePrefixLength);
    tTracePrefix standard;
    standard.file = "source";
    standard.line = 42;
    EXPECT_EQ(prefixOf(standard), kPrefix);
    EXPECT_EQ(prefixOf({"", "", 0}), "[          |" + std::string(32, ' ') + "|   0] ");
}

TEST(TracePrefix, FullColumnsHaveNoBlanks) {
    EXPECT_EQ(prefixOf({"0123456789", "01234567890123456789012345678901", 1234}),
              "[0123456789|01234567890123456789012345678901|1234] ");
}

TEST(TracePrefix, LongerFieldsKeepTheirEnd) {
    EXPECT_EQ(prefixOf({"x0123456789", "source", 42}).substr(0, 12), "[0123456789|");
    const std::string file = "a file name of forty characters in total";
    ASSERT_EQ(file.size(), 40U);
    EXPECT_EQ(prefixOf({"zotavpci", file.c_str(), 42}),
              "[  zotavpci|" + file.substr(8) + "|  42] ");
    EXPECT_EQ(prefixOf({"zotavpci", "source", 12345}).substr(44), "|2345] ");
    EXPECT_EQ(prefixOf({"zotavpci", "source", 10007}).substr(44), "|0007] ");
    EXPECT_EQ(prefixOf({"zotavpci", "source", std::numeric_limits<std::int32_t>::min()}).substr(44),
              "|3648] ");
    EXPECT_EQ(prefixOf({"zotavpci", "source", -1}).substr(44), "|  -1] ");
}

TEST(TracePrefix, IsCutAtEveryBufferSizeAndAlwaysEnds) {
    for (std::size_t space = 0; space <= kTracePrefixLength + 3; ++space) {
        std::string buffer(kTracePrefixLength + 10, '?');
        const char* const end = writeTracePrefix(buffer.data(), space, {"zotavpci", "source", 42});
        const std::size_t length = space == 0 ? 0 : std::min(space - 1, kTracePrefixLength);
        EXPECT_EQ(end, buffer.data() + length) << space;
        std::string expected = kPrefix.substr(0, length);
        if (space != 0)
            expected += '\0';
        EXPECT_EQ(buffer.substr(0, expected.size()), expected) << space;
        EXPECT_EQ(buffer.find_first_not_of('?', expected.size()), std::string::npos)
            << "written beyond " << space;
    }
}

TEST(DebugPrinter, FormatsItsArguments) {
    EXPECT_EQ(debugOutputOf([] { debugPrint("%s %d%%\n", "done", 7); }), "done 7%\n");
}

TEST(DebugPrinter, CutsBeyond511Characters) {
    for (const std::size_t length : {510U, 511U, 512U, 513U, 5000U}) {
        const std::string text = std::string(length - 1, 'x') + "y";
        EXPECT_EQ(debugOutputOf([&] { debugPrint("%s", text.c_str()); }), text.substr(0, 511));
    }
}

TEST(ConsoleDestination, WritesTextAsItIs) {
    tConsoleTraceDestination destination;
    EXPECT_EQ(debugOutputOf([&] { destination.write("100% %s %n\n"); }), "100% %s %n\n");
    EXPECT_EQ(debugOutputOf([&] { destination.write(std::string(600, 'x').c_str()); }),
              std::string(511, 'x'));
}

TEST(ConsoleDestination, WritesCountedTextUpToItsCount) {
    tConsoleTraceDestination destination;
    const auto counted = [&](const char* text, std::uint32_t length) {
        return debugOutputOf([&] { destination.writeCounted(text, length); });
    };
    const char unterminated[] = {'a', 'b', '%', 's'};
    EXPECT_EQ(counted(unterminated, 4), "ab%s");
    EXPECT_EQ(counted("abcdef", 3), "abc");
    EXPECT_EQ(counted("abc", 0), "");
    EXPECT_EQ(counted("abc", 100), "abc");
    EXPECT_EQ(counted("abc", 0xFFFFFFFF), "abc");
    const std::string longText(600, 'x');
    EXPECT_EQ(counted(longText.c_str(), 510), std::string(510, 'x'));
    EXPECT_EQ(counted(longText.c_str(), 600), std::string(511, 'x'));
    EXPECT_EQ(counted(longText.c_str(), 0xFFFFFFFF), std::string(511, 'x'));
}

TEST(ConsoleDestination, HooksDoNothing) {
    tConsoleTraceDestination destination;
    EXPECT_EQ(debugOutputOf([&] {
                  destination.flush();
                  destination.reserved();
              }),
              "");
}

TEST(ConsoleDestination, SaysWhatItIs) {
    tConsoleTraceDestination destination;
    EXPECT_TRUE(destination.isAvailable());
    EXPECT_STREQ(destination.name(), "zosdbg_printf");
}

TEST(ConsoleDestination, DescriptionIsCutToTheCapacity) {
    tConsoleTraceDestination destination;
    const std::string whole = " --destination quil";
    for (std::int32_t capacity = -1; capacity <= 25; ++capacity) {
        std::string buffer(30, '?');
        std::uint32_t required = 77;
        const char* const end = destination.describe(buffer.data(), capacity, &required);
        EXPECT_EQ(required, 20U);
        std::string expected;
        if (capacity > 0)
            expected = whole.substr(0, static_cast<std::size_t>(capacity) - 1) + '\0';
        EXPECT_EQ(buffer, expected + std::string(30 - expected.size(), '?')) << capacity;
        EXPECT_EQ(end, buffer.data() + (expected.empty() ? 0 : expected.size() - 1)) << capacity;
    }
}

TEST(ConsoleDestination, DescriptionsSizeNeedsNoBuffer) {
    tConsoleTraceDestination destination;
    std::uint32_t required = 0;
    EXPECT_EQ(destination.describe(nullptr, 0, &required), nullptr);
    EXPECT_EQ(required, 20U);
    char buffer[20];
    EXPECT_EQ(destination.describe(buffer, 20, nullptr), buffer + 19);
    EXPECT_STREQ(buffer, " --destination quil");
}

// Keeps what it is given.
class Recorder : public tConsoleTraceDestination {
public:
    void write(const char* text) noexcept override {
        together += inside.fetch_add(1) != 0;
        if (keeps)
            lines.emplace_back(text);
        std::this_thread::yield();
        ++writes;
        inside.fetch_sub(1);
    }
    bool isAvailable() noexcept override { return available; }

    std::vector<std::string> lines;
    bool keeps = true;
    bool available = true;
    std::atomic<int> inside = 0;
    int together = 0;
    int writes = 0; // guarded by the trace's lock alone
};

TEST(Trace, IsSilentWithoutADestination) {
    tTrace own;
    EXPECT_EQ(debugOutputOf([&] {
                  own.write("source", 42, "nobody reads %d", 1);
                  trace().write("source", 42, "nobody reads %d", 2);
              }),
              "");
}

TEST(Trace, LineIsPrefixMessageAndLineEnd) {
    tTrace own;
    Recorder recorder;
    own.setDestination(&recorder);
    own.write("source", 42, "%s is %d", "x", 5);
    own.write("source", 42, "with its own end\n");
    own.write("source", 42, "%s", "");
    EXPECT_THAT(recorder.lines,
                ElementsAre(kPrefix + "x is 5\n", kPrefix + "with its own end\n", kPrefix + "\n"));
}

TEST(Trace, LongLineIsCutBeforeItsLineEnd) {
    tTrace own;
    Recorder recorder;
    own.setDestination(&recorder);
    const std::size_t fits = 511 - 1 - kTracePrefixLength;
    for (const std::size_t length : {fits - 1, fits, fits + 1, std::size_t{5000}}) {
        recorder.lines.clear();
        const std::string message(length, 'x');
        own.write("source", 42, "%s", message.c_str());
        EXPECT_THAT(recorder.lines,
                    ElementsAre(kPrefix + message.substr(0, std::min(length, fits)) + "\n"));
    }
}

TEST(Trace, DestinationCanBeChangedAndTakenAway) {
    tTrace own;
    Recorder first;
    Recorder second;
    own.setDestination(&first);
    own.write("f", 1, "one");
    own.setDestination(&second);
    own.write("f", 1, "two");
    own.setDestination(nullptr);
    own.write("f", 1, "three");
    EXPECT_EQ(first.lines.size(), 1U);
    EXPECT_EQ(second.lines.size(), 1U);
}

TEST(Trace, DestinationThatIsNotAvailableIsPassedOver) {
    tTrace own;
    Recorder recorder;
    recorder.available = false;
    own.setDestination(&recorder);
    own.write("f", 1, "one");
    recorder.available = true;
    own.write("f", 1, "two");
    EXPECT_EQ(recorder.lines.size(), 1U);
}

TEST(Trace, TakesNothingFromTheHeap) {
    tTrace own;
    Recorder recorder;
    recorder.keeps = false;
    {
        const testsupport::AllocationFault fault(1);
        own.setDestination(&recorder);
        own.write("source", 42, "%s %d", "a message", 5);
        own.setDestination(nullptr);
        EXPECT_FALSE(fault.happened());
    }
    EXPECT_EQ(recorder.writes, 1);
}

TEST(Trace, DestinationIsCalledByOneThreadAtATime) {
    tTrace own;
    Recorder recorder;
    recorder.keeps = false;
    own.setDestination(&recorder);
    constexpr int kThreads = 4;
    constexpr int kLines = 300;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            for (int line = 0; line < kLines; ++line)
                own.write("source", line, "text");
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(recorder.writes, kThreads * kLines);
    EXPECT_EQ(recorder.together, 0);
}

// Stays in its write until it is let go.
class Sluggish : public tConsoleTraceDestination {
public:
    void write(const char*) noexcept override {
        entered = true;
        while (!mayLeave)
            std::this_thread::yield();
        left = true;
    }
    std::atomic<bool> entered = false;
    std::atomic<bool> mayLeave = false;
    std::atomic<bool> left = false;
};

TEST(Trace, DestinationTakenAwayIsNoLongerInUse) {
    tTrace own;
    Sluggish destination;
    own.setDestination(&destination);
    std::thread writer([&] { own.write("f", 1, "text"); });
    while (!destination.entered)
        std::this_thread::yield();
    std::atomic<bool> detaching = false;
    std::thread detacher([&] {
        detaching = true;
        own.setDestination(nullptr);
        EXPECT_TRUE(destination.left);
    });
    while (!detaching)
        std::this_thread::yield();
    destination.mayLeave = true;
    writer.join();
    detacher.join();
}

TEST(Trace, LinesOfSeveralThreadsStayWhole) {
    tTrace own;
    tConsoleTraceDestination console;
    own.setDestination(&console);
    constexpr int kThreads = 4;
    constexpr int kLines = 250;
    const auto message = [](int thread) {
        return std::string(100 * static_cast<std::size_t>(thread + 1),
                           static_cast<char>('a' + thread));
    };
    const std::string all = debugOutputOf([&] {
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int thread = 0; thread < kThreads; ++thread)
            threads.emplace_back([&, thread] {
                const std::string text = message(thread);
                for (int line = 0; line < kLines; ++line)
                    own.write("source", 42, "%s", text.c_str());
            });
        for (std::thread& thread : threads)
            thread.join();
    });
    std::map<std::string, int> counts;
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);)
        ++counts[line];
    ASSERT_EQ(counts.size(), static_cast<std::size_t>(kThreads));
    for (int thread = 0; thread < kThreads; ++thread)
        EXPECT_EQ(counts[kPrefix + message(thread)], kLines);
}

TEST(Trace, ThereIsOneForTheWholeModule) {
    Recorder recorder;
    trace().setDestination(&recorder);
    trace().write("source", 42, "text");
    trace().setDestination(nullptr);
    EXPECT_EQ(&trace(), &trace());
    EXPECT_THAT(recorder.lines, ElementsAre(kPrefix + "text\n"));
}

TEST(Trace, DestructionLeavesTheDestinationAlone) {
    Recorder recorder;
    {
        const std::unique_ptr<tTrace> own = std::make_unique<tTrace>();
        own->setDestination(&recorder);
        own->write("source", 42, "text");
    }
    EXPECT_EQ(recorder.lines.size(), 1U);
    tTrace never; // without a lock
}

} // namespace

// The output gathers text into large writes and loses nothing at their borders.
#include "pxidrivertools/ini/iniWrite.h"
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

namespace {

using namespace ini;

// Remembers how much each write was given.
class CountedFiles : public TestFiles {
public:
    Code write(std::FILE* stream, const char* data, std::size_t size) noexcept override {
        pieces.emplace_back(data, size);
        return TestFiles::write(stream, data, size);
    }
    std::vector<std::string> pieces;
};

class IniOutputTest : public testing::Test {
protected:
    template <class Work>
    std::string written(Work work) {
        const std::string path = folder.file("out");
        std::FILE* const stream = files.open(path.c_str(), "wb").stream;
        const IniMemory memory = systemIniMemory();
        const IniBuffer buffer(memory);
        IniFileSink sink(files, stream, kept);
        IniOutput output(sink, buffer.bytes());
        work(output);
        EXPECT_TRUE(output.finish());
        files.close(stream);
        return folder.read("out");
    }

    testsupport::FileFolder folder;
    CountedFiles files;
    std::uint64_t kept = 0;
};

TEST_F(IniOutputTest, LineFeedsBecomeTwoBytesInTextThatMayHaveThem) {
    EXPECT_EQ(written([](IniOutput& out) {
                  out.put("a\n\nb\r");
                  out.put("");
                  out.putAsIs("c\nd");
                  out.endLine();
                  out.putAsIs('e');
              }),
              "a\r\n\r\nb\rc\nd\r\ne");
}

// Pieces that do not divide the size of a write, and one that is longer than two. A process that is
// ended between two writes leaves no half of a line, but of one that no write holds.
TEST_F(IniOutputTest, WritesAreLargeAndOfWholeLinesAndEverythingIsInThem) {
    std::string expected;
    for (int n = 0; n < 30000; ++n)
        expected += numbered("piece", n) + "\r\n";
    const std::string large(150000, 'x');
    const std::string whole = written([&](IniOutput& out) {
        for (int n = 0; n < 30000; ++n)
            out.put(numbered("piece", n) + "\n");
        out.putAsIs(large);
    });
    ASSERT_EQ(whole.size(), expected.size() + large.size());
    EXPECT_TRUE(whole == expected + large);
    ASSERT_GT(files.pieces.size(), 6U);
    std::size_t ofLines = 0;
    while (files.pieces[ofLines].ends_with("\r\n"))
        ++ofLines;
    EXPECT_EQ(ofLines, expected.size() / 65536 + 1) << "all that stands before the long line";
    for (std::size_t n = 0; n + 1 < ofLines; ++n)
        EXPECT_GT(files.pieces[n].size(), 65000U);
}

TEST_F(IniOutputTest, WhatTheFileHasAlreadyIsPassedOver) {
    for (const std::uint64_t already : {0U, 1U, 5U, 12U, 100U}) {
        kept = already;
        const std::string text = "0123456789\r\n";
        EXPECT_EQ(written([&](IniOutput& out) { out.put("0123456789\n"); }),
                  already < text.size() ? text.substr(static_cast<std::size_t>(already)) : "");
    }
}

TEST_F(IniOutputTest, NothingIsWrittenForNothing) {
    EXPECT_EQ(written([](IniOutput&) {}), "");
    EXPECT_TRUE(files.pieces.empty());
}

} // namespace

// The output gathers text into large writes and loses nothing at their borders.
#include "pxidrivertools/ini/iniWrite.h"
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

namespace {

using namespace ini;

// Remembers how much each write was given.
class CountedFiles : public TestFiles {
public:
    bool write(std::FILE* stream, const char* data, std::size_t size) noexcept override {
        sizes.push_back(size);
        return TestFiles::write(stream, data, size);
    }
    std::vector<std::size_t> sizes;
};

class IniOutputTest : public testing::Test {
protected:
    template <class Work>
    std::string written(Work work) {
        const std::string path = folder.file("out");
        std::FILE* const stream = files.open(path.c_str(), "wb");
        IniOutput output(files, stream);
        work(output);
        EXPECT_TRUE(output.finish());
        files.close(stream);
        return folder.read("out");
    }

    testsupport::FileFolder folder;
    CountedFiles files;
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

// Pieces that do not divide the size of a write, and one that is longer than two.
TEST_F(IniOutputTest, WritesAreLargeAndEverythingIsInThem) {
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
    ASSERT_GT(files.sizes.size(), 3U);
    for (std::size_t n = 0; n + 1 < files.sizes.size(); ++n)
        EXPECT_EQ(files.sizes[n], files.sizes.front());
    EXPECT_GE(files.sizes.front(), 65536U);
}

TEST_F(IniOutputTest, NothingIsWrittenForNothing) {
    EXPECT_EQ(written([](IniOutput&) {}), "");
    EXPECT_TRUE(files.sizes.empty());
}

} // namespace

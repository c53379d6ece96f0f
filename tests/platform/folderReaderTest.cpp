#include "platform/folderReader.h"

#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string>

namespace {

using platform::FolderReader;

// What was read, or the error number.
std::string answer(int failure, std::span<const std::uint8_t> bytes) {
    if (failure != 0)
        return "error " + std::to_string(failure);
    return {bytes.begin(), bytes.end()};
}

class FolderReaderOfFiles : public testing::Test {
protected:
    std::string first(const std::string& name, std::size_t most = 64) {
        std::size_t size = 0;
        const int failure = reader_.readFirst(name, std::span(bytes_).first(most), size);
        return answer(failure, std::span(bytes_).first(size));
    }

    std::string line(const std::string& name, std::size_t most = 64) {
        std::size_t size = 0;
        const int failure = reader_.readLine(name, std::span(bytes_).first(most), size);
        return answer(failure, std::span(bytes_).first(size));
    }

    testsupport::TemporaryFolder folder_;
    FolderReader reader_{folder_.path().string()};
    std::array<std::uint8_t, 64> bytes_{};
};

TEST_F(FolderReaderOfFiles, ReadsAsMuchAsIsThereAndFits) {
    (void)folder_.file("function/vendor", "0x10b5\n");
    EXPECT_EQ(first("function/vendor"), "0x10b5\n");
    EXPECT_EQ(line("function/vendor"), "0x10b5\n");
    EXPECT_EQ(first("function/vendor", 4), "0x10");
    EXPECT_EQ(line("function/vendor", 4), "0x10");
    (void)folder_.file("unended", "16");
    EXPECT_EQ(line("unended"), "16");
    (void)folder_.file("empty", "");
    EXPECT_EQ(line("empty"), "");
}

TEST_F(FolderReaderOfFiles, TellsWhatFailed) {
    EXPECT_EQ(first("missing"), "error " + std::to_string(ENOENT));
    EXPECT_EQ(line("missing"), "error " + std::to_string(ENOENT));
    FolderReader missing((folder_.path() / "missing").string());
    std::size_t size = 1;
    EXPECT_EQ(missing.readLine("vendor", bytes_, size), ENOENT);
    EXPECT_EQ(size, 0U);
}

// Each question to the system costs as much as the line itself, and a pipe has no end to be asked
// for.
TEST_F(FolderReaderOfFiles, AsksForNothingBehindTheEndOfALine) {
    const std::string pipe = (folder_.path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::fstream writer(pipe); // for reading, too, so that nobody waits
    writer << "4\n" << std::flush;
    EXPECT_EQ(line("pipe"), "4\n");
    writer << "4\n" << std::flush;
    EXPECT_EQ(first("pipe"), "error " + std::to_string(EAGAIN));
}

} // namespace

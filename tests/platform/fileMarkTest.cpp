// A file's mark is another one as soon as the file is.
#include "platform/fileMark.h"

#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using platform::markOfFile;
using testsupport::TemporaryFolder;

TEST(FileMark, StaysAsLongAsTheFileDoes) {
    const TemporaryFolder folder;
    const fs::path file = folder.file("file", "text");
    const auto before = markOfFile(file);
    ASSERT_TRUE(before);
    EXPECT_EQ(before->size, 4U);
    EXPECT_EQ(markOfFile(file), before);
    EXPECT_TRUE(markOfFile(folder.path()));
    EXPECT_FALSE(markOfFile(folder.path() / "none"));
}

TEST(FileMark, IsAnotherOneAfterEveryChange) {
    const TemporaryFolder folder;
    const fs::path file = folder.file("file", "text");
    const auto before = markOfFile(file);
    const auto time = fs::last_write_time(file);
    fs::last_write_time(file, time + std::chrono::seconds(1));
    EXPECT_NE(markOfFile(file), before) << "the time";
    std::ofstream(file) << "texts";
    fs::last_write_time(file, time);
    EXPECT_NE(markOfFile(file), before) << "the size";
    const fs::path other = folder.file("other", "text");
    fs::last_write_time(other, time);
    fs::rename(other, file);
    EXPECT_NE(markOfFile(file), before) << "the file itself";
}

} // namespace

// A file that is read once: what it tells of itself, where it ends, and what is none.
#include "platform/fileToLoad.h"

#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace {

using platform::FileToLoad;

class PlatformFileToLoad : public testing::Test {
protected:
    std::string name(const std::string& leaf) const { return folder.file(leaf); }

    // Everything that there is to come, asked for in pieces of this size.
    static std::string rest(FileToLoad& file, std::size_t piece) {
        std::string text;
        std::string bytes(piece, '\0');
        for (std::size_t got = piece; got == piece;) {
            got = file.read(bytes.data(), piece);
            text.append(bytes, 0, got);
        }
        EXPECT_FALSE(file.hasFailed());
        return text;
    }

    testsupport::FileFolder folder;
};

TEST_F(PlatformFileToLoad, TellsItsSizeAndItsTimeAndIsReadOnce) {
    const std::string path = folder.write("n\xC3\xA4me", "0123456789");
    FileToLoad file(path.c_str());
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.code(), platform::kNoSystemError);
    EXPECT_EQ(file.lastWriteTime(), platform::lastWriteTime(path.c_str()));
    EXPECT_EQ(file.expected(), 10U);
    EXPECT_FALSE(file.isAtKnownEnd());
    std::string bytes(4, '\0');
    EXPECT_EQ(file.read(bytes.data(), 4), 4U);
    EXPECT_EQ(bytes, "0123");
    EXPECT_EQ(file.expected(), 6U);
    EXPECT_FALSE(file.isAtKnownEnd());
    EXPECT_EQ(rest(file, 4), "456789");
    EXPECT_EQ(file.expected(), 0U);
    EXPECT_TRUE(file.isAtKnownEnd());
}

TEST_F(PlatformFileToLoad, ItsTimeIsItsOwnWhateverStandsAtThePath) {
    const std::string path = folder.write("file", "old");
    const auto before = platform::lastWriteTime(path.c_str());
    FileToLoad file(path.c_str());
    std::filesystem::rename(folder.write("other", "newer"), path);
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() +
                                               std::chrono::hours(1));
    EXPECT_EQ(file.lastWriteTime(), before);
    EXPECT_EQ(rest(file, 100), "old");
}

TEST_F(PlatformFileToLoad, OneThatShrinksEndsWhereItEnds) {
    const std::string path = folder.write("file", "0123456789");
    FileToLoad file(path.c_str());
    std::filesystem::resize_file(path, 7);
    EXPECT_EQ(rest(file, 100), "0123456");
    EXPECT_FALSE(file.isAtKnownEnd());
    EXPECT_FALSE(file.hasFailed());
}

TEST_F(PlatformFileToLoad, OneWithoutASizeIsReadToItsEnd) {
    FileToLoad file("/proc/self/status");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.expected(), 0U);
    const std::string text = rest(file, 50);
    EXPECT_TRUE(text.starts_with("Name:")) << text;
    EXPECT_NE(text.find("nonvoluntary_ctxt_switches"), std::string::npos);
    EXPECT_FALSE(file.isAtKnownEnd());
}

TEST_F(PlatformFileToLoad, TheNullDeviceIsAnEmptyFile) {
    FileToLoad file("/dev/null");
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(rest(file, 50), "");
}

TEST_F(PlatformFileToLoad, WhatIsNoFileIsNotOpened) {
    const auto codeOf = [&](const std::string& path) {
        const FileToLoad file(path.c_str());
        EXPECT_FALSE(file.isOpen());
        EXPECT_EQ(file.lastWriteTime(), std::nullopt);
        return static_cast<int>(file.code());
    };
    EXPECT_EQ(codeOf(name("none")), ENOENT);
    std::filesystem::create_directory(name("folder"));
    EXPECT_EQ(codeOf(name("folder")), EISDIR);
    ASSERT_EQ(mkfifo(name("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(codeOf(name("pipe")), EMEDIUMTYPE);
    EXPECT_EQ(codeOf("/dev/zero"), EMEDIUMTYPE);
}

// The memory of a process has a file whose first bytes nobody may read.
TEST_F(PlatformFileToLoad, AReadThatFailsIsNoEnd) {
    FileToLoad file("/proc/self/mem");
    ASSERT_TRUE(file.isOpen());
    std::string bytes(10, '\0');
    EXPECT_EQ(file.read(bytes.data(), bytes.size()), 0U);
    EXPECT_TRUE(file.hasFailed());
}

} // namespace

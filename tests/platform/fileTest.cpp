// What the product needs of the system's files.
#include "platform/file.h"

#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace platform;

class PlatformFile : public testing::Test {
protected:
    std::string name(const std::string& leaf) const { return folder.file(leaf); }

    testsupport::FileFolder folder;
};

TEST_F(PlatformFile, StreamsAreOpenedWithTheModesOfFopen) {
    EXPECT_EQ(openStream(name("none").c_str(), "rb"), nullptr);
    EXPECT_NE(lastSystemCode(), kNoSystemError);
    {
        const Stream stream = openStream(name("n\xC3\xA4me").c_str(), "wb");
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(std::fputs("text\n", stream.get()), 1);
    }
    EXPECT_EQ(folder.read("n\xC3\xA4me"), "text\n");
    EXPECT_EQ(openStream(name("none/file").c_str(), "wb"), nullptr);
}

TEST_F(PlatformFile, TheLastWriteTimeGrowsWithTheFiles) {
    EXPECT_EQ(lastWriteTime(name("none").c_str()), std::nullopt);
    folder.write("file", "");
    const auto time = std::filesystem::last_write_time(name("file"));
    const auto first = lastWriteTime(name("file").c_str());
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(lastWriteTime(name("file").c_str()), first);
    std::filesystem::last_write_time(name("file"), time + std::chrono::milliseconds(1));
    EXPECT_GT(lastWriteTime(name("file").c_str()), first);
    std::filesystem::last_write_time(name("file"), time - std::chrono::seconds(1));
    EXPECT_LT(lastWriteTime(name("file").c_str()), first);
}

TEST_F(PlatformFile, AStreamIsForcedToTheDisk) {
    const Stream stream = openStream(name("file").c_str(), "wb");
    std::fputs("x", stream.get());
    std::fflush(stream.get());
    EXPECT_EQ(forceToDisk(stream.get()), kNoSystemError);
}

TEST_F(PlatformFile, FilesAreRemovedAndFoldersAreNot) {
    folder.write("file", "");
    EXPECT_EQ(removeFile(name("file").c_str()), kNoSystemError);
    EXPECT_FALSE(folder.has("file"));
    EXPECT_NE(removeFile(name("file").c_str()), kNoSystemError);
    std::filesystem::create_directory(name("sub"));
    EXPECT_NE(removeFile(name("sub").c_str()), kNoSystemError);
    EXPECT_TRUE(folder.has("sub"));
}

TEST_F(PlatformFile, AFileIsRestrictedToItsOwner) {
    using std::filesystem::perms;
    folder.write("file", "");
    std::filesystem::permissions(name("file"),
                                 perms::owner_all | perms::group_all | perms::others_all);
    const Stream stream = openStream(name("file").c_str(), "rb");
    EXPECT_EQ(restrictToOwner(stream.get(), name("file").c_str()), 0);
    EXPECT_EQ(std::filesystem::status(name("file")).permissions(),
              perms::owner_read | perms::owner_write);
}

std::string split(const std::string& path) {
    const PathParts parts = splitPath(path);
    EXPECT_EQ(parts.drive + parts.directory + parts.name + parts.extension, path);
    return parts.drive + "|" + parts.directory + "|" + parts.name + "|" + parts.extension;
}

TEST_F(PlatformFile, PathsAreSplitAtTheLastSeparatorAndTheLastDotBehindIt) {
    EXPECT_EQ(split("/a/b/c.d.e"), "|/a/b/|c.d|.e");
    EXPECT_EQ(split("c.d"), "||c|.d");
    EXPECT_EQ(split("/a.b/c"), "|/a.b/|c|");
    EXPECT_EQ(split("/a/.b"), "|/a/||.b");
    EXPECT_EQ(split("/a/b."), "|/a/|b|.");
    EXPECT_EQ(split("/a/"), "|/a/||");
    EXPECT_EQ(split(""), "|||");
}

} // namespace

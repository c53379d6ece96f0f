// Files that are written anew where they stand.
#include "platform/fileInPlace.h"

#include "platform/stream.h"
#include "tests/support/fileFolder.h"
#include "tests/support/otherUser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace {

using namespace platform;
namespace fs = std::filesystem;

class PlatformFileInPlace : public testing::Test {
protected:
    [[nodiscard]] std::string name(const std::string& leaf) const { return folder.file(leaf); }

    // The error number of opening, 0 when the file was opened.
    [[nodiscard]] int opening(const std::string& leaf) const {
        return openInPlace(name(leaf).c_str()) ? 0 : errno;
    }

    [[nodiscard]] fs::perms permissions(const std::string& leaf) const {
        return fs::status(name(leaf)).permissions();
    }

    testsupport::FileFolder folder;
};

TEST_F(PlatformFileInPlace, OpeningKeepsTheContentUntilItIsWrittenOver) {
    folder.write("file", "old content");
    const Stream stream = openInPlace(name("file").c_str());
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(folder.read("file"), "old content");
    EXPECT_EQ(keepFront(stream.get(), 4), 4U);
    EXPECT_EQ(writeStream(stream.get(), "text", 4), 4U);
    EXPECT_TRUE(flushStream(stream.get()));
    EXPECT_EQ(folder.read("file"), "old textent");
    EXPECT_EQ(cutBehind(stream.get(), 8), kNoSystemError);
    EXPECT_EQ(folder.read("file"), "old text");
}

TEST_F(PlatformFileInPlace, AFileThatHasTheSizeAlreadyIsNotCut) {
    folder.write("file", "content");
    const fs::file_time_type long_ago = fs::last_write_time(name("file")) - std::chrono::hours(1);
    fs::last_write_time(name("file"), long_ago);
    const Stream stream = openInPlace(name("file").c_str());
    EXPECT_EQ(cutBehind(stream.get(), 7), kNoSystemError);
    EXPECT_EQ(fs::last_write_time(name("file")), long_ago);
}

TEST_F(PlatformFileInPlace, AMissingFileIsMadeForItsOwnerUnderAnyMask) {
    for (const mode_t mask : {mode_t{0}, mode_t{0777}}) {
        const mode_t before = umask(mask);
        EXPECT_EQ(opening("file"), 0);
        umask(before);
        EXPECT_EQ(permissions("file"), fs::perms::owner_read | fs::perms::owner_write);
        fs::remove(name("file"));
    }
    folder.write("file", "");
    fs::permissions(name("file"), fs::perms(0664));
    EXPECT_EQ(opening("file"), 0);
    EXPECT_EQ(permissions("file"), fs::perms(0664)) << "one that is there keeps its own";
}

TEST_F(PlatformFileInPlace, WhatIsNoFileIsRefusedAndNobodyWaits) {
    ASSERT_EQ(mkfifo(name("pipe").c_str(), 0600), 0);
    fs::create_directory(name("folder"));
    fs::create_symlink("/dev/full", name("device"));
    EXPECT_EQ(opening("pipe"), EMEDIUMTYPE);
    EXPECT_EQ(opening("folder"), EISDIR);
    EXPECT_EQ(opening("device"), EMEDIUMTYPE);
    EXPECT_EQ(opening("none/file"), ENOENT);
}

// A name file that leads there is a host's way to keep no names.
TEST_F(PlatformFileInPlace, TheNullDeviceTakesEverything) {
    fs::create_symlink("/dev/null", name("null"));
    const Stream stream = openInPlace(name("null").c_str());
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(secureSpace(stream.get(), 1000), kNoSystemError);
    keepFront(stream.get(), 10);
    EXPECT_EQ(writeStream(stream.get(), "text", 4), 4U);
    EXPECT_EQ(cutBehind(stream.get(), 1000), kNoSystemError);
}

TEST_F(PlatformFileInPlace, ItIsNotPassedOnToProgramsThatAreStarted) {
    const Stream stream = openInPlace(name("file").c_str());
    EXPECT_NE(fcntl(fileno(stream.get()), F_GETFD) & FD_CLOEXEC, 0);
    const Stream emptied = openStream(name("file").c_str(), "wb");
    EXPECT_NE(fcntl(fileno(emptied.get()), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(PlatformFileInPlace, OnlyTheUsersOwnLinksAndRootsAreFollowed) {
    folder.write("file", "content");
    fs::create_symlink("file", name("first"));
    fs::create_symlink(name("first"), name("second"));
    fs::create_symlink("missing", name("dangling"));
    fs::create_symlink("circle", name("circle"));
    EXPECT_EQ(opening("second"), 0);
    EXPECT_EQ(opening("dangling"), 0);
    EXPECT_TRUE(folder.has("missing"));
    EXPECT_EQ(opening("circle"), ELOOP);
    const bool isAnothers = testsupport::OtherUser::take(name("first"));
    EXPECT_EQ(opening("first"), isAnothers ? EACCES : 0);
    EXPECT_EQ(opening("second"), isAnothers ? EACCES : 0) << "also behind one's own";
    EXPECT_NE(openStream(name("first").c_str(), "r+b") != nullptr, isAnothers);
    EXPECT_NE(openStream(name("first").c_str(), "a") != nullptr, isAnothers);
    EXPECT_TRUE(openStream(name("first").c_str(), "rb")) << "reading does no harm";
}

TEST_F(PlatformFileInPlace, RoomIsSecuredWithoutAChangeToBeSeen) {
    folder.write("file", "content");
    const Stream stream = openInPlace(name("file").c_str());
    EXPECT_EQ(secureSpace(stream.get(), 0), kNoSystemError);
    EXPECT_EQ(secureSpace(stream.get(), 100000), kNoSystemError);
    struct stat status = {};
    ASSERT_EQ(fstat(fileno(stream.get()), &status), 0);
    EXPECT_EQ(status.st_size, 7);
    EXPECT_GE(status.st_blocks * 512, 100000);
    EXPECT_EQ(folder.read("file"), "content");
}

TEST_F(PlatformFileInPlace, WhereThereCanBeNoRoomTheFileIsAsItWas) {
    folder.write("file", "content");
    const auto time = fs::last_write_time(name("file"));
    const Stream stream = openInPlace(name("file").c_str());
    constexpr std::uint64_t kBeyondAnyFile = std::uint64_t{1} << 62;
    EXPECT_EQ(secureSpace(stream.get(), kBeyondAnyFile), static_cast<SystemCode>(EFBIG));
    EXPECT_EQ(secureSpace(stream.get(), ~std::uint64_t{0}), static_cast<SystemCode>(EFBIG));
    EXPECT_EQ(folder.read("file"), "content");
    EXPECT_EQ(fs::last_write_time(name("file")), time);
}

// A write beyond it would end the process.
TEST_F(PlatformFileInPlace, TheProcesssLimitCountsAsRoom) {
    const Stream stream = openInPlace(name("file").c_str());
    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit limit = before;
    limit.rlim_cur = 1000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(secureSpace(stream.get(), 1000), kNoSystemError);
    EXPECT_EQ(secureSpace(stream.get(), 1001), static_cast<SystemCode>(EFBIG));
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
}

} // namespace

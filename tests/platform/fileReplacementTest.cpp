// New files that take the place of others.
#include "platform/fileReplacement.h"

#include "platform/stream.h"
#include "tests/support/fileFolder.h"
#include "tests/support/otherUser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

namespace {

using namespace platform;
namespace fs = std::filesystem;

class PlatformFileReplacement : public testing::Test {
protected:
    [[nodiscard]] std::string name(const std::string& leaf) const { return folder.file(leaf); }

    [[nodiscard]] struct stat statusOf(const std::string& leaf) const {
        struct stat status = {};
        EXPECT_EQ(lstat(name(leaf).c_str(), &status), 0);
        return status;
    }

    testsupport::FileFolder folder;
};

TEST_F(PlatformFileReplacement, AFileIsCreatedOnceOnly) {
    EXPECT_TRUE(createExclusively(name("file").c_str()).stream);
    EXPECT_EQ(folder.read("file"), "");
    folder.write("file", "content");
    const NewFile taken = createExclusively(name("file").c_str());
    EXPECT_FALSE(taken.stream);
    EXPECT_FALSE(taken.isThere);
    EXPECT_TRUE(isNameTaken(taken.code));
    EXPECT_EQ(folder.read("file"), "content");
    const NewFile nowhere = createExclusively(name("none/file").c_str());
    EXPECT_EQ(nowhere.code, static_cast<SystemCode>(ENOENT));
    EXPECT_FALSE(isNameTaken(nowhere.code));
    EXPECT_FALSE(isNameTaken(kNoSystemError));
}

TEST_F(PlatformFileReplacement, ADanglingLinkIsATakenName) {
    fs::create_symlink("elsewhere", name("link"));
    EXPECT_TRUE(isNameTaken(createExclusively(name("link").c_str()).code));
    EXPECT_FALSE(folder.has("elsewhere"));
}

TEST_F(PlatformFileReplacement, ANewFileIsItsOwnersUnderAnyMask) {
    for (const mode_t mask : {mode_t{0}, mode_t{0777}}) {
        const mode_t before = umask(mask);
        const NewFile file = createExclusively(name("file").c_str());
        umask(before);
        EXPECT_EQ(statusOf("file").st_mode & 07777U, 0600U);
        EXPECT_NE(fcntl(fileno(file.stream.get()), F_GETFD) & FD_CLOEXEC, 0);
        fs::remove(name("file"));
    }
}

// Whoever may write to the folder may put something else where the new file was.
TEST_F(PlatformFileReplacement, TheStreamIsTheCreatedFilesWhateverHasItsName) {
    folder.write("victim", "content");
    const NewFile file = createExclusively(name("file").c_str());
    ASSERT_TRUE(file.stream);
    fs::remove(name("file"));
    fs::create_symlink("victim", name("file"));
    EXPECT_EQ(writeStream(file.stream.get(), "new", 3), 3U);
    EXPECT_TRUE(flushStream(file.stream.get()));
    EXPECT_EQ(folder.read("victim"), "content");
}

TEST_F(PlatformFileReplacement, LinksAreFollowedToTheFileThatIsMeant) {
    fs::create_directory(name("elsewhere"));
    fs::create_symlink("elsewhere/names", name("link"));
    std::string path = name("link");
    EXPECT_EQ(followLinks(path), kNoSystemError);
    EXPECT_EQ(path, name("elsewhere/names"));
    EXPECT_EQ(followLinks(path), kNoSystemError) << "there is none yet";
    const bool isAnothers = testsupport::OtherUser::take(name("link"));
    path = name("link");
    EXPECT_EQ(followLinks(path), static_cast<SystemCode>(isAnothers ? EACCES : 0));
}

TEST_F(PlatformFileReplacement, OwnerGroupAndPermissionsAreTaken) {
    folder.write("old", "");
    ASSERT_EQ(chmod(name("old").c_str(), 0640), 0);
    testsupport::OtherUser::take(name("old"));
    const Stream from = openStream(name("old").c_str(), "rb");
    const NewFile to = createExclusively(name("new").c_str());
    EXPECT_EQ(takeAccess(from.get(), to.stream.get()), kNoSystemError);
    const struct stat status = statusOf("new");
    EXPECT_EQ(status.st_uid, statusOf("old").st_uid);
    EXPECT_EQ(status.st_gid, statusOf("old").st_gid);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

// Whoever is of the group that a file is shared with may write it, and cannot give it away.
TEST_F(PlatformFileReplacement, OfASharedFileTheGroupAndPermissionsAreTaken) {
    folder.write("shared", "");
    ASSERT_EQ(chmod(name("shared").c_str(), 0664), 0);
    folder.write("private", "");
    ASSERT_EQ(chmod(name("private").c_str(), 0644), 0);
    if (geteuid() != 0)
        return; // who could make them another's
    ASSERT_EQ(chmod(name(".").c_str(), 0777), 0);
    for (const char* file : {"shared", "private"})
        ASSERT_EQ(chown(name(file).c_str(), 0, testsupport::OtherUser::kGroup), 0);
    const auto takenByMember = [&](const char* file) {
        if (setgid(testsupport::OtherUser::kGroup) != 0 ||
            setuid(testsupport::OtherUser::kUser) != 0)
            _exit(255);
        const Stream from = openStream(name(file).c_str(), "rb");
        const NewFile to = createExclusively(name("new").c_str());
        _exit(static_cast<int>(takeAccess(from.get(), to.stream.get())));
    };
    EXPECT_EXIT(takenByMember("shared"), testing::ExitedWithCode(0), "");
    EXPECT_EQ(statusOf("new").st_uid, testsupport::OtherUser::kUser);
    EXPECT_EQ(statusOf("new").st_gid, testsupport::OtherUser::kGroup);
    EXPECT_EQ(statusOf("new").st_mode & 07777U, 0664U);
    ASSERT_EQ(removeFile(name("new").c_str()), kNoSystemError);
    EXPECT_EXIT(takenByMember("private"), testing::ExitedWithCode(EPERM), "");
}

// As setfacl writes it: version 2, then a tag, permissions and an identity each; the user 12345 may
// read.
TEST_F(PlatformFileReplacement, TheAccessListIsTaken) {
    constexpr const char* kName = "system.posix_acl_access";
    constexpr std::array<unsigned char, 44> kList = {
        2, 0,    0,    0,    0x01, 0,    6,    0, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0,    4,
        0, 0x39, 0x30, 0,    0,    0x04, 0,    0, 0,    0xFF, 0xFF, 0xFF, 0xFF, 0x10, 0,
        4, 0,    0xFF, 0xFF, 0xFF, 0xFF, 0x20, 0, 0,    0,    0xFF, 0xFF, 0xFF, 0xFF};
    folder.write("old", "");
    ASSERT_EQ(setxattr(name("old").c_str(), kName, kList.data(), kList.size(), 0), 0)
        << "set TMPDIR to where files have access lists: errno " << errno;
    const Stream from = openStream(name("old").c_str(), "rb");
    const NewFile to = createExclusively(name("new").c_str());
    EXPECT_EQ(takeAccess(from.get(), to.stream.get()), kNoSystemError);
    std::array<unsigned char, 100> taken{};
    EXPECT_EQ(getxattr(name("new").c_str(), kName, taken.data(), taken.size()),
              static_cast<ssize_t>(kList.size()));
    EXPECT_TRUE(std::equal(kList.begin(), kList.end(), taken.begin()));

    // A list that the new file has from its folder is not the old file's.
    folder.write("plain", "");
    ASSERT_EQ(chmod(name("plain").c_str(), 0640), 0);
    const Stream plain = openStream(name("plain").c_str(), "rb");
    EXPECT_EQ(takeAccess(plain.get(), to.stream.get()), kNoSystemError);
    EXPECT_EQ(getxattr(name("new").c_str(), kName, taken.data(), taken.size()), -1);
    EXPECT_EQ(statusOf("new").st_mode & 07777U, 0640U);
}

TEST_F(PlatformFileReplacement, RenamingReplacesTheTarget) {
    folder.write("from", "new");
    folder.write("to", "old");
    EXPECT_EQ(renameReplacing(name("from").c_str(), name("to").c_str()), kNoSystemError);
    EXPECT_EQ(folder.read("to"), "new");
    EXPECT_FALSE(folder.has("from"));
    EXPECT_NE(renameReplacing(name("from").c_str(), name("to").c_str()), kNoSystemError);
    EXPECT_EQ(folder.read("to"), "new");
}

} // namespace

// Folders that nobody else may look into.
#include "platform/privateFolder.h"

#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

TEST(PlatformPrivateFolder, IsItsOwnersUnderAnyMask) {
    const testsupport::FileFolder folder;
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{0700}, mode_t{0777}}) {
        const mode_t before = umask(mask);
        EXPECT_EQ(platform::createPrivateFolder(folder.file("own")), platform::kNoSystemError);
        umask(before);
        EXPECT_EQ(fs::status(folder.file("own")).permissions(), fs::perms::owner_all);
        fs::remove(folder.file("own"));
    }
}

TEST(PlatformPrivateFolder, TakesNobodysPlace) {
    const testsupport::FileFolder folder;
    fs::create_directory(folder.file("elsewhere"));
    fs::create_symlink("elsewhere", folder.file("link"));
    for (const char* taken : {"elsewhere", "link"}) {
        const platform::SystemCode code = platform::createPrivateFolder(folder.file(taken));
        EXPECT_TRUE(platform::isFolderNameTaken(code));
    }
    const platform::SystemCode nowhere = platform::createPrivateFolder(folder.file("none/own"));
    EXPECT_EQ(nowhere, static_cast<platform::SystemCode>(ENOENT));
    EXPECT_FALSE(platform::isFolderNameTaken(nowhere));
}

} // namespace

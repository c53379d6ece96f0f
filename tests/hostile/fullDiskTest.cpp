// Disks without room, for content or for another file: the reason is told, and nothing is lost.
// The disk is a small one in memory that only the test's commands see.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/command.h"
#include "tests/support/fileText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

namespace fs = std::filesystem;
using testsupport::CommandResult;
using testsupport::TemporaryFolder;

class FullDisk : public testing::Test {
protected:
    // Runs a shell's words with the small disk as the state folder.
    [[nodiscard]] CommandResult run(const std::string& size, const std::string& words) const {
        const std::string disk = (folder_.path() / "disk").string();
        fs::create_directories(disk);
        const std::string script =
            "mount -t tmpfs -o " + size + " tmpfs " + disk + " && cd " + disk +
            " && tavctl() { " TAVCTL_FILE " \"$@\" --state " + disk +
            " 2>&1 && echo exit 0 || echo exit $?; } && onBus() { tavctl \"$@\" --dump " +
            testplugin::kSampleDump.string() + " --descriptions " +
            testplugin::kSampleDescriptions.string() + "; } && " + words;
        const TemporaryFolder scripts;
        const fs::path file = scripts.file("script.sh", script);
        CommandResult result =
            testsupport::runCommand("unshare " + mapped() + "--mount sh -e " + file.string());
        EXPECT_EQ(result.exitStatus, 0)
            << "mounting takes root, or user namespaces: " << result.output;
        return result;
    }

    // What somebody needs who may not mount as he is.
    static std::string mapped() {
        const bool mayMount = testsupport::runCommand("unshare --mount true").exitStatus == 0;
        return mayMount ? "" : "--user --map-root-user ";
    }

    // How often a text occurs.
    static int count(const CommandResult& result, const std::string& text) {
        int found = 0;
        for (std::size_t at = result.output.find(text); at != std::string::npos;
             at = result.output.find(text, at + 1))
            ++found;
        return found;
    }

    TemporaryFolder folder_;
};

// Names that fill nearly all of a page, so that the new ones need another.
constexpr const char* kNames =
    "i=10; while [ $i -lt 96 ]; do printf '[MR80:%d]\\r\\nModel = Gone\\r\\nTerminalName = "
    "X%d\\r\\n\\r\\n' $i $i; i=$((i+1)); done > zotavpci.ini; chmod 640 zotavpci.ini; ";

TEST_F(FullDisk, NewNamesAreNotStoredAndTheOldOnesStay) {
    const CommandResult result =
        run("size=16k", kNames + std::string("touch zotavpci.loc; cp zotavpci.ini before; "
                                             "cat /dev/zero > fill 2>/dev/null || true; "
                                             "onBus list; cmp before zotavpci.ini; "
                                             "onBus list; cmp before zotavpci.ini; "
                                             "rm fill; onBus list; "
                                             "grep -c Gone zotavpci.ini; stat -c %a zotavpci.ini"));
    EXPECT_EQ(count(result, "tavctl: nothing is stored ("), 2) << result.output;
    EXPECT_EQ(count(result, "zotavpci.ini: No space left on device)\n"), 2) << result.output;
    EXPECT_EQ(count(result, "\nTAV1*  "), 2) << result.output;
    EXPECT_EQ(count(result, "exit 0\n"), 3) << result.output;
    EXPECT_EQ(count(result, "exit 0\n86\n640\n"), 1) << "with room again: " << result.output;
}

// Where nothing is new, nothing needs room.
TEST_F(FullDisk, KnownDevicesAreListed) {
    const CommandResult result = run("size=16k", "onBus list >first; "
                                                 "cat /dev/zero > fill 2>/dev/null || true; "
                                                 "onBus list | cmp - first");
    EXPECT_EQ(result.output, "");
}

TEST_F(FullDisk, FilesThatCannotBeMadeAreToldWithTheReason) {
    const CommandResult lock = run("nr_inodes=2", "touch fill; onBus list");
    EXPECT_EQ(count(lock, "tavctl: nothing is stored ("), 1) << lock.output;
    EXPECT_EQ(count(lock, ": No space left on device)\n"), 1) << lock.output;
    const CommandResult names = run("nr_inodes=2", "touch zotavpci.loc; onBus list");
    EXPECT_EQ(count(names, ": No space left on device)\n"), 1) << names.output;
    EXPECT_EQ(count(names, "exit 0\n"), 1) << names.output;
}

TEST_F(FullDisk, ABackupOrRestoreWithoutRoomLeavesWhatThereWas) {
    const CommandResult result =
        run("size=16k", kNames + std::string("cp zotavpci.ini before; "
                                             "echo '[MR00:77]' > others; "
                                             "cat /dev/zero > fill 2>/dev/null || true; "
                                             "tavctl names backup saved.ini; "
                                             "tavctl names restore --force others; "
                                             "cmp before zotavpci.ini; ls -A | tr '\\n' ' '"));
    EXPECT_EQ(count(result, "tavctl: write terminal names ("), 1) << result.output;
    EXPECT_EQ(count(result, "tavctl: keep terminal names ("), 1) << result.output;
    EXPECT_EQ(count(result, "): No space left on device\nexit 3\n"), 2) << result.output;
    EXPECT_EQ(count(result, "before fill others zotavpci.ini zotavpci.loc "), 1) << result.output;
}

TEST_F(FullDisk, AChangeOfNamesWithoutRoomLeavesWhatThereWas) {
    const CommandResult result =
        run("size=16k", kNames + std::string("touch zotavpci.loc; cp zotavpci.ini before; "
                                             "cat /dev/zero > fill 2>/dev/null || true; "
                                             "tavctl names rename X10 X777; "
                                             "tavctl names forget --force X11; "
                                             "cmp before zotavpci.ini; ls -A | tr '\\n' ' '; "
                                             "rm fill; tavctl names rename X10 X777; "
                                             "cmp -s before zotavpci.ini || echo changed"));
    EXPECT_EQ(count(result, "tavctl: keep terminal names ("), 2) << result.output;
    EXPECT_EQ(count(result, "): No space left on device\nexit 3\n"), 2) << result.output;
    EXPECT_EQ(count(result, "before fill zotavpci.ini zotavpci.loc "), 1) << result.output;
    EXPECT_EQ(count(result, "exit 0\nchanged\n"), 1) << "with room again: " << result.output;
}

TEST_F(FullDisk, AChangeOfNamesThatMayOnlyBeReadIsToldWithTheReason) {
    const CommandResult result =
        run("size=64k", kNames + std::string("touch zotavpci.loc; cp zotavpci.ini before; "
                                             "mount -o remount,ro $PWD; "
                                             "tavctl names rename X10 X777; "
                                             "tavctl names forget --force X11; "
                                             "cmp before zotavpci.ini; ls -A | tr '\\n' ' '"));
    EXPECT_EQ(count(result, "): Read-only file system\nexit 3\n"), 2) << result.output;
    EXPECT_EQ(count(result, "before zotavpci.ini zotavpci.loc "), 1) << result.output;
}

} // namespace

// State folders that cannot be written, met by a user who may not do everything.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/command.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using testplugin::PluginCopy;
using testplugin::SampleMachine;
using testsupport::CommandResult;

constexpr fs::perms kReadable =
    fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
constexpr fs::perms kFolder =
    kReadable | fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec;

// tavctl beside copies of the libraries, in a folder that every user may read.
CommandResult listAsOrdinaryUser(const SampleMachine& machine) {
    const PluginCopy plugin;
    const fs::path tavctl = plugin.folder() / "tavctl";
    fs::copy_file(TAVCTL_FILE, tavctl);
    const fs::path descriptions = plugin.folder() / "descriptions";
    fs::copy(testplugin::kSampleDescriptions, descriptions, fs::copy_options::recursive);
    const fs::path dump = plugin.folder() / "bus.dump";
    fs::copy_file(testplugin::kSampleDump, dump);
    fs::permissions(plugin.folder(), kFolder);
    fs::permissions(machine.state(), kFolder);
    const auto who = testsupport::runCommand("id -u");
    const std::string asNobody =
        who.output == "0\n" ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    return testsupport::runCommand(asNobody + tavctl.string() + " list --dump " + dump.string() +
                                   " --descriptions " + descriptions.string() + " --state " +
                                   machine.state().string() + " 2>&1");
}

// The folder belongs to the test's user; nobody else, and with the files read-only not even that
// user, may write to it.
void writeState(const SampleMachine& machine, const std::string& names, fs::perms lockFile,
                fs::perms nameFile) {
    const auto write = [&](const char* name, const std::string& text, fs::perms permissions) {
        const fs::path path = machine.state() / name;
        std::FILE* stream = std::fopen(path.c_str(), "wb");
        ASSERT_NE(stream, nullptr);
        std::fwrite(text.data(), 1, text.size(), stream);
        std::fclose(stream);
        fs::permissions(path, permissions);
    };
    write("zotavpci.loc", "", lockFile);
    write("zotavpci.ini", names, nameFile);
}

constexpr fs::perms kWritable =
    kReadable | fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
const std::string kNames = "; by hand\n[MR00:00,20]\nModel=TAV-B3 Switch Box\nTerminalName=TAV5\n";

TEST(StateFolder, LockFileThatCannotBeOpenedIsToldAndLeavesTheNames) {
    const SampleMachine machine;
    writeState(machine, kNames, kReadable, kReadable);
    const CommandResult result = listAsOrdinaryUser(machine);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("nothing is stored (" + machine.state().string() +
                                 ": Permission denied)"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("\nTAV5 "), std::string::npos) << result.output;
    EXPECT_EQ(machine.names(), kNames);
}

TEST(StateFolder, NameFileThatCannotBeWrittenIsToldAndLeavesTheNames) {
    const SampleMachine machine;
    writeState(machine, kNames, kWritable, kReadable);
    const CommandResult result = listAsOrdinaryUser(machine);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    EXPECT_NE(result.output.find("nothing is stored (" + machine.state().string() +
                                 "/zotavpci.ini: Permission denied)"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("\nTAV5 "), std::string::npos) << result.output;
    EXPECT_EQ(machine.names(), kNames);
}

TEST(StateFolder, FolderInPlaceOfTheNameFileCannotBeRead) {
    const SampleMachine machine;
    fs::create_directory(machine.state() / "zotavpci.ini");
    const PluginCopy plugin;
    EXPECT_EQ(plugin.initialize(), -313316);
}

TEST(StateFolder, NewFilesAreReadableAndWritableByTheirOwnerOnly) {
    const SampleMachine machine;
    const PluginCopy plugin;
    ASSERT_EQ(plugin.initialize(), 0);
    for (const char* name : {"zotavpci.ini", "zotavpci.loc"})
        EXPECT_EQ(fs::status(machine.state() / name).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write)
            << name;
}

} // namespace

// A path is a dump or stands for /sys, by what it is.
#include "pcibus/readBus.h"

#include "tests/support/describe.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

using pcibus::BusError;
using pcibus::readBus;
using testsupport::describe;
using testsupport::TemporaryFolder;

TEST(ReadBus, AFileIsADump) {
    const testsupport::machines::Switch machine;
    const TemporaryFolder folder;
    const auto file = folder.file("recorded", machine.bus.dump({.domain = 0, .verbose = true}));
    EXPECT_EQ(describe(readBus(file).functions()), describe(machine.bus.functions()));
}

TEST(ReadBus, AFolderStandsForSys) {
    const testsupport::machines::Switch machine;
    const TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path());
    EXPECT_EQ(describe(readBus(folder.path()).functions()), describe(machine.bus.functions()));
}

TEST(ReadBus, APipeIsADump) {
    const testsupport::BusBuilder machine = testsupport::bigBus(); // far more than a pipe holds
    const TemporaryFolder folder;
    const std::string pipe = (folder.path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(pipe, std::ios::binary) << machine.dump(); });
    const auto functions = describe(readBus(pipe).functions());
    writer.join();
    EXPECT_EQ(functions, describe(machine.functions()));
}

TEST(ReadBus, APipeThatNobodyWritesToIsRefused) {
    const TemporaryFolder folder;
    const std::string pipe = (folder.path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    try {
        readBus(pipe);
        FAIL() << "accepted";
    } catch (const BusError& error) {
        EXPECT_EQ(error.what(), pipe + ": Broken pipe");
    }
}

TEST(ReadBus, APathThatIsNotThereIsRefusedByName) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "nothing";
    try {
        readBus(path);
        FAIL() << "accepted";
    } catch (const BusError& error) {
        EXPECT_EQ(error.what(), path.string() + ": No such file or directory");
    }
}

TEST(ReadBus, AFileInPlaceOfAFolderOfDevicesIsRefused) {
    const TemporaryFolder folder;
    (void)folder.file("bus/pci/devices", "");
    try {
        readBus(folder.path());
        FAIL() << "accepted";
    } catch (const BusError& error) {
        EXPECT_EQ(error.what(), (folder.path() / "bus/pci/devices").string() + ": Not a directory");
    }
}

} // namespace

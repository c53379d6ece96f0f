// Copied trees of sysfs files, read as an ordinary user reads the live ones.
#include "pcibus/sysfs.h"

#include "tests/support/describe.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using pcibus::Bus;
using pcibus::BusError;
using pcibus::LeftOut;
using pcibus::PciFunction;
using pcibus::readSysfs;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::describe;

class Sysfs : public testing::Test {
protected:
    [[nodiscard]] fs::path root() const { return folder_.path() / "sys"; }
    [[nodiscard]] fs::path devices() const { return root() / "bus/pci/devices"; }

    // Writes a file of the function at an address; the function's folder is made where needed.
    void put(const std::string& address, const std::string& name, const std::string& content) {
        (void)folder_.file("sys/bus/pci/devices/" + address + "/" + name, content);
    }

    // A bridge with nothing but its configuration.
    void putBridge(const std::string& address) {
        std::string config(64, '\0');
        config[0x0E] = 1;
        config[0x19] = 1;
        put(address, "config", config);
    }

    // A bridge with a link file of this content, as read back.
    PciFunction withFile(const std::string& name, const std::string& content) {
        putBridge("0000:00:01.0");
        put("0000:00:01.0", name, content);
        return readSysfs(root()).functions().front();
    }

    [[nodiscard]] std::string refusal() const {
        try {
            readSysfs(root());
        } catch (const BusError& error) {
            return error.what();
        }
        return "accepted";
    }

private:
    testsupport::TemporaryFolder folder_;
};

TEST_F(Sysfs, ReadsEveryFunctionOfAMachine) {
    const testsupport::machines::Switch machine;
    machine.bus.writeSysfs(root());
    EXPECT_EQ(describe(readSysfs(root()).functions()), describe(machine.bus.functions()));
}

TEST_F(Sysfs, TakesCapabilitiesFromFilesAlsoWhereTheConfigurationIsLonger) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.up, 0x41, {0x40}); // a loop behind the first 64 bytes
    machine.bus.writeSysfs(root(), testsupport::kExtendedBytes);
    EXPECT_EQ(describe(readSysfs(root()).functions()), describe(machine.bus.functions()));
}

TEST_F(Sysfs, EmptyFolderIsAnEmptyBus) {
    fs::create_directories(devices());
    EXPECT_THAT(readSysfs(root()).functions(), IsEmpty());
}

TEST_F(Sysfs, PassesOverOtherDomainsAndOtherNames) {
    for (const char* name :
         {"0000:00:01.0", "0001:00:02.0", "10000:00:02.0", "00:03.0x", "0000:00:04.0 ",
          "0000:00:20.0", "0001:00:20.0", "0000:00:05.8", "0001:00:05.8", "readme"})
        putBridge(name);
    LeftOut leftOut;
    const Bus bus = readSysfs(root(), &leftOut);
    ASSERT_THAT(bus.functions(), SizeIs(1));
    EXPECT_EQ(bus.functions().front().handle(), 0x08U);
    EXPECT_EQ(describe(leftOut), "otherDomains 2");
}

TEST_F(Sysfs, GivesASinkEveryDomainWithUpTo256Bytes) {
    putBridge("0000:00:01.0");
    put("10000:00:02.0", "config", std::string(300, '\x11'));
    put("10000:00:03.0", "config", std::string(64, '\xFF'));
    put("10000:00:04.0", "config", "short");
    LeftOut leftOut;
    std::vector<std::string> given;
    const Bus bus = readSysfs(root(), &leftOut, [&](const pcibus::SeenFunction& seen) {
        given.push_back(std::to_string(seen.domain) + " " + addressText(seen.function) + " " +
                        std::to_string(seen.bytes.size()) + " " + std::to_string(seen.bytes[63]));
    });
    EXPECT_THAT(given, testing::UnorderedElementsAre("0 00:01.0 64 0", "65536 00:02.0 256 17"));
    EXPECT_THAT(bus.functions(), SizeIs(1));
    EXPECT_EQ(describe(leftOut), "otherDomains 3");
}

TEST_F(Sysfs, ReadsWhatALinkRunsAtWhenItIsAskedFor) {
    putBridge("0000:00:01.0");
    put("0000:00:01.0", "max_link_width", "8\n");
    putBridge("0000:00:02.0");
    std::vector<std::function<pcibus::Link()>> links;
    readSysfs(root(), nullptr, [&](const pcibus::SeenFunction& seen) {
        if (seen.function.device == 1)
            links.push_back(seen.link);
    });
    ASSERT_THAT(links, SizeIs(1));
    put("0000:00:01.0", "current_link_width", "4\n");
    put("0000:00:01.0", "current_link_speed", "5.0 GT/s PCIe\n");
    EXPECT_EQ(links.front()(), (pcibus::Link{8, 0, 4, 2, pcibus::PortType::other}));
}

TEST_F(Sysfs, FilesThatAreMissingCountAs0) {
    putBridge("0000:00:01.0");
    EXPECT_EQ(describe(readSysfs(root()).functions().front()),
              "00:01.0 type 1 0000:0000 subsystem 0000:0000 secondary 01 link x0 speed 0");
}

TEST_F(Sysfs, ReadsLinkWidths) {
    const auto width = [this](const std::string& text) {
        return unsigned{withFile("max_link_width", text).linkWidth};
    };
    EXPECT_EQ(width("16\n"), 16U);
    EXPECT_EQ(width("1"), 1U);
    EXPECT_EQ(width("32\n"), 32U);
    EXPECT_EQ(width("254\n"), 254U);
    for (const char* unknown : {"255\n", "0\n", "256\n", "99999999999\n", "x16\n", "-1\n", ""})
        EXPECT_EQ(width(unknown), 0U) << unknown;
}

TEST_F(Sysfs, ReadsLinkSpeeds) {
    const auto speed = [this](const std::string& text) {
        return unsigned{withFile("max_link_speed", text).linkSpeed};
    };
    EXPECT_EQ(speed("2.5 GT/s PCIe\n"), 1U);
    EXPECT_EQ(speed("5.0 GT/s PCIe\n"), 2U);
    EXPECT_EQ(speed("8.0 GT/s PCIe\n"), 3U);
    EXPECT_EQ(speed("16.0 GT/s PCIe\n"), 4U);
    EXPECT_EQ(speed("32.0 GT/s PCIe\n"), 5U);
    EXPECT_EQ(speed("64.0 GT/s PCIe\n"), 6U);
    EXPECT_EQ(speed("5 GT/s\n"), 2U);
    EXPECT_EQ(speed("2.5 GT/s\n"), 1U);
    EXPECT_EQ(speed("8 GT/s\n"), 3U);
    for (const char* unknown : {"Unknown\n", "Unknown speed\n", "2.50 GT/s\n", "25 GT/s\n", "5.0\n",
                                "5.0 MB/s\n", "", "2.6 GT/s PCIe\n"})
        EXPECT_EQ(speed(unknown), 0U) << unknown;
}

TEST_F(Sysfs, LinkFilesThatCannotBeReadCountAs0) {
    putBridge("0000:00:01.0");
    fs::create_directories(devices() / "0000:00:01.0/max_link_width");
    fs::create_directories(devices() / "0000:00:01.0/max_link_speed");
    const Bus bus = readSysfs(root());
    EXPECT_EQ(bus.functions().front().linkWidth, 0);
    EXPECT_EQ(bus.functions().front().linkSpeed, 0);
}

TEST_F(Sysfs, ReadsSubsystemIdentifiersOfBridges) {
    EXPECT_EQ(withFile("subsystem_vendor", "0x1234\n").subsystemVendorId, 0x1234);
    EXPECT_EQ(withFile("subsystem_device", "0xFfFe\n").subsystemId, 0xFFFE);
}

TEST_F(Sysfs, SubsystemFilesWithoutAnIdentifierCountAs0) {
    putBridge("0000:00:01.0");
    for (const char* text : {"0x12345", "many", "0x1234 5", "0x", ""}) {
        put("0000:00:01.0", "subsystem_device", text);
        put("0000:00:01.0", "subsystem_vendor", "0x1234\n");
        const Bus bus = readSysfs(root());
        ASSERT_THAT(bus.functions(), SizeIs(1)) << text;
        EXPECT_EQ(bus.functions().front().subsystemId, 0) << text;
        EXPECT_EQ(bus.functions().front().subsystemVendorId, 0x1234) << text;
    }
}

TEST_F(Sysfs, AsksForNoFilesOfOtherFunctions) {
    std::string config(64, '\0');
    config[0x2C] = 0x34;
    config[0x2D] = 0x12;
    put("0000:00:01.0", "config", config);
    put("0000:00:01.0", "subsystem_vendor", "nonsense");
    put("0000:00:01.0", "max_link_width", "4\n");
    const Bus bus = readSysfs(root());
    EXPECT_EQ(bus.functions().front().subsystemVendorId, 0x1234);
    EXPECT_EQ(bus.functions().front().linkWidth, 0);
}

TEST_F(Sysfs, RefusesAMissingFolderNamingIt) {
    fs::create_directories(root());
    EXPECT_EQ(refusal(), devices().string() + ": No such file or directory");
    fs::create_directories(devices().parent_path());
    EXPECT_EQ(refusal(), devices().string() + ": No such file or directory");
}

// A machine one of whose endpoints is damaged: everybody else is there as ever.
class SysfsOfADamagedFunction : public Sysfs {
protected:
    SysfsOfADamagedFunction() {
        const testsupport::machines::Switch machine;
        machine.bus.writeSysfs(root());
        others_ = describe(machine.bus.functions());
        std::erase_if(others_, [](const auto& each) { return each.starts_with("03:00.1"); });
    }
    [[nodiscard]] fs::path entry() const { return devices() / "0000:03:00.1"; }
    // The function's folder itself, where the entry leads.
    [[nodiscard]] fs::path function() const { return fs::canonical(entry()); }
    [[nodiscard]] fs::path config() const { return function() / "config"; }

    void expectTheOthers(const std::string& leftOut) const {
        ASSERT_THAT(others_, SizeIs(9));
        LeftOut counts;
        EXPECT_EQ(describe(readSysfs(root(), &counts).functions()), others_);
        EXPECT_EQ(describe(counts), leftOut);
    }

private:
    std::vector<std::string> others_;
};

TEST_F(SysfsOfADamagedFunction, PassesOverAShortConfiguration) {
    for (const std::size_t size : {63U, 1U, 0U}) {
        fs::resize_file(config(), size);
        expectTheOthers("unreadable 1");
    }
}

TEST_F(SysfsOfADamagedFunction, PassesOverAMissingConfiguration) {
    fs::remove(config());
    expectTheOthers("unreadable 1");
}

TEST_F(SysfsOfADamagedFunction, PassesOverAConfigurationThatCannotBeRead) {
    fs::remove(config());
    fs::create_directory(config());
    expectTheOthers("unreadable 1");
}

TEST_F(SysfsOfADamagedFunction, PassesOverAFunctionThatIsNoFolder) {
    fs::remove(entry());
    std::ofstream(entry()) << "a file\n";
    expectTheOthers("unreadable 1");
}

TEST_F(SysfsOfADamagedFunction, PassesOverACopiedLinkThatLeadsNowhere) {
    fs::remove_all(function());
    expectTheOthers("unreadable 1");
}

TEST_F(SysfsOfADamagedFunction, PassesOverOneThatDoesNotAnswer) {
    std::ofstream(config(), std::ios::binary) << std::string(64, '\xFF');
    expectTheOthers("dead 1");
}

// A copy made without following links: nothing of it can be read, and that is told.
TEST_F(Sysfs, CountsEveryLinkThatLeadsNowhere) {
    fs::create_directories(devices());
    for (const char* address : {"0000:00:01.0", "0000:00:02.0"})
        fs::create_symlink("../../../devices/pci0000:00/" + std::string(address),
                           devices() / address);
    LeftOut leftOut;
    EXPECT_THAT(readSysfs(root(), &leftOut).functions(), IsEmpty());
    EXPECT_EQ(describe(leftOut), "unreadable 2");
}

TEST_F(Sysfs, RefusesBridgesThatFormACycleNamingOneOfThem) {
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.up, 1);
    machine.bus.writeSysfs(root());
    EXPECT_EQ(refusal(),
              (devices() / "0000:01:00.0").string() + ": bridges form a cycle through 01:00.0");
}

TEST_F(Sysfs, RefusesTwoEntriesOfOneAddress) {
    putBridge("0000:00:1c.0");
    putBridge("0000:00:1C.0");
    EXPECT_THAT(refusal(), HasSubstr("a second function at 00:1c.0"));
}

} // namespace

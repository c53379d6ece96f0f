// Buses written as dumps: what is read back is what was there.
#include "tavctl/record/busRecording.h"

#include "pcibus/dump.h"
#include "pcibus/sysfs.h"
#include "tavctl/record/madeCapabilities.h"
#include "tests/support/busBuilder.h"
#include "tests/support/describe.h"
#include "tests/support/fileFolder.h"
#include "tests/support/machines.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace tavctl;
using testing::HasSubstr;
using testing::Not;
using testsupport::BusBuilder;
using testsupport::describe;
using testsupport::TemporaryFolder;

std::string recorded(const BusBuilder& machine, std::size_t configBytes) {
    const TemporaryFolder folder;
    machine.writeSysfs(folder.path(), configBytes);
    return recordingText(recordBus(folder.path()), "a test");
}

std::vector<std::string> readBack(const std::string& text) {
    return describe(pcibus::parseDump(text, "recording").functions());
}

constexpr const char* kDeadRows = "00: ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff\n"
                                  "10: ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff\n"
                                  "20: ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff\n"
                                  "30: ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff\n";

// Without the comments and with nothing behind the identifiers, as the builder writes it.
std::string withoutComments(const std::string& text) {
    std::string result;
    std::stringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with('#') && (!line.empty() || !result.empty()))
            result += line + "\n";
    }
    return result;
}

TEST(BusRecording, OfHeadersAloneReadsBackAsTheSameBus) {
    const auto machine = testsupport::machines::Switch().bus;
    EXPECT_EQ(readBack(recorded(machine, testsupport::kHeaderBytes)),
              describe(machine.functions()));
}

TEST(BusRecording, SaysWhatIsMissingAndWhatIsMade) {
    const std::string text =
        recorded(testsupport::machines::Switch().bus, testsupport::kHeaderBytes);
    EXPECT_THAT(text, HasSubstr("# Recorded by a test in the form of lspci -xxx: 10 functions.\n"
                                "# Of 10 functions only the first 64 bytes could be read; run as "
                                "root for more.\n"
                                "# The capabilities of 8 functions are made for this recording, as "
                                "told there.\n\n"));
    EXPECT_THAT(text, testing::ContainsRegex(
                          "\n# 00:1c.0: bytes [0-9a-f]+ to [0-9a-f]+ are made from what the "
                          "system says of its subsystem and link\n00:1c.0 0604: 8086:a110 "));
    EXPECT_THAT(text, Not(HasSubstr("# 00:1e.0"))); // conventional, without a subsystem
}

TEST(BusRecording, OfWholeConfigurationsHasTheirBytes) {
    const auto machine = testsupport::machines::Switch().bus;
    for (const std::size_t size : {testsupport::kStandardBytes, testsupport::kExtendedBytes}) {
        const std::string text = recorded(machine, size);
        EXPECT_THAT(text, Not(HasSubstr("made")));
        EXPECT_THAT(text, Not(HasSubstr("only")));
        EXPECT_EQ(readBack(text), describe(machine.functions()));
        std::vector<std::vector<std::uint8_t>> bytes;
        pcibus::parseDump(text, "recording", [&](const pcibus::SeenFunction& seen) {
            bytes.emplace_back(seen.bytes.begin(), seen.bytes.end());
        });
        std::vector<std::vector<std::uint8_t>> expected;
        for (const BusBuilder::Node node : machine.nodes()) {
            expected.push_back(machine.configSpace(node));
            expected.back().resize(testsupport::kStandardBytes);
        }
        EXPECT_EQ(bytes, expected);
    }
}

TEST(BusRecording, OfADumpHasItsBytesInTheOrderOfAddresses) {
    const testsupport::FileFolder folder;
    const auto machine = testsupport::machines::Switch().bus;
    const std::string dump = machine.dump();
    const std::size_t second = dump.find("\n\n") + 2;
    const std::string path = folder.write("bus.txt", dump.substr(second) + dump.substr(0, second));
    const std::string text = recordingText(recordBus(path), "a test");
    EXPECT_EQ(readBack(text), describe(machine.functions()));
    EXPECT_THAT(withoutComments(text), testing::StartsWith("00:00.0 0"));
}

// The header's own pointer is kept wherever it leads, also so near the end that nothing fits there.
TEST(BusRecording, MadeCapabilitiesBeginWhereTheHeaderSays) {
    for (const unsigned at : {0x40U, 0x80U, 0xE0U, 0xE4U, 0xE8U, 0xECU, 0xF0U, 0xF8U, 0xFCU}) {
        testsupport::machines::Switch machine;
        machine.bus.poke(machine.up, 0x34, {static_cast<std::uint8_t>(at)});
        const TemporaryFolder folder;
        machine.bus.writeSysfs(folder.path(), testsupport::kHeaderBytes);
        const BusRecording recording = recordBus(folder.path());
        EXPECT_EQ(readBack(recordingText(recording, "a test")),
                  describe(pcibus::readSysfs(folder.path()).functions()))
            << at;
        EXPECT_EQ(recording.functions[3].bytes[0x34], at);
        EXPECT_LE(recording.functions[3].madeFrom, at);
        EXPECT_GT(recording.functions[3].madeTo, at);
    }
}

TEST(BusRecording, HeaderThatDeniesCapabilitiesIsCorrected) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.up, 0x06, {0x00});
    machine.bus.poke(machine.up, 0x34, {0x00});
    const TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path(), testsupport::kHeaderBytes);
    EXPECT_EQ(readBack(recordingText(recordBus(folder.path()), "a test")),
              describe(pcibus::readSysfs(folder.path()).functions()));
}

// Root reads the loop. It is kept where what comes before it says what the system says.
TEST(BusRecording, CapabilitiesThatFormALoopAreKeptAsFarAsTheyAgreeWithTheSystem) {
    testsupport::machines::Switch machine;
    const auto endpointLoop = machine.bus.configSpace(machine.card)[0x34];
    machine.bus.poke(machine.card, endpointLoop + 1U, {endpointLoop});
    const auto bridgeLoop = machine.bus.configSpace(machine.up)[0x34];
    machine.bus.poke(machine.up, bridgeLoop + 1U, {bridgeLoop});
    const std::string text = recorded(machine.bus, testsupport::kStandardBytes);
    EXPECT_EQ(readBack(text), describe(machine.bus.functions()));
    EXPECT_THAT(text, Not(HasSubstr("# 03:00.0: ")));
    EXPECT_THAT(text, HasSubstr("# 01:00.0: its capabilities do not say what the system says of "
                                "it; they are left out\n"));
}

TEST(BusRecording, HasTheRestOfAMachineWithDamagedFunctions) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.second, 0, {0xFF, 0xFF});
    const TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path());
    fs::remove(fs::canonical(folder.path() / "bus/pci/devices/0000:00:00.0") / "config");
    auto expected = describe(machine.bus.functions());
    std::erase_if(expected, [](const auto& each) {
        return each.starts_with("03:00.1") || each.starts_with("00:00.0");
    });
    ASSERT_EQ(expected.size(), 8U);
    const std::string text = recordingText(recordBus(folder.path()), "a test");
    EXPECT_EQ(readBack(text), expected);
    EXPECT_THAT(text, HasSubstr("# left out: 1 function that does not answer (vendor FFFF), 1 that "
                                "cannot be read\n"));
    const std::string file = folder.file("bus.txt", machine.bus.dump()).string();
    expected.insert(expected.begin(), describe(machine.bus.functions()).front());
    EXPECT_EQ(readBack(recordingText(recordBus(file), "a test")), expected);
}

TEST(BusRecording, BytesThatDisagreeWithTheSystemGiveWay) {
    const testsupport::machines::Switch machine;
    const TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path(), testsupport::kStandardBytes);
    std::ofstream(folder.path() / "bus/pci/devices/0000:01:00.0/max_link_width") << "2\n";
    const std::string text = recordingText(recordBus(folder.path()), "a test");
    EXPECT_EQ(readBack(text), describe(pcibus::readSysfs(folder.path()).functions()));
    EXPECT_THAT(text, HasSubstr("# 01:00.0: its capabilities do not say what the system says"));
}

TEST(BusRecording, HasFunctionsOfOtherDomainsWithTheirDomains) {
    const TemporaryFolder folder;
    const auto machine = testsupport::machines::Switch().bus;
    const std::string dump = machine.dump({.domain = 0x10000}) + machine.dump() +
                             machine.dump({.domain = 1}) + "0002:00:00.0\n" + kDeadRows;
    const BusRecording recording = recordBus(folder.file("bus.txt", dump));
    const std::string text = recordingText(recording, "a test");
    EXPECT_EQ(recording.ofOtherDomains(), 20U);
    EXPECT_THAT(text, HasSubstr(": 30 functions.\n# 20 of them are of domains other than 0.\n"
                                "# left out: 1 function of another domain\n\n0000:00:00.0 "));
    EXPECT_THAT(text, HasSubstr("\n0001:00:1c.0 "));
    EXPECT_THAT(text, HasSubstr("\n10000:00:1c.0 "));
    for (const std::string& each : {text, recordingText(scrubbedRecording(recording), "a test")}) {
        pcibus::LeftOut leftOut;
        EXPECT_EQ(describe(pcibus::parseDump(each, "recording", {}, &leftOut).functions()),
                  describe(machine.functions()));
        EXPECT_EQ(leftOut.otherDomains, 20U);
        const auto again = folder.file("again.txt", each);
        EXPECT_EQ(recordBus(again).functions.back().domain, 0x10000U);
    }
}

// sysfs has a domain before every address; domain 0 alone is written without it.
TEST(BusRecording, OfSysfsHasFunctionsOfOtherDomains) {
    const TemporaryFolder folder;
    const testsupport::machines::Switch machine;
    machine.bus.writeSysfs(folder.path());
    EXPECT_THAT(recordingText(recordBus(folder.path()), "a test"), Not(HasSubstr("0000:00:00.0 ")));
    const fs::path devices = folder.path() / "bus/pci/devices";
    fs::copy(devices / "0000:01:00.0", devices / "10000:01:00.0");
    fs::create_directory(devices / "10000:00:01.0"); // cannot be read
    const std::string text = recordingText(recordBus(folder.path()), "a test");
    EXPECT_THAT(text, HasSubstr(": 11 functions.\n"));
    EXPECT_THAT(text, HasSubstr("# 1 of them are of domains other than 0.\n"
                                "# left out: 1 function of another domain\n"));
    EXPECT_THAT(text, HasSubstr("\n10000:01:00.0 0604: 10b5:8609"));
    EXPECT_EQ(readBack(text), describe(machine.bus.functions()));
}

// Of another domain nobody asks whether its bridges make a tree.
TEST(ScrubbedRecording, TakesBridgesOfOtherDomainsAsTheyAre) {
    const TemporaryFolder folder;
    testsupport::machines::Switch machine;
    const std::string good = machine.bus.dump();
    machine.bus.setSecondaryBus(machine.up, 1);
    const auto file = folder.file("bus.txt", good + machine.bus.dump({.domain = 1}));
    const std::string text = recordingText(scrubbedRecording(recordBus(file)), "a test");
    EXPECT_THAT(text, HasSubstr("\n0001:01:00.0 "));
    EXPECT_EQ(readBack(text), readBack(good));
}

std::string scrubbedText(const std::string& dump) {
    const TemporaryFolder folder;
    return recordingText(scrubbedRecording(recordBus(folder.file("bus.txt", dump))), "a test");
}

TEST(ScrubbedRecording, ReadsBackAsTheSameBus) {
    for (const BusBuilder& machine : {testsupport::machines::Switch().bus, testsupport::bigBus()}) {
        const std::string text = scrubbedText(machine.dump());
        EXPECT_EQ(readBack(text), describe(machine.functions()));
        EXPECT_THAT(text, HasSubstr("# Scrubbed: only what matters to matching is as on the bus."));
        // Doing it again changes nothing.
        EXPECT_EQ(scrubbedText(text), text);
    }
}

// Two machines that differ in everything else come out as one.
TEST(ScrubbedRecording, BridgeWithoutABusOfItsOwnHasNoLastBusEither) {
    BusBuilder machine;
    const auto port = machine.rootPort(0, 1, 0, {0x8086, 0x1901}, 0);
    machine.setSecondaryBus(port, 0);
    const std::string text = scrubbedText(machine.dump());
    EXPECT_THAT(text, HasSubstr("10: 00 00 00 00 00 00 00 00 00 00 00 "));
    EXPECT_EQ(readBack(text), readBack(machine.dump()));
}

TEST(ScrubbedRecording, KeepsNothingElse) {
    testsupport::machines::Switch plain;
    testsupport::machines::Switch other;
    for (const BusBuilder::Node node : other.bus.nodes()) {
        other.bus.poke(node, 0x08, {0xAB});                   // revision
        other.bus.poke(node, 0x10, {0xDE, 0xAD, 0xBE, 0xEF}); // base address
        other.bus.poke(node, 0x3C, {0x0B, 0x01});             // interrupt
        other.bus.poke(node, 0xF0, {0x53, 0x45, 0x43, 0x52, 0x45, 0x54});
    }
    EXPECT_NE(plain.bus.dump(), other.bus.dump());
    EXPECT_EQ(scrubbedText(plain.bus.dump()), scrubbedText(other.bus.dump()));
}

// An ordinary user's recording has the links of all functions as they ran.
TEST(BusRecording, HasTheLinksThatTheSystemTells) {
    BusBuilder machine;
    const auto root = machine.rootPort(0, 4, 0, {0x8086, 0x3420, 0, 0}, 16, 3);
    machine.setRunningLink(machine.endpoint(root, 0, 0, {0x1172, 0xE001, 1, 2}, 8, 2), 4, 1);
    const TemporaryFolder folder;
    machine.writeSysfs(folder.path(), testsupport::kHeaderBytes);
    std::vector<pcibus::Link> links;
    pcibus::parseDump(recordingText(recordBus(folder.path()), "a test"), "recording",
                      [&](const pcibus::SeenFunction& seen) {
                          links.push_back(seen.link());
                          links.back().port = pcibus::PortType::unknown;
                      });
    EXPECT_EQ(links, (std::vector<pcibus::Link>{{16, 3, 16, 3}, {8, 2, 4, 1}}));
}

TEST(ScrubbedRecording, KeepsWhatPortsAre) {
    const auto portsOf = [](const std::string& dump) {
        std::vector<pcibus::PortType> ports;
        pcibus::parseDump(dump, "machine", [&](const pcibus::SeenFunction& seen) {
            ports.push_back(seen.link().port);
        });
        return ports;
    };
    const std::string dump = testsupport::machines::Switch().bus.dump();
    EXPECT_EQ(portsOf(scrubbedText(dump)), portsOf(dump));
}

TEST(MadeCapabilities, AreNoneForABridgeWithNothingToSay) {
    pcibus::PciFunction bridge;
    std::vector<std::uint8_t> bytes(256, 0xFF);
    EXPECT_EQ(makeCapabilities(bridge, {}, bytes), (std::pair<std::size_t, std::size_t>(0, 0)));
    EXPECT_EQ(bytes.size(), 64U);
}

} // namespace

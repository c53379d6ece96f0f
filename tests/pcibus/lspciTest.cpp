// The same dumps read by lspci and by this system: both must see the same machine.
#include "pcibus/dump.h"
#include "tests/support/command.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <optional>
#include <sstream>
#include <string>

namespace {

using pcibus::PciFunction;

// What lspci prints of one function.
struct Seen {
    std::string ids;                // "8086:a110"
    std::string secondary = "none"; // "01"
    std::string subsystem = "none"; // "1043:836b"
    std::string link = "none";      // "8GT/s x16"
    bool operator==(const Seen&) const = default;
};

void PrintTo(const Seen& seen, std::ostream* out) {
    *out << seen.ids << " secondary " << seen.secondary << " subsystem " << seen.subsystem
         << " link " << seen.link;
}

std::string lspci(const std::string& options, const std::filesystem::path& file) {
    const auto result = testsupport::runCommand("lspci -F '" + file.string() + "' " + options);
    EXPECT_EQ(result.exitStatus, 0) << result.output;
    return result.output;
}

// What stands behind `label`, up to one of `ends` or the end of the line; nothing without the
// label.
std::optional<std::string> behind(const std::string& line, const std::string& label,
                                  const char* ends) {
    const std::size_t at = line.find(label);
    if (at == std::string::npos)
        return std::nullopt;
    const std::size_t begin = at + label.size();
    return line.substr(begin, line.find_first_of(ends, begin) - begin);
}

// Reads "0000:00:1c.0 0604: 8086:a110 (rev 01)" and the indented lines below.
std::map<std::string, Seen> seenByLspci(const std::string& text) {
    std::map<std::string, Seen> result;
    Seen* current = nullptr;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("0000:")) {
            std::istringstream words(line.substr(5));
            std::string address;
            std::string classCode;
            std::string ids;
            words >> address >> classCode >> ids;
            current = &result[address];
            current->ids = ids;
        }
        if (current == nullptr)
            continue;
        if (line.starts_with("\tBus: "))
            current->secondary = behind(line, "secondary=", ",").value_or("unreadable");
        if (const auto subsystem = behind(line, "Subsystem: ", " "))
            current->subsystem = *subsystem;
        if (line.find("LnkCap:") != std::string::npos)
            current->link = behind(line, "Speed ", ",").value_or("unreadable") + ' ' +
                            behind(line, "Width ", ",").value_or("unreadable");
    }
    return result;
}

std::string hex(unsigned value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*x", digits, value);
    return text;
}

std::map<std::string, Seen> seenHere(const pcibus::Bus& bus) {
    static constexpr const char* kSpeeds[] = {"", "2.5GT/s", "5GT/s", "8GT/s", "16GT/s"};
    std::map<std::string, Seen> result;
    for (const PciFunction& function : bus.functions()) {
        Seen seen;
        seen.ids = hex(function.vendorId, 4) + ':' + hex(function.deviceId, 4);
        if (function.subsystemVendorId != 0 || function.subsystemId != 0)
            seen.subsystem =
                hex(function.subsystemVendorId, 4) + ':' + hex(function.subsystemId, 4);
        if (function.isBridge())
            seen.secondary = hex(function.secondaryBus, 2);
        if (function.linkWidth != 0)
            seen.link = std::string(kSpeeds[function.linkSpeed]) + " x" +
                        std::to_string(function.linkWidth);
        result[addressText(function)] = seen;
    }
    return result;
}

void compare(const std::string& dump) {
    const testsupport::TemporaryFolder folder;
    const auto file = folder.file("bus.txt", dump);
    auto theirs = seenByLspci(lspci("-n -D -vv", file));
    const pcibus::Bus bus = pcibus::readDump(file);
    ASSERT_EQ(theirs.size(), bus.functions().size());
    // lspci shows links of endpoints too, which this system does not ask for.
    for (const PciFunction& function : bus.functions()) {
        if (!function.isBridge())
            theirs[addressText(function)].link = "none";
    }
    EXPECT_EQ(theirs, seenHere(bus));
}

TEST(Lspci, SeesTheSameMachine) {
    compare(testsupport::machines::Switch().bus.dump());
}

TEST(Lspci, SeesTheSameMachineWithADomainBeforeEachAddress) {
    compare(testsupport::machines::Switch().bus.dump({.domain = 0}));
}

TEST(Lspci, SeesTheSameMachineInExtendedDumps) {
    compare(testsupport::machines::Switch().bus.dump({.bytes = testsupport::kExtendedBytes}));
}

TEST(Lspci, SeesTheSameBigMachine) {
    compare(testsupport::bigBus().dump());
}

TEST(Lspci, ListsTheSameAddressesAndIdentifiers) {
    const testsupport::machines::Switch machine;
    const testsupport::TemporaryFolder folder;
    const auto file = folder.file("bus.txt", machine.bus.dump({.bytes = 64}));
    std::string expected;
    const pcibus::Bus bus = pcibus::readDump(file);
    for (const PciFunction& function : bus.functions())
        expected += "0000:" + addressText(function) +
                    (function.isBridge() ? " 0604: " : " 0780: ") + hex(function.vendorId, 4) +
                    ':' + hex(function.deviceId, 4) + " (rev 01)\n";
    EXPECT_EQ(lspci("-n -D", file), expected);
}

// What lspci prints of a dump is a dump again.
TEST(Lspci, ItsOwnOutputIsReadBack) {
    const testsupport::machines::Switch machine;
    const testsupport::TemporaryFolder folder;
    const auto file = folder.file("bus.txt", machine.bus.dump());
    for (const char* options : {"-xxx", "-xxx -vv", "-xxx -D", "-xxx -n -D -vvv"}) {
        const pcibus::Bus again = pcibus::parseDump(lspci(options, file), options);
        EXPECT_EQ(seenHere(again), seenHere(pcibus::readDump(file))) << options;
    }
}

} // namespace

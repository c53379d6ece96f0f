// Recorded buses: what lspci prints is understood, dead hardware is passed over, and what no lspci
// prints is refused with its line.
#include "pcibus/dump.h"

#include "platform/utf8Path.h"
#include "tests/support/busBuilder.h"
#include "tests/support/describe.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace {

using pcibus::Bus;
using pcibus::BusError;
using pcibus::LeftOut;
using pcibus::parseDump;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::BusBuilder;
using testsupport::describe;

Bus readDumpFile(const std::filesystem::path& file) {
    return pcibus::readDump(platform::utf8Text(file));
}

// What refusing the text says; a text that is taken says "accepted".
std::string refusal(const std::string& text) {
    try {
        parseDump(text, "bus.txt");
    } catch (const BusError& error) {
        return error.what();
    }
    return "accepted";
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos)
        throw std::logic_error("nothing to replace: " + from);
    return text.replace(at, from.size(), to);
}

// One function with a header of 64 bytes; each row is a line of its own, lines 2 to 5.
std::string small(const std::string& address = "00:01.0") {
    return address + " Some device\n"
                     "00: 86 80 10 a1 06 00 00 00 01 00 80 07 00 00 00 00\n"
                     "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                     "20: 00 00 00 00 00 00 00 00 00 00 00 00 34 12 02 01\n"
                     "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n";
}

std::vector<std::string> parsed(const std::string& text) {
    return describe(parseDump(text, "bus.txt").functions());
}

// What is passed over.
std::string leftOutOf(const std::string& text) {
    LeftOut leftOut;
    parseDump(text, "bus.txt", {}, &leftOut);
    return describe(leftOut);
}

TEST(Dump, ReadsEveryFunctionOfAMachine) {
    const testsupport::machines::Switch machine;
    EXPECT_EQ(parsed(machine.bus.dump()), describe(machine.bus.functions()));
}

TEST(Dump, ReadsTheFieldsWhereTheyStand) {
    EXPECT_THAT(parsed(small()), ElementsAre("00:01.0 type 0 8086:a110 subsystem 1234:0102 "
                                             "secondary 00 link x0 speed 0"));
}

TEST(Dump, ReadsExtendedConfigurationSpace) {
    const testsupport::machines::Switch machine;
    const std::string text = machine.bus.dump({.bytes = testsupport::kExtendedBytes});
    ASSERT_THAT(text, testing::HasSubstr("\nff0: 00"));
    EXPECT_EQ(parsed(text), describe(machine.bus.functions()));
}

TEST(Dump, HeaderAloneHasNoSubsystemAndLinkOfBridges) {
    const testsupport::machines::Switch machine;
    auto expected = machine.bus.functions();
    for (auto& function : expected) {
        if (function.isBridge())
            function.subsystemVendorId = function.subsystemId = function.linkWidth =
                function.linkSpeed = 0;
    }
    EXPECT_EQ(parsed(machine.bus.dump({.bytes = testsupport::kHeaderBytes})), describe(expected));
}

TEST(Dump, ReadsAddressesWithADomain) {
    const testsupport::machines::Switch machine;
    const auto expected = describe(machine.bus.functions());
    EXPECT_EQ(parsed(machine.bus.dump({.domain = 0})), expected);
    EXPECT_THAT(parsed(small("00000000:00:01.0")), SizeIs(1));
}

TEST(Dump, SkipsTheTextOfVerboseOutput) {
    const testsupport::machines::Switch machine;
    EXPECT_EQ(parsed(machine.bus.dump({.verbose = true})), describe(machine.bus.functions()));
}

TEST(Dump, AcceptsCarriageReturnsAndBlanksAtLineEnds) {
    const testsupport::machines::Switch machine;
    EXPECT_EQ(parsed(machine.bus.dump({.verbose = true, .crLf = true})),
              describe(machine.bus.functions()));
    EXPECT_THAT(parsed(replaced(small(), "02 01\n", "02 01 \t \r\n")), SizeIs(1));
}

TEST(Dump, AcceptsALastLineWithoutEnd) {
    std::string text = small();
    text.pop_back();
    EXPECT_EQ(parsed(text), parsed(small()));
}

TEST(Dump, AcceptsUpperCaseDigitsAndAnAddressAlone) {
    const std::string text = replaced(small("00:1C.0"), " Some device", "");
    EXPECT_THAT(parsed(replaced(text, "10 a1", "10 A1")),
                ElementsAre("00:1c.0 type 0 8086:a110 subsystem 1234:0102 secondary 00 link x0 "
                            "speed 0"));
}

TEST(Dump, AcceptsRowsOfAnyLengthWithoutGaps) {
    const std::string text = replaced(small(), "01 00 80 07", "01 00\n0a: 80 07");
    EXPECT_EQ(parsed(text), parsed(small()));
}

TEST(Dump, PassesOverLinesThatAreNothing) {
    const std::string text = replaced(
        "recorded by hand\n\n" + small(), "\n10:",
        "\n\n  99: zz\n\tindented\nKernel driver in use: none\n0g: no row\n100000000:00:00.0 "
        "too many digits\n000:00:01.0 too few\n00:01.0x glued\n1234: no row either\n10:");
    EXPECT_EQ(parsed(text), parsed(small()));
}

TEST(Dump, OfNothingButWhiteSpaceIsAnEmptyBus) {
    for (const char* text : {"", "\n", " \t\r\n\v\f\n", "  ", "\xEF\xBB\xBF", "\xEF\xBB\xBF\r\n"}) {
        const Bus bus = parseDump(text, "bus.txt");
        EXPECT_THAT(bus.functions(), IsEmpty()) << text;
        EXPECT_THAT(bus.rootBuses(), IsEmpty()) << text;
    }
}

TEST(Dump, RefusesATextWithoutFunctionsNamingItsFirstLine) {
    constexpr const char* kReason = ": expected what lspci -x prints, got no function";
    EXPECT_EQ(refusal("nothing here\n"), std::string("bus.txt:1") + kReason);
    EXPECT_EQ(refusal("\n \t\r\n\t00:01.0 indented\nmore\n"), std::string("bus.txt:3") + kReason);
    EXPECT_EQ(refusal("\xEF\xBB\xBF\n."), std::string("bus.txt:2") + kReason);
    EXPECT_EQ(refusal(std::string("\0\n", 2)), std::string("bus.txt:1") + kReason);
}

TEST(Dump, SkipsAByteOrderMarkAtTheStartOnly) {
    const std::string mark = "\xEF\xBB\xBF";
    EXPECT_EQ(parsed(mark + small()), parsed(small()));
    EXPECT_EQ(parsed(mark + "a note\r\n" + small()), parsed(small()));
    EXPECT_THAT(parsed(small() + mark + "00:02.0 no function, since a mark is before it\n"),
                SizeIs(1));
    EXPECT_EQ(refusal(mark + "\n00: 86 80\n"),
              "bus.txt:2: expected a function before the first row, got \"00:\"");
}

// The same bus as the tools of other systems write text.
std::string inUtf16(const std::string& text, bool bigEndian) {
    std::string result;
    for (const char character : text) {
        result += bigEndian ? std::string(1, '\0') + character : character + std::string(1, '\0');
    }
    return result;
}

TEST(Dump, NamesTheKindOfAFileThatIsNone) {
    using namespace std::string_literals;
    const auto got = [](const std::string& kind) {
        return "bus.txt:1: expected what lspci -x prints, got " + kind;
    };
    for (const bool bigEndian : {false, true}) {
        const std::string mark = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
        EXPECT_EQ(refusal(mark + inUtf16(small(), bigEndian)), got("text in UTF-16"));
        EXPECT_EQ(refusal(inUtf16(small(), bigEndian)), got("text in UTF-16"));
    }
    // Rows behind the beginning are no excuse, nor is a line that would be refused.
    const std::string behind = "\n00: zz\n" + small();
    EXPECT_EQ(refusal("\x1F\x8B\x08" + behind), got("a file compressed with gzip"));
    EXPECT_EQ(refusal("\xFD"
                      "7zXZ\0"s +
                      behind),
              got("a file compressed with xz"));
    EXPECT_EQ(refusal("\x28\xB5\x2F\xFD" + behind), got("a file compressed with zstd"));
    EXPECT_EQ(refusal("BZh91AY&SY" + behind), got("a file compressed with bzip2"));
    EXPECT_EQ(refusal("BZh1\x17\x72\x45\x38\x50\x90" + behind),
              got("a file compressed with bzip2"));
    EXPECT_EQ(refusal("PK\x03\x04" + behind), got("a zip archive"));
    EXPECT_EQ(refusal("\x7F"
                      "ELF" +
                      behind),
              got("a program"));
    EXPECT_EQ(refusal("MZ\x90\0\x03"s + behind), got("a program"));
    EXPECT_EQ(refusal("version https://git-lfs.github.com/spec/v1\noid sha256:0\n"),
              got("a Git LFS pointer in place of the file"));
    EXPECT_EQ(refusal("<!DOCTYPE html>\n"), got("a web page"));
    EXPECT_EQ(refusal("<!doctype html>\n"), got("a web page"));
    EXPECT_EQ(refusal("<html lang=\"en\">\n"), got("a web page"));
    EXPECT_EQ(refusal("{\"version\":1}\n"), got("JSON"));
}

// What begins as another kind of file does, and is a note above a dump.
TEST(Dump, WordsAboveTheFirstFunctionAreNoKindOfFile) {
    for (const char* note : {"MZ is the machine's name", "BZh is it", "BZh9 is it", "PK", "{",
                             "<html>", "version https://git-lfs.github.com/spec/v1"})
        EXPECT_EQ(parsed(note + ("\n" + small())), parsed(small())) << note;
    EXPECT_EQ(refusal("MZ\n"), "bus.txt:1: expected what lspci -x prints, got no function");
    EXPECT_EQ(refusal("MZ" + std::string(62, ' ') + '\0'),
              "bus.txt:1: expected what lspci -x prints, got no function");
}

TEST(Dump, SortsByBusDeviceAndFunction) {
    const std::string text = small("02:00.0") + small("00:1f.1") + small("00:1f.0") +
                             small("01:00.0") + small("00:02.7");
    const Bus bus = parseDump(text, "bus.txt");
    std::vector<std::string> addresses;
    for (const auto& function : bus.functions())
        addresses.push_back(addressText(function));
    EXPECT_THAT(addresses, ElementsAre("00:02.7", "00:1f.0", "00:1f.1", "01:00.0", "02:00.0"));
}

TEST(Dump, RemembersTheLineOfEachFunction) {
    const Bus bus = parseDump("a note\n" + small("00:02.0") + "\n" + small("00:01.0"), "bus.txt");
    EXPECT_EQ(bus.find(0x10)->line, 2U);
    EXPECT_EQ(bus.find(0x08)->line, 8U);
}

TEST(Dump, PassesOverOtherDomains) {
    const std::string text = small("0001:00:01.0") + small("0000:00:02.0") +
                             small("10000:00:02.0") + small("ffffffff:00:02.0");
    EXPECT_THAT(parsed(text), ElementsAre(testing::StartsWith("00:02.0")));
    EXPECT_EQ(leftOutOf(text), "otherDomains 3");
    EXPECT_EQ(leftOutOf(small("0001:00:01.0")), "otherDomains 1");
}

// What a bus reads where nothing answers.
std::string dead(const std::string& address) {
    std::string text = address + " rev ff (prog-if ff)\n";
    for (const char* offset : {"00", "10", "20", "30"}) {
        text += offset + std::string(":");
        for (int byte = 0; byte < 16; ++byte)
            text += " ff";
        text += '\n';
    }
    return text;
}

TEST(Dump, PassesOverFunctionsThatDoNotAnswer) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.second, 0, {0xFF, 0xFF});
    auto expected = describe(machine.bus.functions());
    ASSERT_EQ(std::erase_if(expected, [](const auto& each) { return each.starts_with("03:00.1"); }),
              1U);
    EXPECT_EQ(parsed(machine.bus.dump()), expected);
    EXPECT_EQ(leftOutOf(machine.bus.dump()), "dead 1");

    const std::string all = dead("00:01.0") + small("00:02.0") + dead("0001:00:01.0");
    EXPECT_THAT(parsed(all), ElementsAre(testing::StartsWith("00:02.0")));
    EXPECT_EQ(leftOutOf(all), "otherDomains 1, dead 1");
    EXPECT_THAT(parsed(dead("00:01.0")), IsEmpty());
}

TEST(Dump, IsGivenToASinkWithEveryDomainAndWithoutWhatDoesNotAnswer) {
    std::vector<std::string> given;
    parseDump(dead("00:01.0") + small("10000:00:01.0") + small("00:02.0") + dead("0001:00:01.0"),
              "bus.txt", [&](const pcibus::SeenFunction& seen) {
                  given.push_back(std::to_string(seen.domain) + " " + addressText(seen.function));
              });
    EXPECT_THAT(given, ElementsAre("65536 00:01.0", "0 00:02.0"));
}

TEST(Dump, BusBelowABridgeThatDoesNotAnswerIsARootBus) {
    testsupport::machines::Switch machine;
    machine.bus.poke(machine.up, 0, {0xFF, 0xFF});
    const Bus bus = parseDump(machine.bus.dump(), "bus.txt");
    EXPECT_THAT(bus.rootBuses(), ElementsAre(0, 2, 0x40));
    EXPECT_EQ(bus.parentOfBus(2), nullptr);
}

// A bridge whose secondary bus reads FF would otherwise close a circle with one that is alive.
TEST(Dump, BridgesThatDoNotAnswerFormNoCycle) {
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.downB, 1);
    machine.bus.poke(machine.downB, 0, {0xFF, 0xFF});
    EXPECT_EQ(leftOutOf(machine.bus.dump()), "dead 1");
}

TEST(Dump, DamagedTextOfFunctionsThatDoNotAnswerIsRefusedAllTheSame) {
    EXPECT_EQ(refusal(dead("00:01.0") + dead("00:01.0")),
              "bus.txt:6: a second function at 00:01.0");
    EXPECT_EQ(refusal(dead("00:01.0") + small("00:01.0")),
              "bus.txt:6: a second function at 00:01.0");
    EXPECT_EQ(refusal(replaced(dead("00:01.0"), "30: ff", "30: fx")),
              "bus.txt:5: expected a byte as two hexadecimal digits, got \"fx\"");
    EXPECT_EQ(refusal(replaced(dead("00:01.0"), "30: ff", "    ff")),
              "bus.txt:1: expected at least 64 bytes for 00:01.0, got 48");
}

TEST(Dump, CountsFunctionsWhoseCapabilitiesAreNotInIt) {
    testsupport::machines::Switch machine;
    EXPECT_EQ(leftOutOf(machine.bus.dump({.bytes = 64})), "headerOnly 10");
    machine.bus.poke(machine.host, 0x06, {0x00}); // has none
    machine.bus.poke(machine.card, 0x00, {0xFF, 0xFF});
    EXPECT_EQ(leftOutOf(machine.bus.dump({.bytes = 64})), "dead 1, headerOnly 8");
    machine.bus.poke(machine.card, 0x00, {0x72, 0x11});
    EXPECT_EQ(leftOutOf(machine.bus.dump({.bytes = 64, .domain = 3})), "otherDomains 10");
    EXPECT_EQ(leftOutOf(machine.bus.dump({.bytes = 80})), "nothing");
    EXPECT_EQ(leftOutOf(machine.bus.dump()), "nothing");
}

TEST(Dump, ThatIsRefusedLeavesTheCountsAlone) {
    LeftOut counts{.otherDomains = 7, .dead = 7, .unreadable = 7, .headerOnly = 7};
    EXPECT_THROW(parseDump(dead("00:01.0") + "40: zz\n", "bus.txt", {}, &counts), BusError);
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.downB, 1);
    EXPECT_THROW(parseDump(machine.bus.dump(), "bus.txt", {}, &counts), BusError);
    EXPECT_EQ(describe(counts), "otherDomains 7, dead 7, unreadable 7, headerOnly 7");
    parseDump("", "bus.txt", {}, &counts);
    EXPECT_EQ(describe(counts), "nothing");
}

TEST(Dump, RefusesBytesThatAreNoneNamingTheLine) {
    EXPECT_EQ(refusal(replaced(small(), "\n10: 00 00", "\n10: 00 0g")),
              "bus.txt:3: expected a byte as two hexadecimal digits, got \"0g\"");
    EXPECT_EQ(refusal(replaced(small(), "02 01\n", "02 1\n")),
              "bus.txt:4: expected a byte as two hexadecimal digits, got \"1\"");
    EXPECT_EQ(refusal(replaced(small(), "02 01\n", "0201\n")),
              "bus.txt:4: expected a byte as two hexadecimal digits, got \"0201\"");
    EXPECT_EQ(refusal(replaced(small(), "02 01\n", "02 01 rest of the line\n")),
              "bus.txt:4: expected a byte as two hexadecimal digits, got \"rest\"");
    EXPECT_EQ(refusal(replaced(small(), "02 01\n", "02 " + std::string(99, 'x') + "\n")),
              "bus.txt:4: expected a byte as two hexadecimal digits, got \"" +
                  std::string(40, 'x') + "\"");
    EXPECT_EQ(refusal(small() + "40:\n"),
              "bus.txt:6: expected bytes behind the offset, got nothing");
}

TEST(Dump, RefusesBadBytesOfOtherDomains) {
    EXPECT_EQ(refusal(small() + replaced(small("0001:00:01.0"), "34 12", "34 1x")),
              "bus.txt:9: expected a byte as two hexadecimal digits, got \"1x\"");
}

TEST(Dump, RefusesGapsNamingTheRow) {
    EXPECT_EQ(refusal(replaced(small(), "\n10:", "\n20:")),
              "bus.txt:3: expected the row of offset 10, got \"20:\"");
    EXPECT_EQ(refusal(replaced(small(), " 07 00 00 00 00\n", " 07 00 00 00\n")),
              "bus.txt:3: expected the row of offset 0f, got \"10:\"");
    EXPECT_EQ(refusal(small() + "30: 00\n"),
              "bus.txt:6: expected the row of offset 40, got \"30:\"");
    EXPECT_EQ(refusal(small() + "100: 00\n"),
              "bus.txt:6: expected the row of offset 40, got \"100:\"");
    EXPECT_EQ(refusal(small("0001:00:01.0") + "50: 00\n"),
              "bus.txt:6: expected the row of offset 40, got \"50:\"");
}

TEST(Dump, RefusesARowWithoutAFunction) {
    EXPECT_EQ(refusal("\n00: 86 80\n"),
              "bus.txt:2: expected a function before the first row, got \"00:\"");
}

TEST(Dump, RefusesFewerThan64BytesNamingTheFunction) {
    EXPECT_EQ(refusal(replaced(small(), "02 01\n30:", "02 01\nno row:")),
              "bus.txt:1: expected at least 64 bytes for 00:01.0, got 48");
    EXPECT_EQ(refusal(small("00:02.0") + "00:03.0 no rows at all\n" + small("00:04.0")),
              "bus.txt:6: expected at least 64 bytes for 00:03.0, got 0");
    EXPECT_EQ(refusal(small("00:02.0") + "0001:00:03.0 no rows at all\n"),
              "bus.txt:6: expected at least 64 bytes for 00:03.0, got 0");
    const std::string last = small();
    EXPECT_EQ(refusal(last.substr(0, last.size() - 4)),
              "bus.txt:1: expected at least 64 bytes for 00:01.0, got 63");
}

TEST(Dump, RefusesMoreThan4096Bytes) {
    BusBuilder machine;
    machine.rootEndpoint(0, 1, 0, {0x8086, 0x1234});
    std::string text = machine.dump({.bytes = testsupport::kExtendedBytes});
    ASSERT_EQ(refusal(text), "accepted");
    text = replaced(text, "\n\n", " 00\n");
    EXPECT_EQ(refusal(text), "bus.txt:257: expected at most 4096 bytes for 00:01.0");
}

TEST(Dump, RefusesTwoFunctionsAtOneAddress) {
    EXPECT_EQ(refusal(small("00:01.0") + small("00:02.0") + small("00:01.0")),
              "bus.txt:11: a second function at 00:01.0");
    EXPECT_EQ(refusal(small("00:01.0") + small("0000:00:01.0")),
              "bus.txt:6: a second function at 0000:00:01.0");
    EXPECT_EQ(refusal(small("0002:00:01.0") + small("0002:00:01.0")),
              "bus.txt:6: a second function at 0002:00:01.0");
}

TEST(Dump, RefusesAddressesOutOfRange) {
    EXPECT_EQ(refusal(small("00:20.0")),
              "bus.txt:1: expected a device up to 1f and a function up to 7, got \"00:20.0\"");
    EXPECT_EQ(refusal(small("00:1f.8")),
              "bus.txt:1: expected a device up to 1f and a function up to 7, got \"00:1f.8\"");
    EXPECT_EQ(refusal(small("00:1f.7")), "accepted");
}

TEST(Dump, CapabilitiesThatFormALoopCountAsFarAsTheyGo) {
    testsupport::machines::Switch machine;
    const auto whole = describe(machine.bus.functions());
    const auto bytes = machine.bus.configSpace(machine.up);
    const std::uint8_t first = bytes.at(0x34);
    std::size_t last = first;
    while (bytes.at(last + 1) != 0)
        last = bytes.at(last + 1);
    ASSERT_NE(last, first);
    machine.bus.poke(machine.up, last + 1, {first});
    machine.bus.poke(machine.second, 0x41, {0x40});
    EXPECT_EQ(parsed(machine.bus.dump()), whole);
    EXPECT_EQ(leftOutOf(machine.bus.dump()), "nothing");
    // The first leads to itself, so those behind it are not found; the other functions are as ever.
    machine.bus.poke(machine.up, first + 1U, {first});
    const auto found = parsed(machine.bus.dump());
    ASSERT_EQ(found.size(), whole.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_EQ(found[i] == whole[i], !found[i].starts_with("01:00.0")) << found[i];
}

TEST(Dump, RefusesBridgesThatFormACycleNamingOneOfThem) {
    testsupport::machines::Switch machine;
    machine.bus.setSecondaryBus(machine.downB, 1);
    EXPECT_THAT(refusal(machine.bus.dump()),
                testing::AnyOf("bus.txt:91: bridges form a cycle through 02:02.0",
                               "bus.txt:55: bridges form a cycle through 01:00.0"));
}

TEST(Dump, ReadsFiles) {
    const testsupport::machines::Switch machine;
    const testsupport::TemporaryFolder folder;
    const auto file = folder.file("bus.txt", machine.bus.dump());
    EXPECT_EQ(describe(readDumpFile(file).functions()), describe(machine.bus.functions()));
}

TEST(Dump, NamesTheFileInItsMessages) {
    const testsupport::TemporaryFolder folder;
    const auto file = folder.file("bus.txt", "00:01.0\n");
    try {
        readDumpFile(file);
        FAIL() << "accepted";
    } catch (const BusError& error) {
        EXPECT_EQ(error.what(),
                  file.string() + ":1: expected at least 64 bytes for 00:01.0, got 0");
    }
}

TEST(Dump, BigBusIsReadWhole) {
    const BusBuilder machine = testsupport::bigBus();
    EXPECT_EQ(parsed(machine.dump()), describe(machine.functions()));
}

// A row that is read in one go and the same row with one character changed, which is read character
// by character: both say the same of every character in every place.
TEST(DumpRows, EveryCharacterIsToldFromADigitInEveryPlace) {
    const std::string start = "00:01.0 x\n00: 86 80 10 a1 06 00 10 00 AB cD 04 06 00 00 00 00\n"
                              "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                              "20: 00 00 00 00 00 00 00 00 00 00 00 00 34 12 78 56\n";
    const std::string row = "30: 00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff";
    const auto accepts = [&](const std::string& last) {
        try {
            return parseDump(start + last + "\n", "d").functions().size() == 1;
        } catch (const BusError&) {
            return false;
        }
    };
    ASSERT_TRUE(accepts(row));
    for (std::size_t place = 4; place < row.size(); ++place)
        for (int character = 0; character < 256; ++character) {
            if (character == '\n')
                continue;
            std::string changed = row;
            changed[place] = static_cast<char>(character);
            const bool isDigit = std::isxdigit(character) != 0;
            const bool isBlank = character == ' ' || character == '\t';
            // At the end of a line blanks and a carriage return do not count, and then a digit is
            // missing all the same.
            const bool expected = (place - 3) % 3 == 0 ? isBlank : isDigit;
            EXPECT_EQ(accepts(changed), expected) << place << " " << character;
        }
}

TEST(DumpRows, AreDecodedWhateverTheCaseOfTheirDigits) {
    const Bus bus = parseDump("00:01.0 x\n00: 86 80 10 A1 06 00 10 00 AB cD 04 06 00 00 00 00\n"
                              "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                              "20: 00 00 00 00 00 00 00 00 00 00 00 00 Fe 12 78 5f\r\n"
                              "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n",
                              "d");
    ASSERT_EQ(bus.functions().size(), 1U);
    EXPECT_EQ(bus.functions()[0].vendorId, 0x8086);
    EXPECT_EQ(bus.functions()[0].deviceId, 0xA110);
    EXPECT_EQ(bus.functions()[0].subsystemVendorId, 0x12FE);
    EXPECT_EQ(bus.functions()[0].subsystemId, 0x5F78);
}

// Lines stand across the borders of the pieces that a file is read in, and may be longer than one.
TEST(DumpFiles, AreReadLikeTheirText) {
    const testsupport::TemporaryFolder folder;
    std::string text = testsupport::bigBus().dump();
    text.insert(text.find("\n\n") + 1, "\t" + std::string(400000, 'x') + "\n");
    text.pop_back();
    text.pop_back();
    const auto file = folder.file("bus.dump", text);
    const Bus fromFile = readDumpFile(file);
    const Bus fromText = parseDump(text, file.string());
    ASSERT_EQ(fromFile.functions().size(), 1750U);
    ASSERT_EQ(fromText.functions().size(), 1750U);
    for (std::size_t i = 0; i < 1750; ++i) {
        EXPECT_EQ(fromFile.functions()[i].line, fromText.functions()[i].line);
        EXPECT_EQ(fromFile.functions()[i].handle(), fromText.functions()[i].handle());
        EXPECT_EQ(fromFile.functions()[i].subsystemId, fromText.functions()[i].subsystemId);
    }
    EXPECT_TRUE(readDumpFile(folder.file("empty.dump", "")).functions().empty());
}

TEST(DumpFiles, HaveNoLineWithoutAnEnd) {
    const testsupport::TemporaryFolder folder;
    const testsupport::machines::Switch machine;
    constexpr std::size_t kLongest = 1048576; // with its end
    const std::string dump = machine.bus.dump();
    const auto longest = folder.file("longest.dump", std::string(kLongest - 1, 'x') + "\n" + dump);
    EXPECT_EQ(describe(readDumpFile(longest).functions()), describe(machine.bus.functions()));
    for (const std::string& end : {std::string(), "\n" + dump}) {
        const auto longer = folder.file("longer.dump", std::string(kLongest, 'x') + end);
        try {
            readDumpFile(longer);
            FAIL() << "accepted";
        } catch (const BusError& error) {
            EXPECT_EQ(error.what(), longer.string() + ": a line is longer than 1048576 bytes");
        }
    }
}

} // namespace

// Every attribute of a device: its value, and every way in which it may be refused.
#include "include/tavPlugin.h"
#include "source/exceptionStatus.h"
#include "tests/source/support/builtCache.h"
#include "tests/support/allocationFaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <new>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testsupport::builtCache;
using testsupport::raisedBy;

constexpr std::int32_t kFault = -388801;
constexpr std::int32_t kInvalid = -388802;
constexpr std::int32_t kUnsupported = -388804;
constexpr const char* kNotIndexable = "Tried to specify an index on a non-indexable attribute.";
constexpr const char* kFile = "source\\cPciTavPluginCache";

// Devices: 0 carries everything, with 256 ports so that every element index is in range; 1 carries
// nothing that it need not; 2 has one port without a link.
tDeviceRecord fullRecord() {
    tDeviceRecord record;
    record.bus = 0xFE;
    record.device = 0x1F;
    record.function = 7;
    record.modelName = "Box \xC3\xBC"; // UTF-8
    record.deviceCategory = 12;
    record.terminalName = "TAV17";
    record.linkWidthPerLabel = 4;
    record.walkValue = 0xFD;
    for (std::uint32_t i = 0; i < 256; ++i)
        record.ports.push_back({"label " + std::to_string(i), 1000 + i, 2000 + i, 3000 + i});
    return record;
}

tDeviceRecord bareRecord() {
    tDeviceRecord record;
    record.modelName = "Card";
    record.deviceCategory = 10;
    record.terminalName = "CARD1";
    return record;
}

tDeviceRecord portWithoutLink() {
    tDeviceRecord record = bareRecord();
    record.ports.push_back({"", 0, 0, 0});
    return record;
}

constexpr std::uint32_t kDevices = 3;

cPciTavPluginCache threeDevices() {
    return builtCache({fullRecord(), bareRecord(), portWithoutLink()});
}

// What a query comes to, at the border: a value, or a status with the message of its record.
struct Answer {
    std::int32_t status = 0;
    std::string message;
    std::variant<std::monostate, std::int32_t, std::string> value;

    bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
    stream << answer.status << " \"" << answer.message << "\"";
    if (const auto* number = std::get_if<std::int32_t>(&answer.value))
        stream << ' ' << *number;
    if (const auto* text = std::get_if<std::string>(&answer.value))
        stream << ' ' << *text;
    return stream;
}

Answer value(std::uint32_t number) {
    return {0, "", static_cast<std::int32_t>(number)};
}
Answer value(const std::string& text) {
    return {0, "", text};
}
Answer refused(std::int32_t status, const char* message = "") {
    return {status, message, {}};
}

// Runs a query; an exception becomes a status as at the border, and its record is checked.
template <class Query>
Answer answerOf(Query query) {
    try {
        query();
        return {};
    } catch (const zoerr::Exception& exception) {
        const std::string text = exception.text();
        Answer answer{statusOfCurrentException(), "", {}};
        const auto raised = raisedBy([&] { throw; });
        const char* const constant = answer.status == kFault ? "kTavManErrSoftwareFault"
                                     : answer.status == kInvalid
                                         ? "kTavManErrInvalidParam"
                                         : "kTavManErrAttributeNotSupported";
        EXPECT_TRUE(raised.hasSite(kFile, constant)) << text;
        answer.message = raised.member("Message");
        EXPECT_EQ(raised.record.size(), answer.message.empty() ? 4U : 5U) << text;
        return answer;
    } catch (...) {
        return {statusOfCurrentException(), "", {}};
    }
}

constexpr std::int32_t kUntouched = 0x5A5A5A5A;

Answer readInteger(const cPciTavPluginCache& cache, std::uint32_t device, std::uint32_t attribute) {
    std::int32_t number = kUntouched;
    Answer answer = answerOf([&] { cache.GetAttributeI32(device, attribute, &number); });
    if (answer.status == 0)
        answer.value = number;
    else
        EXPECT_EQ(number, kUntouched) << "written in spite of status " << answer.status;
    return answer;
}

struct TextBuffer {
    static constexpr char kFill = '#';
    std::array<char, TAVPLUGIN_TEXT_SIZE + 16> bytes{};

    TextBuffer() { bytes.fill(kFill); }
    [[nodiscard]] bool isUntouchedFrom(std::size_t offset) const {
        return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end(),
                           [](char c) { return c == kFill; });
    }
};

Answer readText(const cPciTavPluginCache& cache, std::uint32_t device, std::uint32_t attribute) {
    TextBuffer buffer;
    Answer answer =
        answerOf([&] { cache.GetAttributeUTF8(device, attribute, buffer.bytes.data()); });
    if (answer.status == 0)
        answer.value = std::string(buffer.bytes.data());
    else
        EXPECT_TRUE(buffer.isUntouchedFrom(0)) << "written in spite of status " << answer.status;
    EXPECT_TRUE(buffer.isUntouchedFrom(TAVPLUGIN_TEXT_SIZE));
    return answer;
}

// The whole table of integer attributes, in its plainest form.
Answer expectedInteger(std::uint32_t device, std::uint32_t attribute) {
    const std::array<tDeviceRecord, kDevices> records = {fullRecord(), bareRecord(),
                                                         portWithoutLink()};
    const std::uint32_t index = attribute & 0xFF;
    const bool present = device < kDevices;
    const tDeviceRecord record = present ? records[device] : tDeviceRecord();
    const auto plain = [&](const Answer& answer) {
        if (index != 0)
            return refused(kInvalid, kNotIndexable);
        return present ? answer : refused(kInvalid);
    };
    const auto unless = [](std::uint32_t number, std::uint32_t absent) {
        return number == absent ? refused(kUnsupported) : value(number);
    };
    const bool hasPort = present && index < record.ports.size();
    const tPortEntry port = hasPort ? record.ports[index] : tPortEntry();
    switch (attribute & 0xFFFFFF00) {
    case 0x01000100:
        return plain(value(record.deviceCategory));
    case 0x01000200:
        return plain(value(record.bus));
    case 0x01000300:
        return plain(value(record.device));
    case 0x01000400:
        return plain(value(record.function));
    case 0x01000500:
        return plain(unless(record.walkValue, 0xFFFFFFFF));
    case 0x01000600:
        return plain(value(static_cast<std::uint32_t>(record.ports.size())));
    case 0x01000700:
        return hasPort ? value(port.first) : refused(kInvalid);
    case 0x01000800:
        return present ? unless(record.linkWidthPerLabel, 0) : refused(kInvalid);
    case 0x01000900:
    case 0x01000A00:
        return index == 0 ? refused(kUnsupported) : refused(kInvalid, kNotIndexable);
    case 0x01000B00:
        return hasPort ? unless(port.second, 0) : refused(kInvalid);
    case 0x01000C00:
        return hasPort ? unless(port.third, 0) : refused(kInvalid);
    default:
        return refused(kInvalid);
    }
}

Answer expectedText(std::uint32_t device, std::uint32_t attribute) {
    const std::array<tDeviceRecord, kDevices> records = {fullRecord(), bareRecord(),
                                                         portWithoutLink()};
    const std::uint32_t index = attribute & 0xFF;
    const bool present = device < kDevices;
    const tDeviceRecord record = present ? records[device] : tDeviceRecord();
    const auto plain = [&](const std::string& text) {
        if (index != 0)
            return refused(kInvalid, kNotIndexable);
        return present ? value(text) : refused(kInvalid);
    };
    switch (attribute & 0xFFFFFF00) {
    case 0x02000100:
        return plain(record.modelName);
    case 0x02000200:
    case 0x02000300:
        return refused(kUnsupported);
    case 0x02000400:
        return present && index < record.ports.size() ? value(record.ports[index].connectorLabel)
                                                      : refused(kInvalid);
    case 0x02000500:
        return plain(record.terminalName);
    default:
        return refused(kInvalid);
    }
}

// Every identifier that there is, of both types, and those around them.
std::vector<std::uint32_t> everyAttribute() {
    std::vector<std::uint32_t> attributes = {0,          0x00000100, 0x03000100, 0x81000100,
                                             0xFF000100, 0x01010100, 0xFFFFFF00};
    for (std::uint32_t n = 0; n <= 0x10; ++n) {
        attributes.push_back(0x01000000 + n * 0x100);
        attributes.push_back(0x02000000 + n * 0x100);
    }
    return attributes;
}

constexpr std::uint32_t kIndexes[] = {0, 1, 5, 255};
constexpr std::uint32_t kDeviceIndexes[] = {0, 1, 2, kDevices, 0x7FFFFFFF, 0xFFFFFFFF};

TEST(DeviceAttributes, WholeTableOfIntegers) {
    const cPciTavPluginCache cache = threeDevices();
    std::size_t values = 0;
    for (const std::uint32_t attribute : everyAttribute()) {
        for (const std::uint32_t index : kIndexes) {
            for (const std::uint32_t device : kDeviceIndexes) {
                const Answer expected = expectedInteger(device, attribute | index);
                EXPECT_EQ(readInteger(cache, device, attribute | index), expected)
                    << std::hex << (attribute | index) << " of device " << device;
                values += expected.status == 0 ? 1 : 0;
            }
        }
    }
    // Device 0: 6 plain, 4 x 4 indexed or with the index ignored. Devices 1 and 2: 5 plain each.
    // Device 2: its port's first value.
    EXPECT_EQ(values, 6U + 16U + 2 * 5U + 1U);
}

TEST(DeviceAttributes, WholeTableOfTexts) {
    const cPciTavPluginCache cache = threeDevices();
    std::size_t values = 0;
    for (const std::uint32_t attribute : everyAttribute()) {
        for (const std::uint32_t index : kIndexes) {
            for (const std::uint32_t device : kDeviceIndexes) {
                const Answer expected = expectedText(device, attribute | index);
                EXPECT_EQ(readText(cache, device, attribute | index), expected)
                    << std::hex << (attribute | index) << " of device " << device;
                values += expected.status == 0 ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(values, 2 * kDevices + 4U + 1U);
}

TEST(DeviceAttributes, CacheThatIsNotBuiltRefusesEverything) {
    cPciTavPluginCache cache;
    cache.Append(fullRecord());
    for (const std::uint32_t attribute : everyAttribute()) {
        for (const std::uint32_t index : kIndexes) {
            EXPECT_EQ(readInteger(cache, 0, attribute | index), refused(kFault));
            EXPECT_EQ(readText(cache, 0, attribute | index), refused(kFault));
        }
    }
    // Also before the pointer is looked at.
    EXPECT_EQ(answerOf([&] { cache.GetAttributeI32(0, 0x01000100, nullptr); }), refused(kFault));
    EXPECT_EQ(answerOf([&] { cache.GetAttributeUTF8(0, 0x02000100, nullptr); }), refused(kFault));
}

TEST(DeviceAttributes, ClearedCacheRefusesEverything) {
    cPciTavPluginCache cache = threeDevices();
    cache.Clear();
    EXPECT_EQ(readInteger(cache, 0, 0x01000100), refused(kFault));
    EXPECT_EQ(readText(cache, 0, 0x02000100), refused(kFault));
}

TEST(DeviceAttributes, NullPointerIsAnInvalidParameterBeforeAnythingElse) {
    const cPciTavPluginCache cache = threeDevices();
    for (const std::uint32_t attribute : everyAttribute()) {
        for (const std::uint32_t index : kIndexes) {
            for (const std::uint32_t device : kDeviceIndexes) {
                EXPECT_EQ(
                    answerOf([&] { cache.GetAttributeI32(device, attribute | index, nullptr); }),
                    refused(kInvalid));
                EXPECT_EQ(
                    answerOf([&] { cache.GetAttributeUTF8(device, attribute | index, nullptr); }),
                    refused(kInvalid));
            }
        }
    }
}

// The identifiers as a host writes them, with what stands out about each.

TEST(DeviceAttributes, HeaderNamesTheAttributesByTheirNumbers) {
    const std::vector<std::uint32_t> integers = {
        kTavAttrDeviceCategory,   kTavAttrBusNumber,         kTavAttrDeviceNumber,
        kTavAttrFunctionNumber,   kTavAttrUpstreamPortBus,   kTavAttrPortCount,
        kTavAttrPortSecondaryBus, kTavAttrLinkWidthPerLabel, kTavAttrReserved9,
        kTavAttrReservedA,        kTavAttrPortLinkWidth,     kTavAttrPortLinkSpeed};
    for (std::uint32_t n = 0; n < integers.size(); ++n)
        EXPECT_EQ(integers[n], 16777472 + n * 256);
    const std::vector<std::uint32_t> texts = {kTavAttrModelName, kTavAttrReservedText2,
                                              kTavAttrReservedText3, kTavAttrConnectorLabel,
                                              kTavAttrTerminalName};
    for (std::uint32_t n = 0; n < texts.size(); ++n)
        EXPECT_EQ(texts[n], 33554688 + n * 256);
}

TEST(DeviceAttributes, LinkWidthPerLabelIgnoresTheIndex) {
    const cPciTavPluginCache cache = threeDevices();
    EXPECT_EQ(readInteger(cache, 0, 0x01000805), value(4));
    EXPECT_EQ(readInteger(cache, 0, 0x01000800), value(4));
    EXPECT_EQ(readInteger(cache, 1, 0x01000805), refused(kUnsupported));
}

TEST(DeviceAttributes, ReservedIntegersDoNotLookAtTheDevice) {
    const cPciTavPluginCache cache = builtCache({});
    EXPECT_EQ(readInteger(cache, 99, 0x01000900), refused(kUnsupported));
    EXPECT_EQ(readInteger(cache, 99, 0x01000A00), refused(kUnsupported));
    EXPECT_EQ(readInteger(cache, 99, 0x01000901), refused(kInvalid, kNotIndexable));
}

TEST(DeviceAttributes, ReservedTextsLookAtNeitherDeviceNorIndex) {
    const cPciTavPluginCache cache = builtCache({});
    for (const std::uint32_t index : kIndexes) {
        EXPECT_EQ(readText(cache, 99, 0x02000200 | index), refused(kUnsupported));
        EXPECT_EQ(readText(cache, 99, 0x02000300 | index), refused(kUnsupported));
    }
}

TEST(DeviceAttributes, DeviceWithoutPortsCountsNone) {
    const cPciTavPluginCache cache = threeDevices();
    EXPECT_EQ(readInteger(cache, 1, 0x01000600), value(0));
    EXPECT_EQ(readInteger(cache, 1, 0x01000700), refused(kInvalid));
    EXPECT_EQ(readText(cache, 1, 0x02000400), refused(kInvalid));
}

TEST(DeviceAttributes, FirstPortValueMayBeZero) {
    EXPECT_EQ(readInteger(threeDevices(), 2, 0x01000700), value(0));
}

TEST(DeviceAttributes, IndexIsRefusedBeforeTheDeviceIsLookedAt) {
    const cPciTavPluginCache cache = threeDevices();
    EXPECT_EQ(readInteger(cache, 99, 0x01000201), refused(kInvalid, kNotIndexable));
    EXPECT_EQ(readText(cache, 99, 0x02000101), refused(kInvalid, kNotIndexable));
    EXPECT_EQ(readText(cache, 99, 0x02000501), refused(kInvalid, kNotIndexable));
}

TEST(DeviceAttributes, AttributeOfTheOtherTypeIsAnInvalidParameter) {
    const cPciTavPluginCache cache = threeDevices();
    EXPECT_EQ(readInteger(cache, 0, 0x02000100), refused(kInvalid));
    EXPECT_EQ(readText(cache, 0, 0x01000100), refused(kInvalid));
}

TEST(DeviceAttributes, LargeValuesKeepTheirBits) {
    tDeviceRecord record = bareRecord();
    record.deviceCategory = 0xFFFFFFFF;
    record.walkValue = 0xFFFFFFFE;
    record.linkWidthPerLabel = 0xFFFFFFFC; // a negative number of the description
    record.ports.push_back({"A", 0x80000000, 0xFFFFFFFF, 0xFFFFFFFF});
    const cPciTavPluginCache cache = builtCache({record});
    EXPECT_EQ(readInteger(cache, 0, 0x01000100), value(0xFFFFFFFF));
    EXPECT_EQ(readInteger(cache, 0, 0x01000500), value(0xFFFFFFFE));
    EXPECT_EQ(readInteger(cache, 0, 0x01000700), value(0x80000000));
    EXPECT_EQ(readInteger(cache, 0, 0x01000800), value(0xFFFFFFFC));
    EXPECT_EQ(readInteger(cache, 0, 0x01000B00), value(0xFFFFFFFF));
    EXPECT_EQ(readInteger(cache, 0, 0x01000C00), value(0xFFFFFFFF));
}

// The text buffer.

constexpr std::uint32_t kTexts[] = {kTavAttrModelName, kTavAttrConnectorLabel,
                                    kTavAttrTerminalName};

cPciTavPluginCache deviceWithTexts(const std::string& text) {
    tDeviceRecord record = bareRecord();
    record.modelName = record.terminalName = text;
    record.ports.push_back({text, 1, 0, 0});
    return builtCache({record});
}

TEST(DeviceAttributes, TextOf255BytesIsCopiedWhole) {
    const std::string text(255, 'x');
    const cPciTavPluginCache cache = deviceWithTexts(text);
    for (const std::uint32_t attribute : kTexts)
        EXPECT_EQ(readText(cache, 0, attribute), value(text));
}

TEST(DeviceAttributes, TextOf256BytesIsASoftwareFaultWithAnEmptyText) {
    for (const std::size_t length : {256U, 257U, 100000U}) {
        const cPciTavPluginCache cache = deviceWithTexts(std::string(length, 'x'));
        for (const std::uint32_t attribute : kTexts) {
            TextBuffer buffer;
            EXPECT_EQ(answerOf([&] { cache.GetAttributeUTF8(0, attribute, buffer.bytes.data()); }),
                      refused(kFault));
            EXPECT_EQ(buffer.bytes[0], '\0');
            EXPECT_TRUE(buffer.isUntouchedFrom(TAVPLUGIN_TEXT_SIZE));
        }
    }
}

TEST(DeviceAttributes, EmptyTextIsAnEmptyText) {
    const cPciTavPluginCache cache = deviceWithTexts("");
    for (const std::uint32_t attribute : kTexts)
        EXPECT_EQ(readText(cache, 0, attribute), value(""));
}

TEST(DeviceAttributes, BytesAreCopiedAsTheyAre) {
    const std::string text = "\x01\x7F\x80\xFF\xC3\xBC %s\\\"";
    EXPECT_EQ(readText(deviceWithTexts(text), 0, kTavAttrTerminalName), value(text));
}

TEST(DeviceAttributes, TextIsCutThroughNowhereButAtItsTerminator) {
    // A 255-byte text whose last byte is part of a character is still copied whole.
    const std::string text = std::string(253, 'x') + "\xC3\xBC";
    EXPECT_EQ(readText(deviceWithTexts(text), 0, kTavAttrTerminalName), value(text));
    EXPECT_EQ(readText(deviceWithTexts(std::string("ab\0cd", 5)), 0, kTavAttrModelName),
              value("ab"));
}

// How many allocations a call makes.
template <class Call>
std::size_t allocationsOf(Call call) {
    for (std::size_t nth = 1; nth < 10; ++nth) {
        const testsupport::AllocationFault fault(nth);
        try {
            call();
        } catch (const std::bad_alloc&) {
        }
        if (!fault.happened())
            return nth - 1;
    }
    return 10;
}

TEST(DeviceAttributes, ReadingAnIntegerAllocatesNothing) {
    const cPciTavPluginCache cache = threeDevices();
    std::int32_t number = 0;
    for (std::uint32_t n = 1; n <= 12; ++n) {
        if (n == 9 || n == 10)
            continue; // never a value
        EXPECT_EQ(allocationsOf([&] { cache.GetAttributeI32(0, 0x01000000 + n * 0x100, &number); }),
                  0U)
            << n;
    }
}

// The export asks by way of these: the answers are the same, and what is not carried costs nothing.
TEST(DeviceAttributes, WhatADeviceDoesNotCarryIsAResultWhereOthersRaise) {
    const cPciTavPluginCache cache = threeDevices();
    int notCarried = 0;
    for (std::uint32_t device = 0; device < 4; ++device)
        for (std::uint32_t attribute = 0x01000000; attribute < 0x01000D00; attribute += 0x80) {
            std::int32_t number = kUntouched;
            std::int32_t found = kUntouched;
            const Answer raised =
                answerOf([&] { cache.GetAttributeI32(device, attribute, &number); });
            std::int32_t status = kUntouched;
            const std::size_t allocations = allocationsOf([&] {
                try {
                    status = cache.FindAttributeI32(device, attribute, &found);
                } catch (const std::bad_alloc&) {
                    throw;
                } catch (...) {
                    status = statusOfCurrentException();
                }
            });
            EXPECT_EQ(status, raised.status) << device << " " << attribute;
            EXPECT_EQ(found, number) << device << " " << attribute;
            if (status == kTavManErrAttributeNotSupported) {
                ++notCarried;
                EXPECT_EQ(allocations, 0U);
            }
        }
    EXPECT_GT(notCarried, 8);
    std::array<char, TAVPLUGIN_TEXT_SIZE> buffer{};
    EXPECT_EQ(cache.FindAttributeUTF8(0, 0x02000205, buffer.data()),
              kTavManErrAttributeNotSupported);
    EXPECT_EQ(cache.FindAttributeUTF8(9, 0x02000300, buffer.data()),
              kTavManErrAttributeNotSupported);
    EXPECT_EQ(cache.FindAttributeUTF8(0, kTavAttrModelName, buffer.data()), kTavManSuccess);
    EXPECT_NE(buffer[0], 0);
}

TEST(DeviceAttributes, ReadingATextAllocatesItsLocalCopyAlone) {
    const cPciTavPluginCache longTexts = deviceWithTexts(std::string(255, 'x'));
    const cPciTavPluginCache shortTexts = deviceWithTexts("TAV1");
    std::array<char, TAVPLUGIN_TEXT_SIZE> buffer{};
    for (const std::uint32_t attribute : kTexts) {
        EXPECT_EQ(allocationsOf([&] { longTexts.GetAttributeUTF8(0, attribute, buffer.data()); }),
                  1U);
        // A short one fits into the string itself.
        EXPECT_EQ(allocationsOf([&] { shortTexts.GetAttributeUTF8(0, attribute, buffer.data()); }),
                  0U);
    }
}

TEST(DeviceAttributes, LackOfMemoryLeavesTheBufferAlone) {
    const cPciTavPluginCache cache = deviceWithTexts(std::string(255, 'x'));
    TextBuffer buffer;
    {
        const testsupport::AllocationFault fault(1);
        EXPECT_THROW(cache.GetAttributeUTF8(0, kTavAttrModelName, buffer.bytes.data()),
                     std::bad_alloc);
    }
    EXPECT_TRUE(buffer.isUntouchedFrom(0));
}

} // namespace

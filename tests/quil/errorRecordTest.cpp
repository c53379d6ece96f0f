// The record's text, byte for byte: members, escaping, growth, insertion.
#include "quil/errorRecord.h"

#include "quil/jsonText.h"
#include "quil/setError.h"
#include "tests/quil/site.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using namespace nZOQUIL000;

constexpr const char* kSiteRecord =
    R"({"error_constant":"kTavManErrInvalidParam","file":"source\\cPciTavPluginCache",)"
    R"("line":237,"component":"zotavpci"})";

std::string escaped(const char* text) {
    std::string result(escapedLength(text), '?');
    char* end = writeEscaped(result.data(), text);
    EXPECT_EQ(end, result.data() + result.size());
    return result;
}

// Grants a first buffer of the size that the test asks for and then nothing.
std::uint32_t grantedCapacity = 0;
bool reallocateOnce(tErrorStatus& status, std::uint32_t requested) {
    if (requested == 0) {
        std::free(status.text);
        status.text = nullptr;
        status.capacity = 0;
        return true;
    }
    if (requested <= status.capacity)
        return true;
    if (status.text || requested > grantedCapacity)
        return false;
    status.text = static_cast<char*>(std::calloc(1, grantedCapacity));
    std::memcpy(status.text, "{}", 2);
    status.text[grantedCapacity - 1] = kTextMarker;
    status.capacity = grantedCapacity;
    return true;
}

void expectBufferIsWellFormed(const tErrorStatus& status) {
    ASSERT_NE(status.text, nullptr);
    for (std::size_t i = std::strlen(status.text); i + 1 < status.capacity; ++i)
        ASSERT_EQ(status.text[i], 0) << i;
    EXPECT_EQ(status.text[status.capacity - 1], kTextMarker);
}

TEST(ErrorRecord, SiteGivesFourMembersInOrderWithoutSpaces) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -388802, kSite));
    EXPECT_STREQ(status.text, kSiteRecord);
    expectBufferIsWellFormed(status);
}

TEST(ErrorRecord, SiteWithoutComponentLeavesTheMemberOut) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -1, {"f", -3, nullptr, "k"}));
    EXPECT_STREQ(status.text, R"({"error_constant":"k","file":"f","line":-3})");
}

TEST(ErrorRecord, SiteOnlyErrorHasNoConstant) {
    tErrorStatus status;
    ASSERT_TRUE(setSiteOnlyError(status, kSite));
    EXPECT_EQ(status.code, -313008);
    EXPECT_STREQ(status.text,
                 R"({"file":"source\\cPciTavPluginCache","line":237,"component":"zotavpci"})");
}

TEST(ErrorRecord, SiteOnlyErrorYieldsToAnEarlierError) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -1, kSite));
    EXPECT_FALSE(setSiteOnlyError(status, kSite));
    EXPECT_EQ(status.code, -1);
}

TEST(ErrorRecord, SiteOnlyErrorReplacesAWarning) {
    tErrorStatus status;
    status.code = 7;
    EXPECT_TRUE(setSiteOnlyError(status, kSite));
    EXPECT_EQ(status.code, -313008);
}

TEST(ErrorRecord, MessageIsAppendedAfterTheSite) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -388802, kSite));
    MemberWriter(status).append({"Message", "Iterator advanced to End."});
    const std::string expected = std::string(kSiteRecord, std::strlen(kSiteRecord) - 1) +
                                 R"(,"Message":"Iterator advanced to End."})";
    EXPECT_EQ(expected, status.text);
    expectBufferIsWellFormed(status);
}

TEST(ErrorRecord, ObjectMembersNestInOrder) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, nullptr), nullptr);
    MemberWriter(status).append({"outer", {{"a", "1"}, {"b", std::uint32_t{4294967295U}}}});
    EXPECT_STREQ(status.text, R"({"outer":{"a":"1","b":4294967295}})");
}

TEST(ErrorRecord, FirstMemberHasNoCommaTheSecondHas) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, nullptr), nullptr);
    MemberWriter writer(status);
    writer.append({"a", "x"});
    EXPECT_STREQ(status.text, R"({"a":"x"})");
    writer.append({"b", "y"});
    EXPECT_STREQ(status.text, R"({"a":"x","b":"y"})");
}

TEST(ErrorRecord, NullKeyWritesTheValueAlone) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, "[]"), nullptr);
    MemberWriter(status).append({nullptr, "x"}).append({nullptr, 2});
    EXPECT_STREQ(status.text, R"(["x",2])");
}

TEST(Escaping, ShortFormsCodeFormsAndPlainBytes) {
    EXPECT_EQ(escaped("\b\t\n\f\r\"\\"), R"(\b\t\n\f\r\"\\)");
    EXPECT_EQ(escaped("\x01"), R"(\u0001)");
    EXPECT_EQ(escaped("\x0b\x1f\x7f"), R"(\u000b\u001f\u007f)");
    EXPECT_EQ(escaped("/a\x80\xff"), "/a\x80\xff");
}

TEST(Escaping, EveryByteBelow128IsReadBackByAJsonParser) {
    for (int byte = 1; byte < 128; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        tErrorStatus status;
        ASSERT_NE(replaceText(status, nullptr), nullptr);
        MemberWriter(status).append({text.c_str(), text.c_str()});
        const auto record = nlohmann::json::parse(status.text);
        EXPECT_EQ(record.at(text), text) << byte;
    }
}

TEST(ErrorRecord, LongMembersDoubleTheBufferUntilTheyFit) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -1, kSite));
    const std::string message(3000, 'm');
    MemberWriter writer(status);
    writer.append({"Message", message.c_str()});
    EXPECT_EQ(status.capacity, 4096U);
    expectBufferIsWellFormed(status);
    writer.append({"Further", "x"});
    const auto record = nlohmann::json::parse(status.text);
    EXPECT_EQ(record.at("Message"), message);
    EXPECT_EQ(record.at("Further"), "x");
}

TEST(ErrorRecord, MemberThatFitsToTheLastByteDoesNotGrowTheBuffer) {
    // {"k":"..."} leaves 508 - 6 bytes beside the quotes and the key in the first buffer.
    tErrorStatus status;
    ASSERT_NE(replaceText(status, nullptr), nullptr);
    const std::string fits(508 - 6, 'x');
    MemberWriter(status).append({"k", fits.c_str()});
    EXPECT_EQ(status.capacity, 512U);
    EXPECT_EQ(std::strlen(status.text), 510U);

    tErrorStatus larger;
    ASSERT_NE(replaceText(larger, nullptr), nullptr);
    MemberWriter(larger).append({"k", (fits + "x").c_str()});
    EXPECT_EQ(larger.capacity, 1024U);
}

TEST(ErrorRecord, WithoutMemoryTheCodeIsSetAndTheTextEndsAfterAWholeMember) {
    for (std::uint32_t capacity = 4; capacity < 140; ++capacity) {
        grantedCapacity = capacity;
        tErrorStatus status;
        status.reallocate = &reallocateOnce;
        EXPECT_TRUE(setError(status, -388802, kSite));
        EXPECT_EQ(status.code, -388802);
        const auto record = nlohmann::ordered_json::parse(status.text);
        const bool whole = std::string(status.text) == kSiteRecord;
        EXPECT_EQ(whole, capacity >= std::strlen(kSiteRecord) + 2) << capacity;
        std::size_t members = 0;
        for (const auto& [key, value] : record.items()) {
            const char* expected[] = {"error_constant", "file", "line", "component"};
            EXPECT_EQ(key, expected[members++]);
        }
    }
}

TEST(ErrorRecord, WithoutAnyMemoryTheCodeIsSetWithoutText) {
    grantedCapacity = 0;
    tErrorStatus status;
    status.reallocate = &reallocateOnce;
    EXPECT_TRUE(setError(status, -388802, kSite));
    EXPECT_EQ(status.code, -388802);
    EXPECT_EQ(status.text, nullptr);
}

TEST(ErrorRecord, CursorWithoutRoomIgnoresLaterAppends) {
    grantedCapacity = 16;
    tErrorStatus status;
    status.reallocate = &reallocateOnce;
    ASSERT_NE(replaceText(status, nullptr), nullptr);
    MemberWriter writer(status);
    writer.append({"long key", "long value"});
    EXPECT_FALSE(writer.good());
    writer.append({"k", "v"});
    EXPECT_STREQ(status.text, "{}");
}

TEST(ReplaceText, ReturnsTheClosingBrace) {
    tErrorStatus status;
    char* position = replaceText(status, R"({"a":1})");
    ASSERT_NE(position, nullptr);
    EXPECT_EQ(position, status.text + 6);
    expectBufferIsWellFormed(status);
}

TEST(ReplaceText, ShorterTextClearsTheRestOfTheLonger) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, R"({"a":"a long text"})"), nullptr);
    ASSERT_NE(replaceText(status, nullptr), nullptr);
    EXPECT_STREQ(status.text, "{}");
    expectBufferIsWellFormed(status);
}

TEST(Reserve, RefusesMoreThanTheLargestText) {
    tErrorStatus status;
    EXPECT_EQ(reserveAndLocate(status, 0x7FFFFFFEU), nullptr);
    EXPECT_EQ(status.capacity, 0U);
}

TEST(Reserve, FindsTheClosingBracketBehindAnyWellFormedText) {
    for (const char* text : {"{}", " \t\r\n{ }", R"({"a":"b"})", R"({"a":"\"}"})",
                             "[1,-2.5e+3,true]", R"({"a":{"b":[null,false,{}]} , "c":[ ]})"}) {
        tErrorStatus status;
        ASSERT_NE(replaceText(status, text), nullptr);
        EXPECT_EQ(reserveAndLocate(status, 2), status.text + std::strlen(text) - 1) << text;
    }
}

TEST(Reserve, FindsNothingInTextThatIsNotWellFormed) {
    for (const char* text : {"x", "{", R"({"a")", R"({"a":})", R"({"a":1,})", "[1 2]", "[tru]",
                             R"({"a:1})", R"({1:2})", "[-]", "[1.]", "[1e]", R"(["\)"}) {
        tErrorStatus status;
        ASSERT_NE(replaceText(status, text), nullptr);
        EXPECT_EQ(reserveAndLocate(status, 2), nullptr) << text;
    }
}

TEST(Reserve, RefusesEndlessNesting) {
    tErrorStatus status;
    const std::string text = std::string(100000, '[') + std::string(100000, ']');
    ASSERT_NE(replaceText(status, text.c_str()), nullptr);
    EXPECT_EQ(reserveAndLocate(status, 2), nullptr);
}

TEST(InsertSpace, BehindTheOpeningBracketTheCommaStandsBeforeTheOldFirstMember) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, R"({"b":2})"), nullptr);
    char* space = insertSpace(status.text + 1, 5);
    ASSERT_EQ(space, status.text + 1);
    std::memcpy(space, R"("a":1)", 5);
    EXPECT_STREQ(status.text, R"({"a":1,"b":2})");
}

TEST(InsertSpace, AtTheEndTheCommaComesFirst) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, R"({"a":1})"), nullptr);
    char* space = insertSpace(status.text + 6, 5);
    ASSERT_EQ(space, status.text + 7);
    std::memcpy(space, R"("b":2)", 5);
    EXPECT_STREQ(status.text, R"({"a":1,"b":2})");
}

TEST(InsertSpace, WhiteSpaceDoesNotMakeAContainerFull) {
    tErrorStatus status;
    ASSERT_NE(replaceText(status, "{ }"), nullptr);
    MemberWriter(status).append({"a", 1});
    EXPECT_EQ(nlohmann::json::parse(status.text).at("a"), 1);
}

} // namespace

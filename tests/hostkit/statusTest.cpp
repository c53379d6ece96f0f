// tav::Status: every number, in figures and in words.
#include <gtest/gtest.h>
#include <tavHost.h>

#include <limits>
#include <set>
#include <string>

namespace {

using tav::Status;

std::string wordsOf(std::int32_t code) {
    return std::string(Status(code).words());
}

TEST(HostStatus, TellsNumbersInDecimalAndHexadecimal) {
    EXPECT_EQ(Status(kTavManErrInvalidParam).decimal().view(), "-388802");
    EXPECT_EQ(Status(kTavManErrInvalidParam).hexadecimal().view(), "0xFFFA113E");
    EXPECT_STREQ(Status().decimal().c_str(), "0");
    EXPECT_STREQ(Status().hexadecimal().c_str(), "0x00000000");
    EXPECT_EQ(Status(std::numeric_limits<std::int32_t>::min()).decimal().view(), "-2147483648");
    EXPECT_EQ(Status(std::numeric_limits<std::int32_t>::min()).hexadecimal().view(), "0x80000000");
    EXPECT_EQ(Status(std::numeric_limits<std::int32_t>::max()).decimal().view(), "2147483647");
    EXPECT_EQ(Status(-1).hexadecimal().view(), "0xFFFFFFFF");
}

TEST(HostStatus, IsAnErrorWhenNegative) {
    EXPECT_TRUE(Status().ok());
    EXPECT_TRUE(Status(1).ok());
    EXPECT_FALSE(Status(-1).ok());
    EXPECT_EQ(Status(-7).code(), -7);
    EXPECT_EQ(Status(-7), Status(-7));
    EXPECT_NE(Status(-7), Status(-8));
}

TEST(HostStatus, KnowsThePluginsOwn) {
    EXPECT_TRUE(Status(kTavManErrSoftwareFault).isSoftwareFault());
    EXPECT_TRUE(Status(kTavManErrInvalidParam).isInvalidParam());
    EXPECT_TRUE(Status(kTavManErrAttributeNotSupported).isNotSupported());
    for (const std::int32_t code : {0, -388803, -52000}) {
        EXPECT_FALSE(Status(code).isSoftwareFault()) << code;
        EXPECT_FALSE(Status(code).isInvalidParam()) << code;
        EXPECT_FALSE(Status(code).isNotSupported()) << code;
    }
}

TEST(HostStatus, HasWordsOfItsOwnForEachKind) {
    const std::set<std::string> words = {
        wordsOf(0),
        wordsOf(1),
        wordsOf(kTavManErrSoftwareFault),
        wordsOf(kTavManErrInvalidParam),
        wordsOf(kTavManErrAttributeNotSupported),
        wordsOf(-52000),
        wordsOf(-52003),
        wordsOf(-52005),
        wordsOf(-52006),
        wordsOf(-313001),
        wordsOf(-313314),
        wordsOf(static_cast<std::int32_t>(0x80070005)),
        wordsOf(static_cast<std::int32_t>(0x800F0203)),
        wordsOf(-1),
    };
    EXPECT_EQ(words.size(), 14U);
    EXPECT_EQ(words.count(""), 0U);
    EXPECT_EQ(wordsOf(0), "success");
    EXPECT_EQ(wordsOf(-52006), wordsOf(-52019));
}

TEST(HostStatus, KnowsTheEndsOfRanges) {
    const std::string unknown = wordsOf(-1);
    EXPECT_NE(wordsOf(-313008), unknown);
    EXPECT_EQ(wordsOf(-313008), wordsOf(-313001));
    EXPECT_EQ(wordsOf(-313009), unknown);
    EXPECT_EQ(wordsOf(-313000), unknown);
    EXPECT_NE(wordsOf(-313328), unknown);
    EXPECT_EQ(wordsOf(-313328), wordsOf(-313314));
    EXPECT_EQ(wordsOf(-313329), unknown);
    EXPECT_EQ(wordsOf(-313313), unknown);
    EXPECT_EQ(wordsOf(static_cast<std::int32_t>(0x80080005)), unknown);
}

// Words are there while a host is compiled, too.
static_assert(!Status(kTavManErrSoftwareFault).words().empty());
static_assert(Status().ok());

} // namespace

// Statuses in decimal, hexadecimal and words.
#include "tavctl/words/statusText.h"

#include "platform/systemCode.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace tavctl;

TEST(StatusText, HexadecimalHasEightDigits) {
    EXPECT_EQ(hexadecimalStatus(-388801), "0xFFFA113F");
    EXPECT_EQ(hexadecimalStatus(313300), "0x0004C7D4");
}

TEST(StatusText, DescribesDecimalHexadecimalAndWords) {
    EXPECT_EQ(describeStatus(-388804),
              "-388804 (0xFFFA113C): the device does not carry this attribute");
}

TEST(StatusText, EveryDocumentedStatusHasWordsOfItsOwn) {
    const int documented[] = {
        0,       -388801, -388802, -388804, -52000,  -52003,  -52005,  -52006,  -52019,  -313001,
        -313002, -313003, -313004, -313008, 313300,  -313314, -313315, -313316, -313317, -313318,
        -313319, -313320, -313321, -313322, -313323, -313324, -313325, -313326, -313327, -313328};
    std::set<std::string> words;
    for (const int status : documented) {
        EXPECT_NE(statusWords(status), "unknown status") << status;
        EXPECT_TRUE(words.insert(statusWords(status)).second) << status;
    }
}

TEST(StatusText, SystemErrorsSpeakInTheSystemsWords) {
    EXPECT_EQ(statusWords(static_cast<std::int32_t>(0x80070002U)),
              "system error: " + platform::systemMessage(2));
}

TEST(StatusText, ErrorsOfTheDeviceInstallationAreToldFromOthers) {
    EXPECT_EQ(statusWords(static_cast<std::int32_t>(0x800F020BU)),
              "the system's device installation failed with 0xE000020B");
}

TEST(StatusText, OtherStatusesAreUnknown) {
    EXPECT_EQ(statusWords(-1), "unknown status");
}

} // namespace

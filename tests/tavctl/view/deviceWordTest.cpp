// What a word of the command line stands for.
#include "tavctl/view/deviceWord.h"

#include "tavctl/words/failure.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::ElementsAre;

std::vector<ListedDevice> someDevices() {
    ListedDevice first;
    first.terminalName = "TAV1";
    first.model = "Switch Box";
    first.bus = 1;
    ListedDevice second = first;
    second.terminalName = "TAV2";
    second.bus = 9;
    ListedDevice third;
    third.terminalName = "Card1";
    third.model = "TAV1"; // a model may be called as a device is named
    third.bus = 4;
    third.device = 2;
    third.function = 1;
    return {first, second, third};
}

DeviceWord wordOf(const std::string& word) {
    return readDeviceWord(word, someDevices());
}

TEST(DeviceWord, NameComesBeforeModel) {
    EXPECT_EQ(wordOf("TAV1").kind, DeviceWord::Kind::name);
    EXPECT_THAT(wordOf("TAV1").devices, ElementsAre(0));
    EXPECT_THAT(wordOf("TAV2*").devices, ElementsAre(1)) << "as lists mark it";
}

TEST(DeviceWord, AddressHasADomainOrNone) {
    EXPECT_THAT(wordOf("04:02.1").devices, ElementsAre(2));
    EXPECT_THAT(wordOf("0000:04:02.1").devices, ElementsAre(2));
    EXPECT_EQ(wordOf("04:02.1").kind, DeviceWord::Kind::address);
    EXPECT_THAT(wordOf("0001:04:02.1").devices, ElementsAre());
    EXPECT_EQ(wordOf("0001:04:02.1").address->domain, 1U);
    EXPECT_THAT(wordOf("00:00.0").devices, ElementsAre());
}

TEST(DeviceWord, ModelIsMeantWholeWhereThereIsOneAndElseInPart) {
    EXPECT_THAT(wordOf("Switch Box").devices, ElementsAre(0, 1));
    EXPECT_THAT(wordOf("itch").devices, ElementsAre(0, 1));
    EXPECT_EQ(wordOf("itch").kind, DeviceWord::Kind::model);
    std::vector<ListedDevice> devices = someDevices();
    devices[1].model = "Switch Box 2";
    EXPECT_THAT(readDeviceWord("Switch Box", devices).devices, ElementsAre(0));
}

TEST(DeviceWord, AnythingElseIsRefusedWithTheLikelyOne) {
    try {
        wordOf("TAV3");
        FAIL();
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.exitStatus(), ExitStatus::problemFound);
        EXPECT_STREQ(exception.what(), "find device (TAV3): no device has this name, address or "
                                       "model; did you mean \"TAV1\"?");
    }
    EXPECT_THROW(readDeviceWord("TAV1", {}), FailureException);
}

} // namespace

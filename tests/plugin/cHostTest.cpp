// The interface from C, and its numbers.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/libraryFolder.h"

#include <gtest/gtest.h>

extern "C" std::int32_t listFirstDeviceInC(std::uint32_t* count, std::int32_t* category,
                                           char* name);

namespace {

TEST(CHost, ListsTheSampleMachine) {
    const testplugin::SampleMachine machine;
    testsupport::findLibrariesIn(std::filesystem::path(ZOPCIBRD_FILE).parent_path());
    std::uint32_t count = 0;
    std::int32_t category = 0;
    char name[TAVPLUGIN_TEXT_SIZE] = "";
    EXPECT_EQ(listFirstDeviceInC(&count, &category, name), 0);
    EXPECT_EQ(count, testplugin::kSampleDevices);
    EXPECT_EQ(category, kTavCategorySwitchboxTav);
    EXPECT_STREQ(name, "TAV1");
}

TEST(Header, StatusesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<std::uint32_t>(kTavManErrSoftwareFault), 0xFFFA113FU);
    EXPECT_EQ(static_cast<std::uint32_t>(kTavManErrInvalidParam), 0xFFFA113EU);
    EXPECT_EQ(static_cast<std::uint32_t>(kTavManErrAttributeNotSupported), 0xFFFA113CU);
}

TEST(Header, AttributesHaveTheirNumbers) {
    EXPECT_EQ(kTavAttrDeviceCategory, 16777472);
    EXPECT_EQ(kTavAttrBusNumber, 16777728);
    EXPECT_EQ(kTavAttrDeviceNumber, 16777984);
    EXPECT_EQ(kTavAttrFunctionNumber, 16778240);
    EXPECT_EQ(kTavAttrUpstreamPortBus, 16778496);
    EXPECT_EQ(kTavAttrPortCount, 16778752);
    EXPECT_EQ(kTavAttrPortSecondaryBus, 16779008);
    EXPECT_EQ(kTavAttrLinkWidthPerLabel, 16779264);
    EXPECT_EQ(kTavAttrReserved9, 16779520);
    EXPECT_EQ(kTavAttrReservedA, 16779776);
    EXPECT_EQ(kTavAttrPortLinkWidth, 16780032);
    EXPECT_EQ(kTavAttrPortLinkSpeed, 16780288);
    EXPECT_EQ(kTavAttrModelName, 33554688);
    EXPECT_EQ(kTavAttrReservedText2, 33554944);
    EXPECT_EQ(kTavAttrReservedText3, 33555200);
    EXPECT_EQ(kTavAttrConnectorLabel, 33555456);
    EXPECT_EQ(kTavAttrTerminalName, 33555712);
    EXPECT_EQ(TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, 3), 33555459U);
}

} // namespace

// Names from the PCI ID database.
#include "tavctl/bus/pciNames.h"

#include "tavctl/words/failure.h"
#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl;

constexpr const char* kText = "# comment\n"
                              "\n"
                              "10b5  Maker of Switches\r\n"
                              "\t8609  Switch\r\n"
                              "\t\t1234 0001  Subsystem\n"
                              "\tzzzz  not a number\n"
                              "\t12\n"
                              "1172  Maker of Logic\n"
                              "\te001  Card \n"
                              "C 06  Bridge\n"
                              "\t04  PCI bridge\n"
                              "\t0007  not a device\n";

TEST(PciNames, NameVendorsAndDevices) {
    const PciNames names = PciNames::parse(kText);
    EXPECT_EQ(names.vendor(0x10B5), "Maker of Switches");
    EXPECT_EQ(names.device(0x10B5, 0x8609), "Switch");
    EXPECT_EQ(names.device(0x1172, 0xE001), "Card");
    EXPECT_EQ(names.device(0x1172, 0x8609), "");
    EXPECT_EQ(names.vendor(0x1234), "");
    EXPECT_EQ(names.device(0x1172, 0x0007), "");
}

TEST(PciNames, NumbersHaveTheDigitsFrom0ToFInLowerCase) {
    const PciNames names = PciNames::parse("09af  Maker\n\tf90a  Card\n\t/000  no\n\t:000  no\n"
                                           "\t`000  no\n\tg000  no\n\tA000  no\n");
    EXPECT_EQ(names.vendor(0x09AF), "Maker");
    EXPECT_EQ(names.device(0x09AF, 0xF90A), "Card");
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
        if (id != 0xF90A) {
            EXPECT_EQ(names.device(0x09AF, static_cast<std::uint16_t>(id)), "") << id;
        }
    }
}

TEST(PciNames, FunctionsHaveTheBestNameThereIs) {
    const PciNames names = PciNames::parse(kText);
    EXPECT_EQ(names.function(0x10B5, 0x8609), "Maker of Switches Switch");
    EXPECT_EQ(names.function(0x10B5, 0x00AB), "Maker of Switches Device 00ab");
    EXPECT_EQ(names.function(0xFFFF, 0x00AB), "Device ffff:00ab");
    EXPECT_EQ(PciNames().function(0x10B5, 0x8609), "Device 10b5:8609");
}

TEST(PciNames, AreReadFromTheNamedFile) {
    const testsupport::FileFolder folder;
    EXPECT_EQ(PciNames::load(folder.write("pci.ids", kText)).vendor(0x1172), "Maker of Logic");
}

TEST(PciNames, NamedFileThatCannotBeReadIsAFailure) {
    try {
        PciNames::load("/nonexistent/pci.ids");
        FAIL() << "nothing was raised";
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.failure().object, "/nonexistent/pci.ids");
        EXPECT_NE(exception.failure().reason, "");
    }
}

TEST(PciNames, NumbersWithoutANameOrWithMoreDigitsAreNone) {
    const PciNames names = PciNames::parse("8086\n\t0001  Of Nobody\n"
                                           "10b55  Five Digits\n"
                                           "1172  Maker\n\te001\n\te0022  Five Digits\n");
    EXPECT_EQ(names.vendor(0x8086), "");
    EXPECT_EQ(names.device(0x8086, 0x0001), "");
    EXPECT_EQ(names.vendor(0x10B5), "");
    EXPECT_EQ(names.vendor(0x1172), "Maker");
    EXPECT_EQ(names.device(0x1172, 0xE001), "");
    EXPECT_EQ(names.device(0x1172, 0xE002), "");
}

} // namespace

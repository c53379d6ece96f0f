// Names of temporary files.
#include "pxidrivertools/ini/iniSafeWrite.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

TEST(IniTemporaryName, NumberedNamesStandBesideTheTarget) {
    EXPECT_EQ(numberedTemporary(platform::splitPath("/etc/tav/names.ini"), 0),
              "/etc/tav/ini$$0.TMP");
    EXPECT_EQ(numberedTemporary(platform::splitPath("names.ini"), 999), "ini$$999.TMP");
    EXPECT_EQ(numberedTemporary({"C:", "\\x\\", "names", ".ini"}, 7), "C:\\x\\ini$$7.TMP");
}

TEST(IniTemporaryName, TheSiblingHasTheExtensionReplaced) {
    EXPECT_EQ(siblingTemporary("/dir/names.ini"), "/dir/names.TMP");
    EXPECT_EQ(siblingTemporary("C:\\dir\\names.ini"), "C:\\dir\\names.TMP");
    EXPECT_EQ(siblingTemporary("/dir/a.b.c"), "/dir/a.b.TMP");
    EXPECT_EQ(siblingTemporary("/dir/names."), "/dir/names.TMP");
    EXPECT_EQ(siblingTemporary("/dir/.ini"), "/dir/.TMP");
    EXPECT_EQ(siblingTemporary("/dir/names.tmp"), "/dir/names.TMP");
    EXPECT_EQ(siblingTemporary("/dir/names.TMPX"), "/dir/names.TMP");
}

TEST(IniTemporaryName, AnExtensionThatIsTmpAlreadyGetsAnother) {
    EXPECT_EQ(siblingTemporary("/dir/names.TMP"), "/dir/names.TMP.TMP");
}

TEST(IniTemporaryName, WithoutADotBehindTheLastSeparatorTheWholePathIsKept) {
    EXPECT_EQ(siblingTemporary("/dir/names"), "/dir/names.TMP");
    EXPECT_EQ(siblingTemporary("/dir.d/names"), "/dir.d/names.TMP");
    EXPECT_EQ(siblingTemporary("C:/dir.d\\names"), "C:/dir.d\\names.TMP");
    EXPECT_EQ(siblingTemporary("C:\\dir.d/names"), "C:\\dir.d/names.TMP");
}

TEST(IniTemporaryName, ABareFileNameKeepsItsExtensionAndGainsASecondOne) {
    EXPECT_EQ(siblingTemporary("names.ini"), "names.ini.TMP");
    EXPECT_EQ(siblingTemporary("names"), "names.TMP");
}

} // namespace

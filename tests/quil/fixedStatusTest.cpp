// The fixed-layout status: what a set keeps, and what converting it makes of it.
#include "quil/setError.h"
#include "quil/tFixedStatus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using namespace nZOQUIL000;

bool refuseToReallocate(tErrorStatus&, std::uint32_t requested) {
    return requested == 0;
}

TEST(FixedStatus, KeepsComponentFileAndLineAndClearsTheLastField) {
    tFixedStatus status;
    status.systemCode = 99;
    EXPECT_TRUE(setFixedStatus(status, -3, "zotavpci", "a\\b", 17));
    EXPECT_EQ(status.code, -3);
    EXPECT_STREQ(status.component, "zotavpci");
    EXPECT_STREQ(status.file, "a\\b");
    EXPECT_EQ(status.line, 17);
    EXPECT_EQ(status.systemCode, 0U);
}

TEST(FixedStatus, FollowsTheMergeRule) {
    tFixedStatus status;
    EXPECT_FALSE(setFixedStatus(status, 0, "c", "f", 1));
    EXPECT_TRUE(setFixedStatus(status, 4, "warning", "f", 1));
    EXPECT_FALSE(setFixedStatus(status, 5, "c", "g", 2));
    EXPECT_TRUE(setFixedStatus(status, -6, "error", "h", 3));
    EXPECT_FALSE(setFixedStatus(status, -7, "c", "i", 4));
    EXPECT_EQ(status.code, -6);
    EXPECT_STREQ(status.component, "error");
    EXPECT_STREQ(status.file, "h");
}

TEST(FixedStatus, CutsTheComponentToNineCharacters) {
    tFixedStatus status;
    setFixedStatus(status, -1, "abcdefghijk", "f", 1);
    EXPECT_STREQ(status.component, "abcdefghi");
}

TEST(FixedStatus, KeepsAPathOfOneHundredCharactersWhole) {
    tFixedStatus status;
    const std::string path(100, 'p');
    setFixedStatus(status, -1, "c", path.c_str(), 1);
    EXPECT_EQ(path, status.file);
}

TEST(FixedStatus, ShortensALongerPathInTheMiddle) {
    for (const std::size_t length : {std::size_t{101}, std::size_t{150}}) {
        tFixedStatus status;
        std::string path;
        for (std::size_t i = 0; i < length; ++i)
            path += static_cast<char>('a' + i % 26);
        setFixedStatus(status, -1, "c", path.c_str(), 1);
        EXPECT_EQ(path.substr(0, 49) + ".." + path.substr(length - 49), status.file);
    }
}

TEST(FixedStatus, SmallStructureTakesTheCodeAlone) {
    tFixedStatus status;
    status.size = 207;
    EXPECT_TRUE(setFixedStatus(status, -1, "c", "f", 1));
    EXPECT_EQ(status.code, -1);
    EXPECT_STREQ(status.file, "");
    EXPECT_EQ(status.line, 0);
}

TEST(ConvertFixedStatus, WritesFileLineAndComponent) {
    tFixedStatus source;
    setFixedStatus(source, -313319, "zotavpci", "pxidrivertools\\cIniFile", 8);
    tErrorStatus status;
    EXPECT_TRUE(convertFixedStatus(source, status));
    EXPECT_EQ(status.code, -313319);
    EXPECT_STREQ(status.text,
                 R"({"file":"pxidrivertools\\cIniFile","line":8,"component":"zotavpci"})");
}

TEST(ConvertFixedStatus, SmallStructureGivesTheCodeAndAnEmptyObject) {
    tFixedStatus source;
    source.size = 207;
    setFixedStatus(source, -4, "c", "f", 1);
    tErrorStatus status;
    EXPECT_TRUE(convertFixedStatus(source, status));
    EXPECT_EQ(status.code, -4);
    EXPECT_STREQ(status.text, "{}");
}

TEST(ConvertFixedStatus, EmptyNamesAreLeftOut) {
    tFixedStatus source;
    setFixedStatus(source, -4, "", "", 1);
    tErrorStatus status;
    EXPECT_TRUE(convertFixedStatus(source, status));
    EXPECT_STREQ(status.text, "{}");
}

TEST(ConvertFixedStatus, SuccessAndLosersChangeNothing) {
    const tFixedStatus success;
    tErrorStatus status;
    EXPECT_TRUE(convertFixedStatus(success, status));
    EXPECT_EQ(status.text, nullptr);

    setError(status, -1, siteHere("f", "k"));
    tFixedStatus second;
    setFixedStatus(second, -2, "c", "f", 1);
    EXPECT_TRUE(convertFixedStatus(second, status));
    EXPECT_EQ(status.code, -1);
}

TEST(ConvertFixedStatus, ReportsThatTheTextCouldNotGrow) {
    tFixedStatus source;
    setFixedStatus(source, -4, "c", "f", 1);
    tErrorStatus status;
    status.reallocate = &refuseToReallocate;
    EXPECT_FALSE(convertFixedStatus(source, status));
    EXPECT_EQ(status.code, -4);
}

} // namespace

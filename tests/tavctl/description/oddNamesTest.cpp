// Names by which a search for *.ini finds what is no description.
#include "tavctl/description/oddNames.h"

#include <gtest/gtest.h>

namespace {

using namespace tavctl::lint;

TEST(OddNames, OfShortNamesTheFirstThreeCharactersOfTheLastExtensionCount) {
    for (const char* name : {"box.ini~", "box.ini_old", "box.inix", "BOX.INI.INI2", "a.b.iniX",
                             ".box.ini~", "box.in i", "box.ini "})
        EXPECT_TRUE(hasDescriptionShortName(name)) << name;
    for (const char* name : {"box.ini", "box.INI", "box.ini.bak", "box.in", "box.xini", "ini",
                             "box", ".ini_old", "inix", "box.", "", "."})
        EXPECT_FALSE(hasDescriptionShortName(name)) << name;
}

TEST(OddNames, DescriptionsAreCalledIni) {
    for (const char* name : {"box.ini", "Box.INI", "a.b.Ini", ".ini"})
        EXPECT_TRUE(isDescriptionName(name)) << name;
    for (const char* name : {"box.ini~", "boxini", "ini", "", "box.ini "})
        EXPECT_FALSE(isDescriptionName(name)) << name;
}

TEST(OddNames, WhatExplorerWritesHasOneName) {
    EXPECT_TRUE(isExplorersName("desktop.ini"));
    EXPECT_TRUE(isExplorersName("Desktop.INI"));
    EXPECT_FALSE(isExplorersName("mydesktop.ini"));
    EXPECT_FALSE(isExplorersName("desktop.ini2"));
}

} // namespace

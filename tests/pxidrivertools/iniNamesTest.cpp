// When names of sections and keys are the same.
#include "pxidrivertools/ini/iniNames.h"

#include "tests/support/collidingNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

TEST(IniNames, CaseSensitiveNamesAreEqualByteForByte) {
    EXPECT_TRUE(equalNames(true, "Model", "Model"));
    EXPECT_FALSE(equalNames(true, "Model", "model"));
    EXPECT_FALSE(equalNames(true, "Model", "Model "));
    EXPECT_FALSE(equalNames(true, " Model", "Model"));
    EXPECT_FALSE(equalNames(true, "Model", "Mode"));
}

TEST(IniNames, OtherwiseCaseAndOuterWhiteSpaceDoNotCount) {
    EXPECT_TRUE(equalNames(false, " model", "MODEL "));
    EXPECT_TRUE(equalNames(false, "\t\v\f\r\n a", "A"));
    EXPECT_TRUE(equalNames(false, "", "  "));
    EXPECT_FALSE(equalNames(false, "a b", "ab"));
    EXPECT_FALSE(equalNames(false, "a", "ab"));
    EXPECT_FALSE(equalNames(false, "a x", "a"));
    EXPECT_FALSE(equalNames(false, "", "a"));
}

TEST(IniNames, OnlyTheLongerOnesTrailingWhiteSpaceIsIgnored) {
    EXPECT_TRUE(equalNames(false, "a", "a "));
    EXPECT_TRUE(equalNames(false, "a", "a\t"));
    EXPECT_FALSE(equalNames(false, "a ", "a\t"));
    EXPECT_TRUE(equalNames(false, "a ", "a  "));
    EXPECT_FALSE(equalNames(false, "a ", "a\t "));
}

TEST(IniNames, OnlyAsciiLettersHaveCases) {
    EXPECT_TRUE(equalNames(false, "az09@[`{", "AZ09@[`{"));
    EXPECT_FALSE(equalNames(false, "@", "`"));
    EXPECT_FALSE(equalNames(false, "[", "{"));
    EXPECT_FALSE(equalNames(false, "\xE4", "\xC4"));
    EXPECT_FALSE(equalNames(false, "\x01", "!"));
}

// Every byte against every other, so that no pair of hashing and comparing disagrees.
TEST(IniNames, EqualNamesHaveEqualHashes) {
    for (int a = 1; a < 256; ++a)
        for (int b = 1; b < 256; ++b) {
            const std::string left = "key" + std::string(1, static_cast<char>(a)) + "name";
            const std::string right = "key" + std::string(1, static_cast<char>(b)) + "name";
            if (equalNames(false, left, right)) {
                ASSERT_EQ(hashName(false, left), hashName(false, right)) << a << " " << b;
            } else {
                ASSERT_NE(hashName(false, left), hashName(false, right)) << a << " " << b;
            }
        }
    const std::vector<std::string> same = {"model", " MODEL", "Model \t", "\tmOdel"};
    for (const std::string& name : same)
        EXPECT_EQ(hashName(false, name), hashName(false, same.front()));
    EXPECT_NE(hashName(true, "model"), hashName(true, "Model"));
    EXPECT_NE(hashName(true, "model"), hashName(true, "model "));
}

TEST(IniNames, EqualNamesHaveEqualTags) {
    for (const std::size_t length : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 20U})
        for (int a = 1; a < 256; ++a)
            for (int b = 1; b < 256; ++b) {
                std::string left(length, 'k');
                std::string right(length, 'K');
                left.back() = static_cast<char>(a);
                right.back() = static_cast<char>(b);
                if (equalNames(false, left, right)) {
                    ASSERT_EQ(tagName(left), tagName(right)) << length << " " << a << " " << b;
                }
            }
    EXPECT_EQ(tagName(" Model"), tagName("MODEL \t"));
    EXPECT_EQ(tagTrimmedName("model"), tagName("model"));
    EXPECT_NE(tagName(""), 0);
    // Numbered names, the most common kind, have different ones.
    std::set<std::uint16_t> tags;
    for (int n = 0; n < 100; ++n)
        tags.insert(tagName("key" + std::to_string(n)));
    EXPECT_GT(tags.size(), 95U);
}

TEST(IniNames, HashesSeeTheWholeLength) {
    std::string name(40, 'a');
    const std::uint32_t hash = hashName(true, name);
    for (std::size_t i = 0; i < name.size(); ++i) {
        std::string other = name;
        other[i] = 'b';
        EXPECT_NE(hashName(true, other), hash) << i;
    }
    EXPECT_NE(hashName(true, std::string(1, '\0')), hashName(true, ""));
}

// What one mixing that is known lets collide: as many different hashes as random numbers would be,
// also of the few bits that a small table looks at.
TEST(IniNames, HashesCannotBeMadeToCollide) {
    const std::vector<std::string> names = testsupport::collidingNames(4096);
    for (const bool caseSensitive : {true, false}) {
        std::set<std::uint32_t> hashes;
        std::vector<unsigned> inSlot(1024);
        for (const std::string& name : names) {
            const std::uint32_t hash = hashName(caseSensitive, name);
            hashes.insert(hash);
            ++inSlot[hash % inSlot.size()];
        }
        EXPECT_GE(hashes.size(), names.size() - 2) << caseSensitive;
        EXPECT_LE(*std::max_element(inSlot.begin(), inSlot.end()), 32U) << caseSensitive;
    }
}

// Names that differ little are spread like any others.
TEST(IniNames, HashesOfSimilarNamesAreSpread) {
    for (const std::string base : {"", "Key", "Section 000", "A name of some length, "}) {
        std::vector<unsigned> inSlot(1024);
        for (int n = 0; n < 4096; ++n)
            ++inSlot[hashName(false, base + std::to_string(n)) % inSlot.size()];
        EXPECT_LE(*std::max_element(inSlot.begin(), inSlot.end()), 32U) << base;
    }
}

TEST(IniNames, ANameHidesWhatIsEqualToItForEverySearch) {
    EXPECT_TRUE(hidesName(false, " a ", "A "));
    EXPECT_FALSE(hidesName(false, "a", "a "));
    EXPECT_TRUE(hidesName(true, "a", "a"));
    EXPECT_FALSE(hidesName(true, "a", "A"));
}

} // namespace

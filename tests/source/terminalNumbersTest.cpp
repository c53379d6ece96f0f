// The numbers in use, and that keeping count of them gives what reading every name afresh gives.
#include "source/terminalNumbers.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using nZoTavManagerPciPlugin_15_0::TerminalNumbers;
using nZoTavManagerPciPlugin_15_0::withoutDigits;

TerminalNumbers numbersOf(const std::vector<std::string>& names) {
    TerminalNumbers numbers;
    for (const std::string& name : names)
        numbers.add(name);
    return numbers;
}

std::uint32_t lowestFree(const std::vector<std::string>& names, const std::string& base) {
    return numbersOf(names).lowestFree(base);
}

TEST(TerminalNumbers, DigitsAreRemovedWhereverTheyStand) {
    EXPECT_EQ(withoutDigits("1T2A3V456"), "TAV");
    EXPECT_EQ(withoutDigits("0123456789"), "");
    EXPECT_EQ(withoutDigits(""), "");
    EXPECT_EQ(withoutDigits("TAV-/: "), "TAV-/: "); // the neighbours of the digits stay
}

TEST(TerminalNumbers, OnlyTheTenDecimalDigitsAreDigits) {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(withoutDigits(all).size(), 246U);
}

TEST(TerminalNumbers, WithoutNamesTheFirstNumberIsFree) {
    EXPECT_EQ(lowestFree({}, "TAV"), 1U);
}

TEST(TerminalNumbers, TheLowestGapIsFree) {
    EXPECT_EQ(lowestFree({"TAV1", "TAV2", "TAV4"}, "TAV"), 3U);
    EXPECT_EQ(lowestFree({"TAV2", "TAV3"}, "TAV"), 1U);
    EXPECT_EQ(lowestFree({"TAV3", "TAV1", "TAV2"}, "TAV"), 4U);
}

TEST(TerminalNumbers, NumberZeroIsNoNumber) {
    EXPECT_EQ(lowestFree({"TAV0"}, "TAV"), 1U);
    EXPECT_EQ(lowestFree({"TAV0", "TAV000", "TAV1"}, "TAV"), 2U);
}

TEST(TerminalNumbers, LeadingZerosDoNotCount) {
    EXPECT_EQ(lowestFree({"TAV001", "TAV02"}, "TAV"), 3U);
}

TEST(TerminalNumbers, NamesOfOtherBasesDoNotCount) {
    EXPECT_EQ(lowestFree({"TAVX1", "XTAV1", "TA1", "tav1", "1"}, "TAV"), 1U);
}

TEST(TerminalNumbers, NameWithoutNumberUsesNone) {
    EXPECT_EQ(lowestFree({"TAV", "_", ""}, "TAV"), 1U);
    EXPECT_EQ(lowestFree({"_"}, "_"), 1U);
}

TEST(TerminalNumbers, NumberInFrontOrWithinIsNotTheBasesNumber) {
    EXPECT_EQ(lowestFree({"1TAV", "T1AV"}, "TAV"), 1U);
    EXPECT_EQ(lowestFree({"T1AV2"}, "TAV"), 1U); // does not begin with the base
}

TEST(TerminalNumbers, BaseWithADigitHasNoNumberInUse) {
    EXPECT_EQ(lowestFree({"X2Y1", "X2Y2", "XY1"}, "X2Y"), 1U);
    EXPECT_EQ(lowestFree({"TAV21"}, "TAV2"), 1U);
    EXPECT_EQ(lowestFree({"TAV21"}, "TAV"), 1U); // 21 is the number
}

TEST(TerminalNumbers, EmptyBaseCountsBareNumbers) {
    EXPECT_EQ(lowestFree({"1", "2", "TAV3"}, ""), 3U);
}

TEST(TerminalNumbers, NumberBeyondItsRangeSaturates) {
    TerminalNumbers numbers = numbersOf({"TAV99999999999999999999", "TAV1"});
    EXPECT_EQ(numbers.lowestFree("TAV"), 2U);
    // Both stand for the same number: taking one away leaves the other.
    numbers.add("TAV4294967295");
    numbers.remove("TAV99999999999999999999");
    numbers.remove("TAV4294967295");
    numbers.remove("TAV1");
    EXPECT_EQ(numbers.lowestFree("TAV"), 1U);
}

TEST(TerminalNumbers, SaturatedNumberIsNotTakenForASmallOne) {
    // 4294967297 is 1 in 32 bits.
    EXPECT_EQ(lowestFree({"TAV4294967297"}, "TAV"), 1U);
}

TEST(TerminalNumbers, NumberIsFreeWhenItsLastNameIsGone) {
    TerminalNumbers numbers = numbersOf({"TAV1", "TAV2", "TAV2", "TAV3"});
    EXPECT_EQ(numbers.lowestFree("TAV"), 4U);
    numbers.remove("TAV2");
    EXPECT_EQ(numbers.lowestFree("TAV"), 4U);
    numbers.remove("TAV2");
    EXPECT_EQ(numbers.lowestFree("TAV"), 2U);
    numbers.remove("TAV1");
    EXPECT_EQ(numbers.lowestFree("TAV"), 1U);
}

TEST(TerminalNumbers, TakingAwayWhatIsNotThereChangesNothing) {
    TerminalNumbers numbers = numbersOf({"TAV1"});
    numbers.remove("TAV2");
    numbers.remove("OTHER1");
    numbers.remove("TAV");
    numbers.remove("_");
    EXPECT_EQ(numbers.lowestFree("TAV"), 2U);
}

// The rule in its plainest form, which reads every name at every question.
std::uint32_t freshlyCounted(const std::multiset<std::string>& names, const std::string& base) {
    std::set<unsigned long long> used;
    for (const std::string& name : names) {
        std::string letters;
        for (const char c : name)
            letters += c >= '0' && c <= '9' ? "" : std::string(1, c);
        if (name == "_" || letters != base || name.compare(0, base.size(), base) != 0)
            continue;
        const std::string digits = name.substr(base.size());
        if (digits.empty())
            continue;
        const unsigned long long number =
            digits.size() > 12 ? 4294967295ULL : std::min(std::stoull(digits), 4294967295ULL);
        if (number != 0)
            used.insert(number);
    }
    std::uint32_t free = 1;
    while (used.count(free) != 0)
        ++free;
    return free;
}

TEST(TerminalNumbers, AgreesWithCountingAfreshAfterAnyChanges) {
    const std::vector<std::string> bases = {"TAV", "T", "", "A%u", "A b", "_", "B2", "TAV-"};
    std::mt19937 random(20240607);
    const auto upTo = [&](unsigned most) {
        return std::uniform_int_distribution<unsigned>(0, most)(random);
    };
    const auto anyName = [&] {
        std::string name = bases[upTo(static_cast<unsigned>(bases.size()) - 1)];
        switch (upTo(9)) {
        case 0:
            return name;
        case 1:
            return std::to_string(upTo(6)) + name;
        case 2:
            return name + "0" + std::to_string(upTo(6));
        case 3:
            return name + "99999999999999" + std::to_string(upTo(1));
        case 4:
            return name + "1" + name + "1";
        default:
            return name + std::to_string(upTo(6));
        }
    };
    for (int round = 0; round < 40; ++round) {
        TerminalNumbers numbers;
        std::multiset<std::string> names;
        unsigned highest = 1;
        for (int step = 0; step < 300; ++step) {
            if (!names.empty() && upTo(3) == 0) {
                const auto gone =
                    std::next(names.begin(), upTo(static_cast<unsigned>(names.size()) - 1));
                numbers.remove(*gone);
                names.erase(gone);
            } else {
                const std::string name = anyName();
                numbers.add(name);
                names.insert(name);
            }
            for (const std::string& base : bases) {
                const std::uint32_t expected = freshlyCounted(names, base);
                ASSERT_EQ(numbers.lowestFree(base), expected)
                    << "base \"" << base << "\", round " << round << ", step " << step;
                highest = std::max(highest, expected);
            }
        }
        ASSERT_GT(highest, 3U) << "the names were too few to say anything";
    }
}

} // namespace

// Which stored name belongs to a device, which name a new one gets, and what is stored.
#include "include/tavPlugin.h"
#include "tests/source/support/nameDatabase.h"
#include "tests/source/support/raised.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/fileText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::cSlotPath;
using nZoPxiDriverTools_1_0::IniFileServices;
using testing::ElementsAre;
using testsupport::NameDatabase;
using testsupport::raisedBy;
using testsupport::slotPath;

constexpr const char* kSlot = "MR00:00,E0";
constexpr const char* kOther = "MR00:08,00,E0";

std::string entry(const std::string& slot, const std::string& model, const std::string& name) {
    return "[" + slot + "]\nModel = " + model + "\nTerminalName = " + name + "\n";
}

class TerminalNames : public testing::Test {
protected:
    NameDatabase db;
};

TEST_F(TerminalNames, EntryOfThisModelAndBaseMatches) {
    db.load(entry(kSlot, "Box", "TAV7"));
    std::string name;
    EXPECT_EQ(db.names.Matches(slotPath(kSlot), "Box", "TAV", name), 1);
    EXPECT_EQ(name, "TAV7");
}

TEST_F(TerminalNames, EntryOfAnotherModelDoesNotMatchButIsTold) {
    db.load(entry(kSlot, "Box", "TAV7"));
    std::string name;
    EXPECT_EQ(db.names.Matches(slotPath(kSlot), "Card", "TAV", name), 0);
    EXPECT_EQ(name, "TAV7");
}

TEST_F(TerminalNames, EntryOfAnotherBaseDoesNotMatchButIsTold) {
    db.load(entry(kSlot, "Box", "TAV7"));
    std::string name;
    EXPECT_EQ(db.names.Matches(slotPath(kSlot), "Box", "BOX", name), 0);
    EXPECT_EQ(name, "TAV7");
}

TEST_F(TerminalNames, ModelAndBaseMatchByteForByte) {
    db.load(entry(kSlot, "Box", "TAV7"));
    EXPECT_EQ(db.matches(kSlot, "box", "TAV"), 0);
    EXPECT_EQ(db.matches(kSlot, "Bo", "TAV"), 0);
    EXPECT_EQ(db.matches(kSlot, "Boxx", "TAV"), 0);
    EXPECT_EQ(db.matches(kSlot, "Box", "tav"), 0);
    EXPECT_EQ(db.matches(kSlot, "Box", "TA"), 0);
    EXPECT_EQ(db.matches(kSlot, "Box", "TAVV"), 0);
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 1);
}

TEST_F(TerminalNames, EntryOfAnotherSlotDoesNotMatch) {
    db.load(entry(kSlot, "Box", "TAV7"));
    std::string name = "something";
    EXPECT_EQ(db.names.Matches(slotPath(kOther), "Box", "TAV", name), 0);
    EXPECT_EQ(name, "_");
}

TEST_F(TerminalNames, DigitsAreRemovedFromAnywhereInTheStoredName) {
    db.load(entry(kSlot, "Box", "1T2A3V"));
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 1);
}

TEST_F(TerminalNames, StoredNameWithoutNumberMatchesItsBase) {
    db.load(entry(kSlot, "Box", "TAV"));
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 1);
}

TEST_F(TerminalNames, BaseWithADigitNeverMatches) {
    db.load(entry(kSlot, "Box", "TAV21"));
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV2"), 0);
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV21"), 0);
}

TEST_F(TerminalNames, SlotWithoutModelNeverMatches) {
    db.load("[MR00:00,E0]\nTerminalName = TAV1\n");
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 0);
    EXPECT_EQ(db.matches(kSlot, "", "TAV"), 0);
    EXPECT_EQ(raisedBy([&] { db.matches(kSlot, "_", "TAV"); }).code, -388802);
}

TEST_F(TerminalNames, MissingTerminalNameReadsAsUnderscore) {
    db.load("[MR00:00,E0]\nModel = Box\n");
    EXPECT_EQ(db.storedName(kSlot), "_");
}

TEST_F(TerminalNames, EmptyTerminalNameReadsAsUnderscore) {
    db.load("[MR00:00,E0]\nModel = Box\nTerminalName = \"\"\n");
    EXPECT_EQ(db.storedName(kSlot), "_");
    // An empty base is not what stands there.
    EXPECT_EQ(db.matches(kSlot, "Box", ""), 0);
}

TEST_F(TerminalNames, EmptyModelReadsAsUnderscore) {
    db.load("[MR00:00,E0]\nModel = \"\"\nTerminalName = TAV1\n");
    EXPECT_EQ(db.matches(kSlot, "", "TAV"), 0);
}

TEST_F(TerminalNames, ModelUnderscoreIsAnInvalidParameter) {
    db.load(entry(kSlot, "_", "TAV1"));
    std::string name = "untouched";
    const auto raised = raisedBy([&] { db.names.Matches(slotPath(kSlot), "_", "TAV", name); });
    EXPECT_EQ(raised.code, kTavManErrInvalidParam);
    EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrInvalidParam"));
    EXPECT_EQ(name, "untouched");
}

TEST_F(TerminalNames, BaseUnderscoreIsAnInvalidParameter) {
    db.load(entry(kSlot, "Box", "_"));
    const auto raised = raisedBy([&] { db.matches(kSlot, "Box", "_"); });
    EXPECT_EQ(raised.code, kTavManErrInvalidParam);
    EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrInvalidParam"));
}

TEST_F(TerminalNames, UnderscoreIsRefusedAlsoForASlotWithoutEntry) {
    db.load("");
    EXPECT_EQ(raisedBy([&] { db.matches(kSlot, "_", "TAV"); }).code, -388802);
    EXPECT_EQ(raisedBy([&] { db.matches(kSlot, "Box", "_"); }).code, -388802);
}

TEST_F(TerminalNames, SlotPathInErrorRaisesItsOwnStatus) {
    db.load("");
    cSlotPath path;
    path.state.code = -52000;
    std::string name;
    EXPECT_EQ(raisedBy([&] { db.names.Matches(path, "Box", "TAV", name); }).code, -52000);
    EXPECT_EQ(raisedBy([&] { db.names.Store(path, "Box", "TAV1"); }).code, -52000);
}

// The next free name.

TEST_F(TerminalNames, FirstNameIsNumberOne) {
    db.load("");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

TEST_F(TerminalNames, LowestFreeNumberIsTaken) {
    db.load(entry("MR00:08", "Box", "TAV1") + entry("MR00:10", "Box", "TAV2") +
            entry("MR00:18", "Card", "TAV4"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV3");
}

TEST_F(TerminalNames, AskingDoesNotTakeTheName) {
    db.load("");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

TEST_F(TerminalNames, NumberZeroTakesNoName) {
    db.load(entry("MR00:08", "Box", "TAV0"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

TEST_F(TerminalNames, TwoEntriesWithOneNameCountOnce) {
    db.load(entry("MR00:08", "Box", "TAV2") + entry("MR00:10", "Box", "TAV2") +
            entry("MR00:18", "Box", "TAV1"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV3");
    // Two entries held it, so one that is given another name does not free it.
    db.store("MR00:08", "Box", "TAV3");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV4");
    db.store("MR00:10", "Box", "TAV4");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
}

TEST_F(TerminalNames, EntriesWithoutNameTakeNone) {
    db.load("[MR00:08]\nModel = Box\n[MR00:10]\nModel = Box\nTerminalName = \"\"\n[notes]\n");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

TEST_F(TerminalNames, NamesCountWhateverTheirSectionIsCalled) {
    db.load("[by hand]\nTerminalName = TAV1\n");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
}

TEST_F(TerminalNames, EachBaseCountsForItself) {
    db.load(entry("MR00:08", "Box", "TAV1") + entry("MR00:10", "Card", "CARD1"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
    EXPECT_EQ(db.nextFreeName("CARD"), "CARD2");
    EXPECT_EQ(db.nextFreeName("BOX"), "BOX1");
}

TEST_F(TerminalNames, BaseWithADigitAlwaysGetsNumberOne) {
    db.load(entry("MR00:08", "Box", "TAV21"));
    EXPECT_EQ(db.nextFreeName("TAV2"), "TAV21");
}

TEST_F(TerminalNames, PercentInABaseIsPlainText) {
    db.load(entry("MR00:08", "Box", "%s%n1"));
    EXPECT_EQ(db.matches("MR00:08", "Box", "%s%n"), 1);
    EXPECT_EQ(db.nextFreeName("%s%n"), "%s%n2");
    EXPECT_EQ(db.nextFreeName("%u"), "%u1");
    EXPECT_EQ(db.nextFreeName("%%"), "%%1");
    EXPECT_EQ(db.nextFreeName("100%"), "100%1");
}

TEST_F(TerminalNames, WhiteSpaceInABaseIsPlainText) {
    db.load(entry("MR00:08", "Box", "My TAV 1") + entry("MR00:10", "Box", "My  TAV 2"));
    EXPECT_EQ(db.nextFreeName("My TAV "), "My TAV 2");
    EXPECT_EQ(db.nextFreeName("My  TAV "), "My  TAV 1");
    EXPECT_EQ(db.nextFreeName("MyTAV"), "MyTAV1");
    EXPECT_EQ(db.matches("MR00:08", "Box", "My TAV "), 1);
}

TEST_F(TerminalNames, NumberBeyondItsRangeTakesNoSmallOne) {
    db.load(entry("MR00:08", "Box", "TAV4294967297") +
            entry("MR00:10", "Box", "TAV18446744073709551617"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

TEST_F(TerminalNames, NamesAreReadFromAnOpenFileOnly) {
    const auto raised = raisedBy([&] { db.nextFreeName("TAV"); });
    EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kIniFileErrNotOpen);
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 0);
}

TEST_F(TerminalNames, NameThatCannotBePrintedIsASoftwareFault) {
    db.load("");
    // Too long for the buffer within a string, so that it needs memory.
    const std::string base(40, 'T');
    std::string name = "untouched";
    db.names.NextFreeName("TAV", name); // reads the names
    name = "untouched";
    const auto raised = raisedBy([&] {
        const testsupport::AllocationFault fault(1);
        db.names.NextFreeName(base, name);
    });
    EXPECT_EQ(raised.code, kTavManErrSoftwareFault);
    EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrSoftwareFault"));
    EXPECT_EQ(name, "untouched");
    db.names.NextFreeName(base, name);
    EXPECT_EQ(name, base + "1");
}

// Storing.

TEST_F(TerminalNames, StoredEntryMatches) {
    db.load("");
    db.store(kSlot, "Box", "TAV1");
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 1);
    EXPECT_EQ(db.storedName(kSlot), "TAV1");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
}

TEST_F(TerminalNames, EntryIsWrittenModelFirst) {
    db.load("");
    db.store(kSlot, "Box", "TAV1");
    db.names.Save();
    EXPECT_THAT(db.filesystem.names(),
                ElementsAre("[MR00:00,E0]", "Model = Box", "TerminalName = TAV1"));
}

TEST_F(TerminalNames, StoringReplacesWhatStoodThere) {
    db.load(entry(kSlot, "Box", "TAV1") + entry(kOther, "Box", "TAV2"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV3");
    db.store(kSlot, "Card", "CARD1");
    EXPECT_EQ(db.matches(kSlot, "Card", "CARD"), 1);
    EXPECT_EQ(db.matches(kSlot, "Box", "TAV"), 0);
    // The name that was replaced is free again, the new one is not.
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
    EXPECT_EQ(db.nextFreeName("CARD"), "CARD2");
    db.names.Save();
    EXPECT_THAT(db.filesystem.names(),
                ElementsAre("[MR00:00,E0]", "Model = Card", "TerminalName = CARD1",
                            "[MR00:08,00,E0]", "Model = Box", "TerminalName = TAV2"));
}

TEST_F(TerminalNames, FailedWriteRaisesItsOwnStatus) {
    db.load(entry(kSlot, "Box", "TAV1"));
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
    nZOQUIL000::tFixedStatus status;
    db.iniFile.open(db.filesystem.nameFile().c_str(), nZoPxiDriverTools_1_0::kIniFileReadOnly,
                    status);
    ASSERT_EQ(status.code, 0);
    const auto raised = raisedBy([&] { db.store(kSlot, "Card", "CARD1"); });
    EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kIniFileErrReadOnly);
    EXPECT_EQ(raised.member("component"), "zotavpci");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
}

// Texts that an INI file keeps only escaped, or could take for something else.
const std::string kOddTexts[] = {
    "\"",
    "\"\"",
    "\"quoted\"",
    "say \"so\"",
    "'single'",
    "\\",
    "a\\",
    "\\\"",
    "C:\\x07\\new\\table",
    "\x07",
    "\x07"
    "bell",
    "\ttab\t",
    "line\nfeed",
    "return\r",
    "\x7F",
    std::string("\0", 1),
    "\x80\xFF",
    "M\xC3\xBCller",
    "; a comment",
    "[section]",
    "key = value",
    "key Line1",
    "%s%n",
};

// Three starts of a host, each with a file of its own to read.
TEST(TerminalNamesOverThreeStarts, StayWhateverTheModelIsMadeOf) {
    for (const std::string& model : kOddTexts) {
        std::string text;
        for (int start = 1; start <= 3; ++start) {
            NameDatabase db;
            db.load(text);
            EXPECT_EQ(db.matches(kSlot, model, "TAV"), start == 1 ? 0 : 1) << model;
            if (start == 1)
                db.store(kSlot, model, db.nextFreeName("TAV"));
            EXPECT_EQ(db.matches(kSlot, model, "TAV"), 1) << model;
            EXPECT_EQ(db.matches(kSlot, model + "x", "TAV"), 0) << model;
            EXPECT_EQ(db.storedName(kSlot), "TAV1") << model;
            db.names.Save();
            text = testsupport::fileText(db.filesystem.nameFile());
        }
    }
}

TEST(TerminalNamesOverThreeStarts, StayWhateverTheirBaseIsMadeOf) {
    for (const std::string& base : kOddTexts) {
        if (withoutDigits(base) != base)
            continue; // a digit in a base is told elsewhere
        std::string text;
        for (int start = 1; start <= 3; ++start) {
            NameDatabase db;
            db.load(text);
            EXPECT_EQ(db.matches(kSlot, "Box", base), start == 1 ? 0 : 1) << base;
            if (start == 1) {
                db.store(kSlot, "Box", db.nextFreeName(base));
                db.store(kOther, "Box", db.nextFreeName(base));
            }
            EXPECT_EQ(db.storedName(kSlot), base + "1");
            EXPECT_EQ(db.storedName(kOther), base + "2");
            EXPECT_EQ(db.nextFreeName(base), base + "3");
            db.names.Save();
            text = testsupport::fileText(db.filesystem.nameFile());
        }
    }
}

TEST_F(TerminalNames, NumbersBehindAControlCharacterAreNotThoseOfItsCode) {
    db.load(entry("MR00:08", "Box", "\\x071") + entry("MR00:10", "Box", "\\x07"));
    EXPECT_EQ(db.nextFreeName("\x07"), "\x07"
                                       "2");
    EXPECT_EQ(db.storedName("MR00:08"), "\x07"
                                        "1");
    EXPECT_EQ(db.nextFreeName("\\x"), "\\x1");
}

// As somebody may have written them by hand.
TEST_F(TerminalNames, BackslashesThatNobodyWroteAsEscapesStay) {
    db.load(entry(kSlot, "C:\\dir\\x41\\", "\\\\TAV1"));
    EXPECT_EQ(db.matches(kSlot, "C:\\dir\\x41\\", "\\TAV"), 1);
    EXPECT_EQ(db.storedName(kSlot), "\\TAV1");
}

// Memory for the INI file that gives out at a chosen request.
struct LimitedMemory {
    std::size_t left = SIZE_MAX;

    static void* resize(void* context, void* block, std::size_t size) {
        auto& limit = *static_cast<LimitedMemory*>(context);
        if (size == 0) {
            std::free(block);
            return nullptr;
        }
        if (limit.left == 0)
            return nullptr;
        --limit.left;
        return std::realloc(block, size);
    }
};

// Wherever storing fails, the next free name agrees with what the file then holds.
TEST(TerminalNamesInLittleMemory, NextFreeNameAgreesWithTheEntriesAfterAFailedStore) {
    std::size_t failures = 0;
    for (std::size_t requests = 0;; ++requests) {
        LimitedMemory memory;
        IniFileServices services;
        services.memory = {&LimitedMemory::resize, &memory};
        NameDatabase db(services);
        db.load(entry("MR00:08", "Box", "TAV1") + entry("MR00:10", "Box", "TAV3"));
        EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
        memory.left = requests;
        const auto raised = raisedBy([&] { db.store("MR00:18", "Box", "TAV2"); });
        memory.left = SIZE_MAX;
        const bool stored = db.storedName("MR00:18") == "TAV2";
        EXPECT_EQ(db.nextFreeName("TAV"), stored ? "TAV4" : "TAV2");
        if (raised.code == 0) {
            EXPECT_TRUE(stored);
            break;
        }
        EXPECT_FALSE(stored);
        EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kIniFileErrNotStored);
        ++failures;
        ASSERT_LT(requests, 100U);
    }
    EXPECT_GT(failures, 2U); // the section, and both keys
}

// Fails the allocations of a call one after the other until it comes to its end; -52000 and
// std::bad_alloc are what it may raise. `check` is told what it raised, 0 for nothing. How many
// failed.
template <class Prepare, class Call, class Check>
std::size_t failEachAllocation(Prepare prepare, Call call, Check check) {
    for (std::size_t nth = 1; nth < 200; ++nth) {
        NameDatabase db;
        prepare(db);
        bool happened = false;
        std::int32_t code = 0;
        {
            const testsupport::AllocationFault fault(nth);
            try {
                call(db);
            } catch (const zoerr::Exception& exception) {
                code = exception.status().code;
            } catch (const std::bad_alloc&) {
                code = nZOQUIL000::zoquilerr_memoryFull;
            }
            happened = fault.happened();
        }
        EXPECT_TRUE(code == 0 || (happened && code == nZOQUIL000::zoquilerr_memoryFull))
            << "allocation " << nth << " " << code;
        check(db, code);
        if (!happened)
            return nth - 1;
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

// Longer than what a string holds within itself.
const std::string kLongBase = "A terminal name base of many letters ";

TEST(TerminalNamesInLittleMemory, NumbersAreNeverBehindTheEntries) {
    const std::string slot = "MR00:18,00,00,00,00,00";
    const cSlotPath path = slotPath(slot);
    const std::string name = kLongBase + "2";
    std::size_t stored = 0;
    const std::size_t failed = failEachAllocation(
        [&](NameDatabase& db) {
            db.load(entry(slot, "Box", kLongBase + "1") + entry("MR00:10", "Box", kLongBase + "3"));
            EXPECT_EQ(db.nextFreeName(kLongBase), kLongBase + "2");
        },
        [&](NameDatabase& db) { db.names.Store(path, "Box", name); },
        [&](NameDatabase& db, std::int32_t code) {
            const bool isStored = db.storedName(slot) == kLongBase + "2";
            EXPECT_EQ(isStored, code == 0);
            EXPECT_EQ(db.nextFreeName(kLongBase), kLongBase + (isStored ? "1" : "2"));
            stored += isStored ? 1 : 0;
        });
    EXPECT_GT(failed, 5U);
    // All went well once; the other times it was only the numbers that found no memory.
    EXPECT_GT(stored, 2U);
}

TEST(TerminalNamesInLittleMemory, EntryThatCannotBeReadIsNotTakenForAMissingOne) {
    const std::string name = kLongBase + "1";
    const cSlotPath path = slotPath(kSlot);
    std::string read;
    const std::size_t failed = failEachAllocation(
        [&](NameDatabase& db) {
            db.load(entry(kSlot, "Box", name));
            read.reserve(2 * name.size());
        },
        [&](NameDatabase& db) {
            EXPECT_EQ(db.names.Matches(path, "Box", kLongBase, read), 1);
            EXPECT_EQ(read, name);
        },
        [](NameDatabase&, std::int32_t) {});
    EXPECT_GT(failed, 2U);
}

} // namespace

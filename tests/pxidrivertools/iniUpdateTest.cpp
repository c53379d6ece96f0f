// Finding and changing sections and keys in memory.
#include "pxidrivertools/ini/iniUpdate.h"

#include "tests/pxidrivertools/iniHelpers.h"

namespace {

using namespace ini;

class IniUpdateTest : public testing::Test {
protected:
    void load(std::string_view text) { ASSERT_EQ(loadText(*file, text), kIniDone); }
    IniStatus set(std::string_view section, std::string_view key, std::string_view value,
                  char quote = kNoQuote) {
        return setValue(*file, section, key, value, quote);
    }

    TestMemory memory;
    IniFileOwner file{createIniFile(memory.memory())};
};

TEST_F(IniUpdateTest, SetMakesWhatIsMissingAtTheEnd) {
    load("[a]\nx=1\n[b]\n");
    EXPECT_EQ(set("a", "y", "2"), 1);
    EXPECT_EQ(set("c", "z", "3", kDoubleQuote), 1);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;y@-1=2;}b@3{}c@-1{z@-1=\"3;}");
}

TEST_F(IniUpdateTest, SetReplacesAValueAndItsQuote) {
    load("[a]\nx=\"1\"\ny=2\n");
    EXPECT_EQ(set(" A ", "X", "3"), 1);
    EXPECT_EQ(listing(*file), "a@1{x@2=3;y@3=2;}");
    EXPECT_EQ(set("a", "x", " 4 ", kSingleQuote), 1);
    EXPECT_EQ(listing(*file), "a@1{x@2=' 4 ;y@3=2;}");
    EXPECT_EQ(set("a", "x", ""), 1);
    EXPECT_EQ(listing(*file), "a@1{x@2=;y@3=2;}");
}

TEST_F(IniUpdateTest, WithoutMergingSetAddsASecondKey) {
    load("[a]\nx=1\n");
    file->mergeDuplicates = false;
    EXPECT_EQ(set("a", "x", "2"), 1);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;x@-1=2;}");
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "x")->value.view(), "1");
}

TEST_F(IniUpdateTest, EmptyNamesAreRefused) {
    EXPECT_EQ(set("", "x", "1"), -6);
    EXPECT_EQ(set("a", "", "1"), -6);
    EXPECT_EQ(listing(*file), "");
}

TEST_F(IniUpdateTest, NewSectionsHaveTheFilesCaseSensitivity) {
    set("a", "x", "1");
    file->caseSensitive = true;
    set("A", "x", "2");
    EXPECT_FALSE(sectionAt(*file, 1)->caseSensitive);
    EXPECT_TRUE(sectionAt(*file, 2)->caseSensitive);
    EXPECT_NE(findKey(*file, *sectionAt(*file, 1), "X"), nullptr);
    EXPECT_EQ(findKey(*file, *sectionAt(*file, 2), "X"), nullptr);
    EXPECT_NE(findKey(*file, *sectionAt(*file, 2), false, "X"), nullptr);
    EXPECT_EQ(findKey(*file, *sectionAt(*file, 1), true, "X"), nullptr);
}

TEST_F(IniUpdateTest, ListsGrowSlotBySlot) {
    for (std::uint32_t n = 1; n < 40; ++n) {
        set(numbered("section", n), "x", "1");
        set("section1", numbered("key", n), "1");
        EXPECT_EQ(file->sections->capacity, n);
        EXPECT_EQ(sectionAt(*file, 1)->keys->capacity, n + 1);
    }
}

TEST_F(IniUpdateTest, TheCurrentSectionIsLookedAtFirst) {
    file->mergeDuplicates = false;
    load("[a]\nx=1\n[b]\nx=2\n[a]\nx=3\n");
    EXPECT_EQ(findSection(*file, "a"), sectionAt(*file, 1));
    EXPECT_EQ(file->current, sectionAt(*file, 1));
    file->current = sectionAt(*file, 3);
    EXPECT_EQ(findSection(*file, "a"), sectionAt(*file, 3));
    EXPECT_EQ(findSection(*file, "b"), sectionAt(*file, 2));
    EXPECT_EQ(file->current, sectionAt(*file, 2));
    EXPECT_EQ(findSection(*file, "none"), nullptr);
    EXPECT_EQ(file->current, sectionAt(*file, 2));
    EXPECT_EQ(findSection(*file, "a"), sectionAt(*file, 1));
}

TEST_F(IniUpdateTest, TheFirstKeyOfANameIsFound) {
    file->mergeDuplicates = false;
    std::string text = "[a]\nx=first\n";
    for (int n = 0; n < 50; ++n)
        text += "x=" + std::to_string(n) + "\ny" + std::to_string(n) + "=1\n";
    load(text);
    IniSection& section = *findSection(*file, "a");
    EXPECT_EQ(findKey(*file, section, "X")->value.view(), "first");
    removeKey(*file, section, *findKey(*file, section, "x"));
    EXPECT_EQ(findKey(*file, section, "x")->value.view(), "0");
}

TEST_F(IniUpdateTest, SectionsAndKeysAreAddressedFromOne) {
    load("[a]\nx=1\ny=2\n[b]\n");
    EXPECT_EQ(sectionAt(*file, 0), sectionAt(*file, 1));
    EXPECT_EQ(sectionAt(*file, -1), sectionAt(*file, 1));
    EXPECT_EQ(sectionAt(*file, 2)->name.view(), "b");
    EXPECT_EQ(sectionAt(*file, 3), nullptr);
    EXPECT_EQ(keyAt(*sectionAt(*file, 1), 0)->name.view(), "x");
    EXPECT_EQ(keyAt(*sectionAt(*file, 1), 2)->name.view(), "y");
    EXPECT_EQ(keyAt(*sectionAt(*file, 2), 1), nullptr);
}

TEST_F(IniUpdateTest, RemovedKeysAndSectionsAreGone) {
    load("[a]\nx=1\ny=2\nz=3\n[b]\nx=4\n[c]\n");
    IniSection& a = *findSection(*file, "a");
    removeKey(*file, a, *findKey(*file, a, "y"));
    EXPECT_EQ(listing(*file), "a@1{x@2=1;z@4=3;}b@5{x@6=4;}c@7{}");
    removeSection(*file, a);
    EXPECT_EQ(file->current, nullptr);
    EXPECT_EQ(listing(*file), "b@5{x@6=4;}c@7{}");
    EXPECT_EQ(findSection(*file, "a"), nullptr);
    removeSection(*file, *findSection(*file, "c"));
    set("d", "x", "5");
    EXPECT_EQ(listing(*file), "b@5{x@6=4;}d@-1{x@-1=5;}");
}

TEST_F(IniUpdateTest, PlaceOfARemovedKeyIsTakenByTheNext) {
    load("[a]\nx=1\ny=2\n[b]\nx=3\n");
    IniSection& a = *findSection(*file, "a");
    removeKey(*file, a, *findKey(*file, a, "x"));
    EXPECT_EQ(set("a", "z", "4"), 1);
    EXPECT_EQ(set("a", "w", "5"), 1);
    EXPECT_EQ(listing(*file), "a@1{y@3=2;z@-1=4;w@-1=5;}b@4{x@5=3;}");
}

TEST_F(IniUpdateTest, OfTwoKeysOfOneNameTheOneThatIsMeantIsRemoved) {
    load("[a]\nx=1\ny=2\n");
    file->mergeDuplicates = false;
    EXPECT_EQ(set("a", "x", "3"), 1);
    IniSection& a = *findSection(*file, "a");
    removeKey(*file, a, *keyAt(a, 3));
    EXPECT_EQ(listing(*file), "a@1{x@2=1;y@3=2;}");
    EXPECT_EQ(findKey(*file, a, "x")->value.view(), "1");
}

TEST_F(IniUpdateTest, NoFileIsDestroyedByNothing) {
    destroyIniFile(nullptr);
    EXPECT_EQ(listing(*file), "");
}

TEST_F(IniUpdateTest, RenamingKeepsThePlace) {
    load("[a]\nx=1\n[b]\ny=2\n");
    EXPECT_EQ(renameSection(*file, *findSection(*file, "a"), "c"), kIniDone);
    EXPECT_EQ(listing(*file), "c@1{x@2=1;}b@3{y@4=2;}");
    EXPECT_EQ(findSection(*file, "a"), nullptr);
    EXPECT_EQ(findSection(*file, "c"), sectionAt(*file, 1));
    EXPECT_EQ(renameSection(*file, *findSection(*file, "c"), ""), -6);
    EXPECT_EQ(renameSection(*file, *findSection(*file, "c"), "b"), kIniDone);
    EXPECT_EQ(listing(*file), "b@1{x@2=1;}b@3{y@4=2;}");
}

TEST_F(IniUpdateTest, LookUpsFollowChangesInLargeFiles) {
    std::string text;
    for (int n = 0; n < 1000; ++n)
        text += "[s" + std::to_string(n) + "]\nk=" + std::to_string(n) + "\n";
    load(text);
    for (int n = 0; n < 1000; n += 2)
        removeSection(*file, *findSection(*file, numbered("s", n)));
    for (int n = 1; n < 1000; n += 4)
        renameSection(*file, *findSection(*file, numbered("s", n)), numbered("r", n));
    for (int n = 0; n < 1000; ++n) {
        IniSection* const kept = findSection(*file, numbered("s", n));
        IniSection* const renamed = findSection(*file, numbered("r", n));
        ASSERT_EQ(kept != nullptr, n % 4 == 3);
        ASSERT_EQ(renamed != nullptr, n % 4 == 1);
        if (n % 2 == 1) {
            ASSERT_EQ(keyAt(*(kept != nullptr ? kept : renamed), 1)->value.view(),
                      std::to_string(n));
        }
    }
}

TEST_F(IniUpdateTest, RecordsOfRemovedKeysAreUsedAgain) {
    load("[a]\n");
    set("a", "first", "1");
    const int before = [this] {
        memory.failAt(0);
        for (int n = 0; n < 100; ++n) {
            set("a", "x", "1");
            IniSection& a = *findSection(*file, "a");
            removeKey(*file, a, *findKey(*file, a, "x"));
        }
        return memory.requests();
    }();
    EXPECT_EQ(before, 201) << "name and value each time, and the list once";
}

} // namespace

// Values in pieces become whole again.
#include "pxidrivertools/ini/iniContinuation.h"

#include "tests/pxidrivertools/iniHelpers.h"

namespace {

using namespace ini;

std::string form(std::string_view name) {
    const auto read = readContinuationName(name);
    return read ? std::string(read->base) + "|" + std::to_string(read->number) : "none";
}

TEST(IniContinuationName, IsABaseTheWordAndANumber) {
    EXPECT_EQ(form("key Line0001"), "key|1");
    EXPECT_EQ(form("key Line1"), "key|1");
    EXPECT_EQ(form("key Line0"), "key|0");
    EXPECT_EQ(form("key Line12345"), "key|12345");
    EXPECT_EQ(form("a b Line2"), "a b|2");
    EXPECT_EQ(form(" Line1"), "|1");
    EXPECT_EQ(form("key  Line1"), "key |1");
}

TEST(IniContinuationName, TheLastWordCounts) {
    EXPECT_EQ(form("key Line1 Line2"), "key Line1|2");
    EXPECT_EQ(form("key Line1 Linex"), "none");
}

TEST(IniContinuationName, NeedsDigitsAndNothingElseBehindTheWord) {
    EXPECT_EQ(form("key Line"), "none");
    EXPECT_EQ(form("key Line 1"), "none");
    EXPECT_EQ(form("key Line1x"), "none");
    EXPECT_EQ(form("key Line-1"), "none");
    EXPECT_EQ(form("keyLine1"), "none");
    EXPECT_EQ(form("key line1"), "none");
    EXPECT_EQ(form("key 1"), "none");
    EXPECT_EQ(form("1"), "none");
    EXPECT_EQ(form(""), "none");
}

TEST(IniContinuationName, TheNumberFitsThirtyTwoBitsSigned) {
    EXPECT_EQ(form("key Line2147483647"), "key|2147483647");
    EXPECT_EQ(form("key Line2147483648"), "none");
    EXPECT_EQ(form("key Line00000000000000000000000000001"), "key|1");
    EXPECT_EQ(form("key Line99999999999999999999999999999"), "none");
}

class IniContinuationTest : public testing::Test {
protected:
    std::string load(std::string_view text) {
        EXPECT_EQ(loadText(*file, text), kIniDone);
        return listing(*file);
    }

    TestMemory memory;
    IniFileOwner file{createIniFile(memory.memory())};
};

TEST_F(IniContinuationTest, ARunBecomesOneKeyInItsPlace) {
    EXPECT_EQ(load("[a]\nb=1\nk Line0001=x\nk Line0002=y\nk Line0003=z\nc=2\n"),
              "a@1{b@2=1;k@3=xyz;c@6=2;}");
    EXPECT_EQ(sectionAt(*file, 1)->keys->capacity, 3U);
}

TEST_F(IniContinuationTest, HasTheLineAndQuoteOfItsFirstKey) {
    EXPECT_EQ(load("[a]\nk Line1=\"x \"\nk Line2=y\n"), "a@1{k@2=\"x y;}");
    EXPECT_EQ(load("[a]\nk Line1=x\nk Line2=\" y\"\n"), "a@1{k@2=x y;}");
}

TEST_F(IniContinuationTest, NumbersAndBaseNamesWithinARunAreNotChecked) {
    EXPECT_EQ(load("[a]\nk Line1=x\nk Line7=y\nother Line3=z\nk Line0=w\n"), "a@1{k@2=xyzw;}");
}

TEST_F(IniContinuationTest, ANumberOneStartsTheNextRun) {
    EXPECT_EQ(load("[a]\nk Line1=x\nk Line2=y\nl Line1=z\nm Line01=w\nm Line2=v\n"),
              "a@1{k@2=xy;l@4=z;m@5=wv;}");
}

TEST_F(IniContinuationTest, AKeyOfAnotherFormEndsTheRun) {
    EXPECT_EQ(load("[a]\nk Line1=x\nb=1\nk Line2=y\n"), "a@1{k@2=x;b@3=1;k Line2@4=y;}");
    EXPECT_EQ(load("[a]\nk Line1=x\nk Line9999999999=y\n"), "a@1{k@2=x;k Line9999999999@3=y;}");
}

TEST_F(IniContinuationTest, ARunDoesNotStartAtAnotherNumber) {
    EXPECT_EQ(load("[a]\nk Line2=x\nk Line3=y\n"), "a@1{k Line2@2=x;k Line3@3=y;}");
}

TEST_F(IniContinuationTest, RunsEndWithTheirSection) {
    EXPECT_EQ(load("[a]\nk Line1=x\n[b]\nk Line2=y\n"), "a@1{k@2=x;}b@3{k Line2@4=y;}");
    EXPECT_EQ(load("[a]\nk Line1=x\n[b]\nc=1\n[a]\nk Line2=y\n"), "a@5{k@2=xy;}b@3{c@4=1;}");
}

TEST_F(IniContinuationTest, HappensWhateverTheOptions) {
    file->mergeDuplicates = false;
    file->caseSensitive = true;
    file->write.maximumLineLength = kNoMaximumLineLength;
    EXPECT_EQ(load("[a]\nk Line1=x\nk Line2=y\n"), "a@1{k@2=xy;}");
    file->parse.emptyValues = true;
    EXPECT_EQ(load("[a]\nk Line1=\nk Line2=\n"), "a@1{k@2=;}");
}

TEST_F(IniContinuationTest, JoinedKeysAreFoundInLongSections) {
    std::string text = "[a]\n";
    for (int n = 0; n < 100; ++n) {
        const std::string key = numbered("k", n);
        text.append(key).append(" Line1=").append(std::to_string(n));
        text.append("\n").append(key).append(" Line2=.\n");
    }
    load(text);
    IniSection& section = *findSection(*file, "a");
    EXPECT_EQ(keyCount(section), 100U);
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(findKey(*file, section, numbered("k", n))->value.view(), std::to_string(n) + ".");
    EXPECT_EQ(findKey(*file, section, "k5 Line1"), nullptr);
}

TEST_F(IniContinuationTest, IsNotDoneAfterAReaderError) {
    TextReader reader("[a]\nk Line1=x\nk Line2=y\n");
    EXPECT_EQ(loadIni(*file, reader.failingAtTheEnd().reader()), -5002);
    EXPECT_EQ(listing(*file), "a@1{k Line1@2=x;k Line2@3=y;}");
}

} // namespace

// What a load makes of its input, option by option.
#include "pxidrivertools/ini/iniLoad.h"

#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/collidingNames.h"

namespace {

using namespace ini;

class IniLoadTest : public testing::Test {
protected:
    std::string load(std::string_view text) {
        EXPECT_EQ(loadText(*file, text), kIniDone);
        return listing(*file);
    }

    TestMemory memory;
    IniFileOwner file{createIniFile(memory.memory())};
};

TEST_F(IniLoadTest, ANewFileObjectHasTheseSettings) {
    EXPECT_FALSE(file->parse.colonAndUnnamedSection);
    EXPECT_FALSE(file->parse.emptyValues);
    EXPECT_TRUE(file->parse.doubleQuotes);
    EXPECT_FALSE(file->parse.singleQuotes);
    EXPECT_TRUE(file->write.safeWrite);
    EXPECT_TRUE(file->write.sameDirectoryTemporary);
    EXPECT_FALSE(file->write.flush);
    EXPECT_FALSE(file->write.byteOrderMark);
    EXPECT_FALSE(file->write.keepLayout);
    EXPECT_TRUE(file->write.spacedSeparator);
    EXPECT_EQ(file->write.maximumLineLength, 80);
    EXPECT_EQ(file->write.breakCharacter, 0);
    EXPECT_FALSE(file->caseSensitive);
    EXPECT_TRUE(file->mergeDuplicates);
    EXPECT_EQ(file->firstOddLine, -1);
    EXPECT_EQ(sectionCount(*file), 0U);
    EXPECT_EQ(file->path.length, 0U);
}

TEST_F(IniLoadTest, KeepsSectionsAndKeysInOrderWithTheirLines) {
    EXPECT_EQ(load("[b]\nx = 1\n;comment\ny=\"2\"\n[a]\nz=3"), "b@1{x@2=1;y@4=\"2;}a@5{z@6=3;}");
    EXPECT_EQ(file->firstOddLine, -1);
}

TEST_F(IniLoadTest, AllLineEndsYieldTheSameLines) {
    for (const char* const end : {"\r\n", "\n", "\n\r", "\r"}) {
        const std::string text = std::string("[a]") + end + "x=1" + end + "y=2" + end;
        EXPECT_EQ(load(text), "a@1{x@2=1;y@3=2;}");
        EXPECT_EQ(file->firstOddLine, -1);
    }
    EXPECT_EQ(load("[a]\n\nx=1"), "a@1{x@3=1;}");
    EXPECT_EQ(file->firstOddLine, 2);
    EXPECT_EQ(load(std::string("[a]\0x=1\0\ny=2", 12)), "a@1{x@2=1;y@3=2;}");
}

TEST_F(IniLoadTest, RecordsTheFirstOddLineAndIgnoresOddLines) {
    EXPECT_EQ(load("[a]\n;c\n[]\n[b\n=x\nodd\nk=1"), "a@1{k@7=1;}");
    EXPECT_EQ(file->firstOddLine, 3);
    load("[a]\n   \n[]");
    EXPECT_EQ(file->firstOddLine, 2);
    load("");
    EXPECT_EQ(file->firstOddLine, -1);
    EXPECT_EQ(load("[a]\nk=\n=v\n"), "a@1{}");
    EXPECT_EQ(file->firstOddLine, 2);
}

TEST_F(IniLoadTest, KeysBeforeTheFirstHeaderAreDroppedAndAreNotOdd) {
    EXPECT_EQ(load("k=1\n[a]\nx=2"), "a@2{x@3=2;}");
    EXPECT_EQ(file->firstOddLine, -1);
}

TEST_F(IniLoadTest, KeysBeforeTheFirstHeaderAreKeptOnRequest) {
    file->parse.colonAndUnnamedSection = true;
    EXPECT_EQ(load("k=1\nl:2\nm:=3\n[a]\nx:2"), "(null)@-1{k@1=1;l@2=2;m@3=3;}a@4{x@5=2;}");
    EXPECT_EQ(load("[a]\nx=1"), "a@1{x@2=1;}");
}

TEST_F(IniLoadTest, AHeaderWithTheUnnamedSectionsNameContinuesIt) {
    file->parse.colonAndUnnamedSection = true;
    EXPECT_EQ(load("k=1\n[a]\n[(null)]\nl=2"), "(null)@3{k@1=1;l@4=2;}a@2{}");
}

TEST_F(IniLoadTest, EmptyValuesAreKeptOnRequest) {
    EXPECT_EQ(load("[a]\nk=\nl=\"\"\n"), "a@1{l@3=\";}");
    file->parse.emptyValues = true;
    EXPECT_EQ(load("[a]\nk= \n=v\n"), "a@1{k@2=;}");
    EXPECT_EQ(file->firstOddLine, 3);
}

TEST_F(IniLoadTest, QuotesAreStrippedByOption) {
    const char* const text = "[a]\nd=\"x\"\ns='y'\nm=\"z'\n";
    EXPECT_EQ(load(text), "a@1{d@2=\"x;s@3='y';m@4=\"z';}");
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "d")->quote, 34);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "s")->quote, 0);
    file->parse.singleQuotes = true;
    load(text);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "s")->quote, 39);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "s")->value.view(), "y");
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "d")->quote, 34);
    file->parse.doubleQuotes = false;
    load(text);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "d")->quote, 0);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "d")->value.view(), "\"x\"");
}

TEST_F(IniLoadTest, SecondHeaderOfASectionContinuesIt) {
    EXPECT_EQ(load("[a]\nx=1\n[b]\ny=2\n[ A ]\nz=3\n"), "a@5{x@2=1;z@6=3;}b@3{y@4=2;}");
    file->mergeDuplicates = false;
    EXPECT_EQ(load("[a]\nx=1\n[b]\n[a]\nz=3\n"), "a@1{x@2=1;}b@3{}a@4{z@5=3;}");
}

TEST_F(IniLoadTest, ARepeatedKeyReplacesTheFirstValueInPlace) {
    EXPECT_EQ(load("[a]\nx=1\ny=2\nX = \"3\"\n"), "a@1{x@2=\"3;y@3=2;}");
    EXPECT_EQ(load("[a]\nx=\"1\"\nx= 2\n"), "a@1{x@2=2;}");
    EXPECT_EQ(load("[a]\nx=1\n[b]\nx=2\n[a]\nx=\" 3 \"\n"), "a@5{x@2=\" 3 ;}b@3{x@4=2;}");
    file->mergeDuplicates = false;
    EXPECT_EQ(load("[a]\nx=1\nx=2\n"), "a@1{x@2=1;x@3=2;}");
}

TEST_F(IniLoadTest, NamesAreMergedByTheFilesCaseSensitivity) {
    file->caseSensitive = true;
    EXPECT_EQ(load("[a]\nx=1\nX=2\n[A]\nx=3\n[a]\nx=4"), "a@6{x@2=4;X@3=2;}A@4{x@5=3;}");
    EXPECT_TRUE(sectionAt(*file, 1)->caseSensitive);
    file->caseSensitive = false;
    EXPECT_EQ(load("[a]\nx=1\nX=2\n[A]\nx=3"), "a@4{x@2=3;}");
    EXPECT_FALSE(sectionAt(*file, 1)->caseSensitive);
}

TEST_F(IniLoadTest, ReplacesTheContent) {
    load("[a]\nx=1\n\n");
    ASSERT_EQ(setValue(*file, "made", "up", "1", kNoQuote), kIniStored);
    ASSERT_NE(findSection(*file, "made"), nullptr);
    EXPECT_EQ(load("[b]\ny=2\n"), "b@1{y@2=2;}");
    EXPECT_EQ(file->firstOddLine, -1);
    EXPECT_EQ(file->current, nullptr);
    EXPECT_EQ(findSection(*file, "made"), nullptr);
    EXPECT_EQ(findSection(*file, "a"), nullptr);
}

TEST_F(IniLoadTest, GivesBackTheRoomThatListsTookInAdvance) {
    load("[a]\nk=1\nl=2\n[b]\n[c]\n[d]\n");
    EXPECT_EQ(file->sections->capacity, 4U);
    EXPECT_EQ(sectionAt(*file, 1)->keys->capacity, 2U);
    EXPECT_EQ(sectionAt(*file, 2)->keys, nullptr);
}

TEST_F(IniLoadTest, ReadsInChunksUntilTheReaderGivesNothing) {
    const std::string text = "[a]\nkey=" + std::string(5000, 'v') + "\n";
    TextReader reader(text);
    ASSERT_EQ(loadIni(*file, reader.reader()), kIniDone);
    EXPECT_EQ(reader.asked(), (std::vector<std::uint32_t>{2084, 2084, 2084, 2084}));
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "key")->value.length, 5000U);
}

// A line end, a name or a value may stand across any boundary between chunks.
TEST_F(IniLoadTest, PiecesOfAnySizeGiveTheSameContent) {
    std::string text;
    for (int n = 0; n < 40; ++n)
        text += "[section " + std::to_string(n) + "]\r\nkey=\"" +
                std::string(static_cast<std::size_t>(n) * 7, 'x') + "\"\r\nother = 1\n\r";
    const std::string whole = load(text);
    for (const std::uint32_t size : {1U, 2U, 3U, 5U, 7U, 100U, 2083U, 2084U}) {
        TextReader reader(text);
        ASSERT_EQ(loadIni(*file, reader.inPiecesOf(size).reader()), kIniDone);
        ASSERT_EQ(listing(*file), whole) << size;
    }
}

TEST_F(IniLoadTest, LinesOfAnyLengthAreRead) {
    for (const std::size_t length :
         {254U, 255U, 256U, 257U, 511U, 512U, 513U, 2083U, 2084U, 2085U, 100000U}) {
        const std::string name(length, 'n');
        const std::string value(length, 'v');
        std::string text = "[" + name;
        text.append("]\n").append(name).append("=").append(value);
        std::string expected = name + "@1{";
        expected.append(name).append("@2=").append(value).append(";}");
        EXPECT_EQ(load(text), expected);
    }
}

TEST_F(IniLoadTest, AReaderErrorKeepsTheSectionsOfTheCompleteLines) {
    TextReader reader("[a]\nx=1\n[b]\ny=2");
    EXPECT_EQ(loadIni(*file, reader.failingAtTheEnd().reader()), -5002);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}b@3{}");
    TextReader finished("[a]\nx=1\n[b]\ny=2\r");
    EXPECT_EQ(loadIni(*file, finished.failingAtTheEnd().reader()), -5002);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}b@3{y@4=2;}");
    TextReader nothing("");
    EXPECT_EQ(loadIni(*file, nothing.failingAtTheEnd().reader()), -5002);
    EXPECT_EQ(listing(*file), "");
}

TEST_F(IniLoadTest, AReaderThatClaimsMoreThanAskedForIsAnError) {
    const auto read = [](void*, char*, std::uint32_t size) {
        return static_cast<std::int32_t>(size) + 1;
    };
    EXPECT_EQ(loadIni(*file, IniReader{read, nullptr}), -5002);
}

TEST_F(IniLoadTest, HoldsTwoHundredThousandSections) {
    constexpr int kCount = 200'000;
    std::string text;
    for (int n = 0; n < kCount; ++n)
        text += "[section" + std::to_string(n) + "]\nkey=" + std::to_string(n) + "\nother=x\n";
    ASSERT_EQ(loadText(*file, text), kIniDone);
    ASSERT_EQ(sectionCount(*file), 200'000U);
    for (int n = 0; n < kCount; ++n) {
        IniSection* const section = findSection(*file, numbered("SECTION", n));
        ASSERT_NE(section, nullptr);
        ASSERT_EQ(section->line, 3 * n + 1);
        ASSERT_EQ(findKey(*file, *section, "key")->value.view(), std::to_string(n));
    }
    EXPECT_EQ(findSection(*file, "section200000"), nullptr);
}

TEST_F(IniLoadTest, HoldsAHundredThousandKeysInOneSection) {
    constexpr int kCount = 100'000;
    for (const bool merge : {true, false}) {
        file->mergeDuplicates = merge;
        std::string text = "[a]\n";
        for (int n = 0; n < kCount; ++n)
            text += numbered("key", n) + "=" + std::to_string(n) + "\n";
        ASSERT_EQ(loadText(*file, text), kIniDone);
        IniSection& section = *findSection(*file, "a");
        ASSERT_EQ(keyCount(section), 100'000U);
        for (int n = 0; n < kCount; ++n)
            ASSERT_EQ(findKey(*file, section, numbered("Key", n))->line, n + 2);
        EXPECT_EQ(findKey(*file, section, "key100000"), nullptr);
    }
}

TEST_F(IniLoadTest, HoldsAFileFullOfOneName) {
    constexpr int kCount = 200'000;
    std::string text;
    for (int n = 0; n < kCount; ++n)
        text += "[a]\nk=" + std::to_string(n) + "\n";
    file->mergeDuplicates = false;
    ASSERT_EQ(loadText(*file, text), kIniDone);
    EXPECT_EQ(sectionCount(*file), 200'000U);
    EXPECT_EQ(findSection(*file, "a")->line, 1);
    EXPECT_EQ(findSection(*file, "b"), nullptr);
    file->mergeDuplicates = true;
    ASSERT_EQ(loadText(*file, text), kIniDone);
    EXPECT_EQ(listing(*file), "a@399999{k@2=199999;}");
}

// As sections, as keys of one section, and both again, as many as a walk would never end with.
TEST_F(IniLoadTest, NamesMadeToCollideAreLoadedAndFound) {
    const std::vector<std::string> names = testsupport::collidingNames(20'000);
    std::string text;
    for (int time = 0; time < 2; ++time) {
        for (const std::string& name : names)
            text += "[" + name + "]\nk = 1\n";
        text += "[one]\n";
        for (const std::string& name : names)
            text += name + " = " + std::to_string(time) + "\n";
    }
    for (const bool caseSensitive : {true, false}) {
        file->caseSensitive = caseSensitive;
        ASSERT_EQ(loadText(*file, text), kIniDone);
        ASSERT_EQ(countOf(file->sections), names.size() + 1);
        IniSection* const one = findSection(*file, "one");
        ASSERT_NE(one, nullptr);
        EXPECT_EQ(countOf(one->keys), names.size());
        for (const std::string& name : names) {
            ASSERT_NE(findSection(*file, name), nullptr);
            const IniKey* const key = findKey(*file, *one, name);
            ASSERT_NE(key, nullptr);
            ASSERT_EQ(key->value.view(), "1");
        }
    }
}

} // namespace

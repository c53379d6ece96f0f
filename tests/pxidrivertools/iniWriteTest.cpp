// The text that a file object is written as, option by option, and that it loads again as it was.
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

namespace {

using namespace ini;

class IniWriteTest : public testing::Test {
protected:
    void load(std::string_view text) { ASSERT_EQ(loadText(*file, text), kIniDone); }
    void set(std::string_view key, std::string_view value, char quote = kNoQuote) {
        ASSERT_EQ(setValue(*file, "a", key, value, quote), kIniStored);
    }
    // What is written, with each line break as "\n" once it has been checked to be CR LF.
    std::string written() {
        const IniStatus status = writeIni(*file, folder.file("out.ini").c_str());
        if (status != kIniDone)
            return "status " + std::to_string(status);
        const std::string bytes = folder.read("out.ini");
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
                continue;
            EXPECT_TRUE(bytes[i] != '\n' || (i != 0 && bytes[i - 1] == '\r')) << i;
            text += bytes[i];
        }
        return text;
    }

    testsupport::FileFolder folder;
    IniFileOwner file{createIniFile()};
};

TEST_F(IniWriteTest, WritesHeadersKeysAndEmptyLinesBetweenSections) {
    load("[a]\nx=1\n;gone\ny=2\n[b]\n[c]\nz=3");
    EXPECT_EQ(written(), "[a]\nx = 1\ny = 2\n\n[b]\n\n[c]\nz = 3\n");
    EXPECT_EQ(folder.read("out.ini"), "[a]\r\nx = 1\r\ny = 2\r\n\r\n[b]\r\n\r\n[c]\r\nz = 3\r\n");
}

TEST_F(IniWriteTest, AnEmptyFileObjectMakesAnEmptyFile) {
    EXPECT_EQ(written(), "");
    file->write.byteOrderMark = true;
    EXPECT_EQ(written(), "\xEF\xBB\xBF");
}

TEST_F(IniWriteTest, TheSeparatorIsSpacedByOption) {
    load("[a]\nx=1\ny=\"2\"");
    file->write.spacedSeparator = false;
    EXPECT_EQ(written(), "[a]\nx=1\ny=\"2\"\n");
}

TEST_F(IniWriteTest, ValuesGetTheirQuotesBack) {
    file->parse.singleQuotes = true;
    load("[a]\nx=\" 1 \"\ny=' 2'\nz=3\nw=\"\"");
    EXPECT_EQ(written(), "[a]\nx = \" 1 \"\ny = ' 2'\nz = 3\nw = \"\"\n");
}

TEST_F(IniWriteTest, TheByteOrderMarkComesFirst) {
    load("[a]\nx=1");
    file->write.byteOrderMark = true;
    EXPECT_EQ(written(), "\xEF\xBB\xBF[a]\nx = 1\n");
}

TEST_F(IniWriteTest, TheUnnamedSectionHasNoHeader) {
    file->parse.colonAndUnnamedSection = true;
    load("x=1\n[a]\ny=2");
    EXPECT_EQ(written(), "x = 1\n\n[a]\ny = 2\n");
    file->write.keepLayout = true;
    EXPECT_EQ(written(), "x = 1\n[a]\ny = 2\n");
    file->parse.colonAndUnnamedSection = false;
    load("[(null)]\nx=1");
    EXPECT_EQ(written(), "[(null)]\nx = 1\n") << "a header in a file makes an ordinary section";
}

TEST_F(IniWriteTest, KeptLayoutHasNoEmptyLinesButBeforeNewSections) {
    load("[a]\nx=1\n\n[b]\ny=2");
    ASSERT_EQ(setValue(*file, "c", "z", "3", kNoQuote), kIniStored);
    ASSERT_EQ(setValue(*file, "d", "w", "4", kNoQuote), kIniStored);
    EXPECT_EQ(written(), "[a]\nx = 1\n\n[b]\ny = 2\n\n[c]\nz = 3\n\n[d]\nw = 4\n");
    file->write.keepLayout = true;
    EXPECT_EQ(written(), "[a]\nx = 1\n[b]\ny = 2\n\n[c]\nz = 3\n\n[d]\nw = 4\n");
}

TEST_F(IniWriteTest, LineFeedsInsideValuesBecomeCrLfToo) {
    set("x", "1\n2\r3");
    ASSERT_EQ(writeIni(*file, folder.file("out.ini").c_str()), kIniDone);
    EXPECT_EQ(folder.read("out.ini"), "[a]\r\nx = 1\r\n2\r3\r\n");
}

TEST_F(IniWriteTest, LinesUpToTheMaximumLengthAreNotSplit) {
    set("key", std::string(74, 'v')); // 3 + 3 + 74 is 80
    EXPECT_EQ(written(), "[a]\nkey = " + std::string(74, 'v') + "\n");
    set("key", std::string(72, 'v'), kDoubleQuote);
    EXPECT_EQ(written(), "[a]\nkey = \"" + std::string(72, 'v') + "\"\n");
    file->write.spacedSeparator = false;
    set("key", std::string(76, 'v'));
    EXPECT_EQ(written(), "[a]\nkey=" + std::string(76, 'v') + "\n");
}

TEST_F(IniWriteTest, LongerValuesAreWrittenInPieces) {
    set("key", std::string(65, 'v') + std::string(10, 'w')); // one more than fits
    EXPECT_EQ(written(), "[a]\nkey Line0001 = " + std::string(65, 'v') +
                             "\nkey Line0002 = " + std::string(10, 'w') + "\n");
    set("key", std::string(63, 'v') + std::string(63, 'w') + "x", kDoubleQuote);
    EXPECT_EQ(written(), "[a]\nkey Line0001 = \"" + std::string(63, 'v') + "\"\nkey Line0002 = \"" +
                             std::string(63, 'w') + "\"\nkey Line0003 = \"x\"\n");
}

TEST_F(IniWriteTest, ThePieceLengthDoesNotDependOnTheSeparator) {
    file->write.maximumLineLength = 20;
    file->write.spacedSeparator = false;
    set("key", "0123456789012345x"); // 3 + 1 + 17 is 21; the room is 20 - 12 - 3
    EXPECT_EQ(written(), "[a]\nkey Line0001=01234\nkey Line0002=56789\nkey Line0003=01234\n"
                         "key Line0004=5x\n");
}

TEST_F(IniWriteTest, PiecesAreCutBehindTheLastBreakCharacterThatFits) {
    file->write.maximumLineLength = 20; // room for 20 - 12 - 1 = 7
    file->write.breakCharacter = ',';
    set("k", "ab,cd,efgh,ijklmnopqrst,u,v");
    EXPECT_EQ(written(), "[a]\nk Line0001 = ab,cd,\nk Line0002 = efgh,\nk Line0003 = ijklmno\n"
                         "k Line0004 = pqrst,\nk Line0005 = u,v\n");
    set("k", "abcdef,ghijklm,nop"); // the break is the last character that fits, then the first
    EXPECT_EQ(written(), "[a]\nk Line0001 = abcdef,\nk Line0002 = ghijklm\nk Line0003 = ,nop\n");
}

TEST_F(IniWriteTest, CountersGrowBeyondFourDigits) {
    file->write.maximumLineLength = 14;
    set("k", std::string(10001, 'v')); // one character a piece
    const std::string text = written();
    EXPECT_NE(text.find("k Line9999 = v\nk Line10000 = v\nk Line10001 = v\n"), std::string::npos);
    load(text);
    EXPECT_EQ(findKey(*file, *findSection(*file, "a"), "k")->value.length, 10001U);
}

TEST_F(IniWriteTest, ANameThatLeavesNoRoomIsAnError) {
    file->write.maximumLineLength = 20;
    set("12345678", "too long a value"); // 20 - 12 - 8 is 0
    EXPECT_EQ(written(), "status -2");
    EXPECT_EQ(folder.fileCount(), 0U);
    set("12345678", "short val"); // 8 + 3 + 9 is 20
    EXPECT_EQ(written(), "[a]\n12345678 = short val\n");
    removeSection(*file, *findSection(*file, "a"));
    set("1234567", "too long a value"); // one character of room
    EXPECT_NE(written().find("1234567 Line0016 = e\n"), std::string::npos);
    set("1234567", "too long a value", kDoubleQuote); // 20 - 14 - 7 is less than 0
    EXPECT_EQ(written(), "status -2");
    removeSection(*file, *findSection(*file, "a"));
    set("12345", "too long a value", kDoubleQuote);
    EXPECT_NE(written().find("12345 Line0016 = \"e\"\n"), std::string::npos);
}

TEST_F(IniWriteTest, WithoutMaximumNothingIsSplit) {
    file->write.maximumLineLength = kNoMaximumLineLength;
    set("key", std::string(100000, 'v'));
    EXPECT_EQ(written(), "[a]\nkey = " + std::string(100000, 'v') + "\n");
}

TEST_F(IniWriteTest, WhatWasWrittenLoadsAsItWas) {
    file->parse.singleQuotes = true;
    std::string text = "[first]\nplain=value\ndouble=\" spaced \"\nsingle='x'\n";
    for (int n = 0; n < 30; ++n) {
        text += numbered("[section ", n) + "]\n";
        text += "list=" + std::string(static_cast<std::size_t>(n) * 5, 'x') + ",y\n";
        text += "quoted=\"" + std::string(static_cast<std::size_t>(n) * 9, ' ') + "z\"\n";
    }
    load(text);
    const auto content = [this] {
        std::string all;
        for (std::uint32_t s = 1; s <= sectionCount(*file); ++s) {
            const IniSection& section = *sectionAt(*file, static_cast<std::int32_t>(s));
            all += std::string(section.name.view()) + "{";
            for (std::uint32_t k = 1; k <= keyCount(section); ++k) {
                const IniKey& key = *keyAt(section, static_cast<std::int32_t>(k));
                all += std::string(key.name.view()) + "=" + std::to_string(key.quote) +
                       std::string(key.value.view()) + ";";
            }
            all += "}";
        }
        return all;
    };
    const std::string before = content();
    for (const bool safe : {true, false})
        for (const bool sameDirectory : {true, false})
            for (const bool mark : {true, false})
                for (const bool layout : {true, false})
                    for (const std::int32_t length : {-1, 40, 80}) {
                        file->write = {.safeWrite = safe,
                                       .sameDirectoryTemporary = sameDirectory,
                                       .flush = mark,
                                       .byteOrderMark = mark,
                                       .keepLayout = layout,
                                       .spacedSeparator = !layout,
                                       .maximumLineLength = length,
                                       .breakCharacter = layout ? ',' : kNoBreakCharacter};
                        const std::string path = folder.file("again.ini");
                        ASSERT_EQ(writeIni(*file, path.c_str()), kIniDone);
                        const auto stream = platform::openStream(path.c_str(), "rb");
                        ASSERT_EQ(loadIni(*file, stream.get()), kIniDone);
                        ASSERT_EQ(content(), before);
                    }
}

} // namespace

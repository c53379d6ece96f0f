// Typed reading and writing of values.
#include "tests/pxidrivertools/iniFileFixture.h"

#include <limits>

namespace {

using namespace ini;
using Status = tFixedStatus;
using Integers = std::list<std::int32_t>;
using Strings = std::list<std::string>;
using WideStrings = std::list<std::wstring>;

class IniFileValuesTest : public IniFileFixture {
protected:
    IniFileValuesTest() { open("[a]\n"); }

    // Loads the value as it would stand in a file.
    void load(const std::string& value) { ASSERT_EQ(open("[a]\nx=" + value + "\n"), 0); }

    // What a getter reads from key x of section a; or the code, with the output untouched.
    template <class Value, class Getter>
    std::string read(Value untouched, Getter getter) {
        Value value = untouched;
        const std::int32_t code = codeOf([&](Status& s) { (file.*getter)("a", "x", value, s); });
        if (code == 0)
            return testing::PrintToString(value);
        EXPECT_EQ(value, untouched);
        return std::to_string(code);
    }
    std::string hexadecimal(const std::string& value) {
        load(value);
        return read<std::uint32_t>(77, &cIniFile::getHexadecimal);
    }
    std::string signed32(const std::string& value) {
        load(value);
        return read<std::int32_t>(77, &cIniFile::getSigned32);
    }
    std::string unsigned32(const std::string& value) {
        load(value);
        return read<std::uint32_t>(77, &cIniFile::getUnsigned32);
    }
    std::string integers(const std::string& value) {
        load(value);
        return read<Integers>({77}, &cIniFile::getIntegerList);
    }
    std::string strings(const std::string& value) {
        load(value);
        return read<Strings>({"77"}, &cIniFile::getStringList);
    }
};

TEST_F(IniFileValuesTest, AMissingSectionAndAMissingKeyHaveTheirOwnCodes) {
    EXPECT_EQ(get("b", "x"), "-313317");
    EXPECT_EQ(get("a", "x"), "-313322");
    const auto code = [this](const char* section, auto getter, auto value) {
        return codeOf([&](Status& s) { (file.*getter)(section, "x", value, s); });
    };
    for (const char* const section : {"a", "b"}) {
        const std::int32_t expected = *section == 'a' ? -313322 : -313317;
        EXPECT_EQ(code(section, &cIniFile::getText, tText()), expected);
        using WideGetter =
            void (cIniFile::*)(const std::string&, const std::string&, std::wstring&, Status&);
        EXPECT_EQ(code(section, static_cast<WideGetter>(&cIniFile::getString), std::wstring()),
                  expected);
        EXPECT_EQ(code(section, &cIniFile::getHexadecimal, std::uint32_t{}), expected);
        EXPECT_EQ(code(section, &cIniFile::getSigned32, std::int32_t{}), expected);
        EXPECT_EQ(code(section, &cIniFile::getUnsigned32, std::uint32_t{}), expected);
        EXPECT_EQ(code(section, &cIniFile::getIntegerList, Integers{}), expected);
        EXPECT_EQ(code(section, &cIniFile::getStringList, Strings{}), expected);
        EXPECT_EQ(code(section, &cIniFile::getWideStringList, WideStrings{}), expected);
        EXPECT_EQ(codeOf([&](Status& s) { file.removeKey(section, "x", s); }), expected);
    }
}

TEST_F(IniFileValuesTest, PresenceIsAskedForWithoutErrors) {
    load("1");
    Status status;
    EXPECT_TRUE(file.hasSection("a", status));
    EXPECT_FALSE(file.hasSection("A", status));
    EXPECT_FALSE(file.hasSection("b", status));
    EXPECT_TRUE(file.hasKey("a", "x", status));
    EXPECT_FALSE(file.hasKey("a", "X", status));
    EXPECT_FALSE(file.hasKey("b", "x", status));
    EXPECT_EQ(status.code, 0);
}

TEST_F(IniFileValuesTest, SectionNamesAreAppendedInFileOrder) {
    open("[z]\n[a]\n[m]\n[a]\n");
    Strings names{"before"};
    EXPECT_EQ(codeOf([&](Status& s) { file.getSectionNames(names, s); }), 0);
    EXPECT_EQ(names, (Strings{"before", "z", "a", "m"}));
}

TEST_F(IniFileValuesTest, StringsAreReadAsTheyAreStored) {
    load("\" a\\tb\\\\ \"");
    EXPECT_EQ(get("a", "x"), " a\\tb\\\\ ");
    Status status;
    tText text;
    file.getText("a", "x", text, status);
    EXPECT_EQ(text.view(), " a\\tb\\\\ ");
    load("\"\"");
    EXPECT_EQ(get("a", "x"), "");
}

TEST_F(IniFileValuesTest, AViewIsTheStoredValueItself) {
    load("\" a\\tb \"");
    Status status;
    const std::string_view first = file.getView("a", "x", status);
    EXPECT_EQ(first, " a\\tb ");
    EXPECT_EQ(file.getView("a", "x", status).data(), first.data());
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(codeOf([&](Status& s) { EXPECT_EQ(file.getView("a", "none", s), ""); }),
              kIniFileErrNoKey);
    EXPECT_EQ(codeOf([&](Status& s) { EXPECT_EQ(file.getView("none", "x", s), ""); }),
              kIniFileErrNotOpen);
    EXPECT_EQ(file.getView("a", "x", status), first);
    status.code = -1;
    EXPECT_EQ(file.getView("a", "x", status), "");
    Status open;
    file.close(open);
    EXPECT_EQ(codeOf([&](Status& s) { EXPECT_EQ(file.getView("a", "x", s), ""); }),
              kIniFileErrNotOpen);
}

TEST_F(IniFileValuesTest, WideStringsAreConverted) {
    load("gr\xC3\xBC\xC3\x9F \xF0\x9F\x94\x8C");
    Status status;
    std::wstring wide;
    file.getString("a", "x", wide, status);
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(wide, L"gr\u00FC\u00DF \U0001F50C");
    load("bad \xC3(");
    EXPECT_EQ(codeOf([&](Status& s) { file.getString("a", "x", wide, s); }), -313323);
    EXPECT_EQ(wide, L"gr\u00FC\u00DF \U0001F50C");
}

TEST_F(IniFileValuesTest, StringsAreStoredEscapedAndWithoutQuotes) {
    load("\"quoted\"");
    EXPECT_EQ(set("a", "x", "tab\there \"x\" \\ \r\n\x7F"), 0);
    EXPECT_EQ(get("a", "x"), "tab\\there \\\"x\\\" \\\\ \\x0d\\n\\x7f");
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(content(), "[a]\r\nx = tab\\there \\\"x\\\" \\\\ \\x0d\\n\\x7f\r\n");
}

TEST_F(IniFileValuesTest, WhatCannotBeStoredIsReported) {
    EXPECT_EQ(set("", "x", "1"), -313319);
    EXPECT_EQ(set("a", "", "1"), -313319);
    memory.failAt(1);
    EXPECT_EQ(set("a", "x", "1"), -313319);
    memory.failAt(0);
    EXPECT_EQ(get("a", "x"), "-313322");
}

TEST_F(IniFileValuesTest, HexadecimalNumbersAreReadWithOrWithoutPrefix) {
    EXPECT_EQ(hexadecimal("10"), "16");
    EXPECT_EQ(hexadecimal("0x1093"), "4243");
    EXPECT_EQ(hexadecimal("0XaBcDeF"), "11259375");
    EXPECT_EQ(hexadecimal("\"  ff\""), "255");
    EXPECT_EQ(hexadecimal("ffxyz"), "255");
    EXPECT_EQ(hexadecimal("ffffffff"), "4294967295");
    EXPECT_EQ(hexadecimal("100000000"), "4294967295");
    EXPECT_EQ(hexadecimal("-1"), "4294967295");
}

TEST_F(IniFileValuesTest, WhatIsNotHexadecimalHasTheWrongForm) {
    for (const char* const value : {"xyz", "0x", "0xg", "-", "\"\"", "\"  \"", "g1"})
        EXPECT_EQ(hexadecimal(value), "-313323") << value;
}

TEST_F(IniFileValuesTest, HexadecimalNumbersAreStoredWithPrefixButZero) {
    const auto stored = [this](std::uint32_t value) {
        EXPECT_EQ(codeOf([&](Status& s) { file.setHexadecimal("a", "x", value, s); }), 0);
        return get("a", "x");
    };
    EXPECT_EQ(stored(255), "0xff");
    EXPECT_EQ(stored(0), "0");
    EXPECT_EQ(stored(1), "0x1");
    EXPECT_EQ(stored(0xFFFFFFFF), "0xffffffff");
}

TEST_F(IniFileValuesTest, SignedNumbersStayWithinTheirRange) {
    EXPECT_EQ(signed32("12"), "12");
    EXPECT_EQ(signed32("\"  -2147483648 \""), "-2147483648");
    EXPECT_EQ(signed32("2147483647"), "2147483647");
    EXPECT_EQ(signed32("+7"), "7");
    for (const char* const value : {"+2147483648", "2147483648", "-2147483649", "4294967296",
                                    "0x10", "1 2", "- 1", "1-", "--1", "1.5", "x", "+"})
        EXPECT_EQ(signed32(value), "-313320") << value;
}

TEST_F(IniFileValuesTest, UnsignedNumbersStayWithinTheirRange) {
    EXPECT_EQ(unsigned32("4294967295"), "4294967295");
    EXPECT_EQ(unsigned32("\"\t0 \""), "0");
    for (const char* const value : {"4294967296", "-1", "0x10", "1 2", "x"})
        EXPECT_EQ(unsigned32(value), "-313320") << value;
}

TEST_F(IniFileValuesTest, ABlankNumberIsAMissingKey) {
    for (const char* const value : {"\"\"", "\" \t \""}) {
        EXPECT_EQ(signed32(value), "-313322");
        EXPECT_EQ(unsigned32(value), "-313322");
        Status status;
        EXPECT_TRUE(file.hasKey("a", "x", status));
    }
}

TEST_F(IniFileValuesTest, DecimalNumbersAreStoredPlainly) {
    Status status;
    file.setSigned32("a", "x", std::numeric_limits<std::int32_t>::min(), status);
    EXPECT_EQ(get("a", "x"), "-2147483648");
    file.setSigned32("a", "x", 0, status);
    EXPECT_EQ(get("a", "x"), "0");
    file.setUnsigned32("a", "x", 4294967295U, status);
    EXPECT_EQ(get("a", "x"), "4294967295");
    EXPECT_EQ(status.code, 0);
}

TEST_F(IniFileValuesTest, IntegerListsAreReadItemByItem) {
    EXPECT_EQ(integers("1,2,3"), "{ 1, 2, 3 }");
    EXPECT_EQ(integers(" -1 , +2 ,3x,"), "{ -1, 2, 3 }");
    EXPECT_EQ(integers("99999999999,-99999999999"), "{ 2147483647, -2147483648 }");
    EXPECT_EQ(integers("\"\""), "{}");
    for (const char* const value : {"1,,2", "1,x", ",", "\" \"", "x"})
        EXPECT_EQ(integers(value), "-313323") << value;
}

TEST_F(IniFileValuesTest, IntegerListsAreStoredWithoutSpaces) {
    Status status;
    file.setIntegerList("a", "x", {1, 2, 3}, status);
    EXPECT_EQ(get("a", "x"), "1,2,3");
    file.setIntegerList("a", "x", {-5}, status);
    EXPECT_EQ(get("a", "x"), "-5");
    file.setIntegerList("a", "x", {}, status);
    EXPECT_EQ(get("a", "x"), "");
    EXPECT_EQ(status.code, 0);
}

TEST_F(IniFileValuesTest, StringListsAreReadItemByItem) {
    EXPECT_EQ(strings("a, b ,,c,"), "{ \"a\", \" b \", \"\", \"c\" }");
    EXPECT_EQ(strings("\"\""), "{}");
    EXPECT_EQ(strings("a"), "{ \"a\" }");
    load("\xC3\xA4,b");
    Status status;
    WideStrings wide{L"old"};
    file.getWideStringList("a", "x", wide, status);
    EXPECT_EQ(wide, (WideStrings{L"\u00E4", L"b"}));
    load("ok,\xFF");
    EXPECT_EQ(codeOf([&](Status& s) { file.getWideStringList("a", "x", wide, s); }), -313323);
    EXPECT_EQ(wide, (WideStrings{L"\u00E4", L"b"}));
}

TEST_F(IniFileValuesTest, StringListsAreStoredJoinedAndEscaped) {
    Status status;
    file.setStringList("a", "x", {"a", " b ", "", "c\"d"}, status);
    EXPECT_EQ(get("a", "x"), "a, b ,,c\\\"d");
    file.setWideStringList("a", "x", {L"\u00E4", L"b"}, status);
    EXPECT_EQ(get("a", "x"), "\xC3\xA4,b");
    EXPECT_EQ(status.code, 0);
    const std::wstring surrogate(1, static_cast<wchar_t>(0xDC00));
    EXPECT_EQ(codeOf([&](Status& s) {
                  file.setWideStringList("a", "x", {L"c", surrogate}, s);
              }),
              -313319);
    EXPECT_EQ(get("a", "x"), "\xC3\xA4,b");
}

TEST_F(IniFileValuesTest, KeysAndSectionsAreRemoved) {
    open("[a]\nx=1\ny=2\n[b]\nz=3\n");
    EXPECT_EQ(codeOf([this](Status& s) { file.removeKey("a", "x", s); }), 0);
    EXPECT_EQ(get("a", "x"), "-313322");
    EXPECT_EQ(get("a", "y"), "2");
    EXPECT_EQ(codeOf([this](Status& s) { file.removeSection("a", s); }), 0);
    EXPECT_EQ(get("a", "y"), "-313317");
    EXPECT_EQ(get("b", "z"), "3");
    EXPECT_EQ(codeOf([this](Status& s) { file.removeSection("a", s); }), -313321);
}

TEST_F(IniFileValuesTest, SectionsAreRenamedInPlace) {
    open("[a]\nx=1\n[b]\nz=3\n");
    EXPECT_EQ(codeOf([this](Status& s) { file.renameSection("a", "c", s); }), 0);
    EXPECT_EQ(get("c", "x"), "1");
    EXPECT_EQ(codeOf([this](Status& s) { file.renameSection("a", "d", s); }), -313321);
    EXPECT_EQ(codeOf([this](Status& s) { file.renameSection("b", "", s); }), -313319);
    memory.failAt(1);
    EXPECT_EQ(codeOf([this](Status& s) { file.renameSection("b", "d", s); }), -313319);
    memory.failAt(0);
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(content(), "[c]\r\nx = 1\r\n\r\n[b]\r\nz = 3\r\n");
}

} // namespace

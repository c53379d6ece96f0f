// Listing folders: names that the code page does not have, folders, order, and every way to fail.
#include "source/cPciTavFilesystem.h"
#include "tests/source/support/raised.h"
#include "tests/support/temporaryFolder.h"
#include "tests/windows/importedFunction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testsupport::Raised;
using testsupport::raisedBy;
using testwindows::ImportedFunction;

constexpr const char* kListingSource = "source\\cPciTavFilesystem";

std::string utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

class WindowsListing : public testing::Test {
protected:
    // The path of a name in the folder, in UTF-8 and with backslashes.
    [[nodiscard]] std::string in(const std::string& name) const {
        std::string path = utf8(folder_.path()) + "\\" + name;
        for (char& character : path)
            character = character == '/' ? '\\' : character;
        return path;
    }
    // The name is in UTF-8.
    void write(const std::string& name) const {
        const fs::path file = folder_.path() / fs::path(std::u8string(name.begin(), name.end()));
        fs::create_directories(file.parent_path());
        std::ofstream stream(file);
        ASSERT_TRUE(stream.good()) << name;
    }
    std::vector<std::string> list(const std::string& pattern) {
        std::vector<std::string> files{"from before"};
        filesystem_.ListFiles(pattern, files);
        return files;
    }
    Raised listingRaises(const std::string& pattern) {
        return raisedBy([&] { filesystem_.ListFiles(pattern, listed_); });
    }

    testsupport::TemporaryFolder folder_;
    cPciTavFilesystem filesystem_;
    std::vector<std::string> listed_{"from before"};
};

// Latin, which most code pages have, Japanese, and a character beyond 16 bits.
const char* const kNames[] = {"plain.ini", "\xC3\xA4.ini", "\xE6\x97\xA5\xE6\x9C\xAC.ini",
                              "\xF0\x9D\x84\x9E.ini"};

TEST_F(WindowsListing, NamesOutsideTheCodePageAreGivenInUtf8) {
    for (const char* const name : kNames)
        write(name);
    EXPECT_THAT(list(in("*.ini")),
                UnorderedElementsAre(in(kNames[0]), in(kNames[1]), in(kNames[2]), in(kNames[3])));
}

TEST_F(WindowsListing, FoldersOutsideTheCodePageAreListed) {
    write("\xE6\x97\xA5/a.ini");
    EXPECT_THAT(list(in("\xE6\x97\xA5\\*.ini")), ElementsAre(in("\xE6\x97\xA5\\a.ini")));
}

TEST_F(WindowsListing, CapitalsDoNotMatter) {
    write("A.INI");
    EXPECT_THAT(list(in("*.ini")), ElementsAre(in("A.INI")));
}

TEST_F(WindowsListing, AFolderThatMatchesIsListedToo) {
    write("a.ini");
    write("b.txt");
    fs::create_directories(folder_.path() / "folder.ini");
    EXPECT_THAT(list(in("*.ini")), UnorderedElementsAre(in("a.ini"), in("folder.ini")));
}

TEST_F(WindowsListing, TheFolderPartIsWhatStandsBeforeTheLastBackslash) {
    write("D/a.ini");
    EXPECT_THAT(list(in("D\\..\\D\\*.ini")), ElementsAre(in("D\\..\\D\\a.ini")));
    EXPECT_THAT(list(in("D\\\\*.ini")), ElementsAre(in("D\\\\a.ini")));
}

TEST_F(WindowsListing, APatternWithoutABackslashGivesBareNames) {
    write("only here.ini");
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const std::vector<std::string> bare = list("*.ini");
    fs::current_path(before);
    EXPECT_THAT(bare, ElementsAre("only here.ini"));
    // A slash is no backslash: it belongs to what is dropped.
    std::string slashes = in("*.ini");
    for (char& character : slashes)
        character = character == '\\' ? '/' : character;
    EXPECT_THAT(list(slashes), ElementsAre("only here.ini"));
}

TEST_F(WindowsListing, NothingThatMatchesIsAnEmptyList) {
    EXPECT_THAT(list(in("*.ini")), IsEmpty());
    write("a.txt");
    EXPECT_THAT(list(in("*.ini")), IsEmpty());
    EXPECT_THAT(list(in("missing.ini")), IsEmpty());
}

TEST_F(WindowsListing, AMissingFolderIsAnEmptyList) {
    EXPECT_THAT(list(in("none\\*.ini")), IsEmpty());
    EXPECT_THAT(list("Q:\\none\\*.ini"), IsEmpty());
}

TEST_F(WindowsListing, AnEmptyPatternRaises) {
    const Raised raised = listingRaises("");
    EXPECT_EQ(raised.code, -313326);
    EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrEmptyPattern"));
    EXPECT_THAT(listed_, IsEmpty());
}

TEST_F(WindowsListing, APatternThatIsNoUtf8Raises) {
    write("a.ini");
    for (const char* const text :
         {"\xFF*.ini", "\xC3(*.ini", "\xED\xA0\x80*.ini", "*.ini\xE6\x97"}) {
        const Raised raised = listingRaises(in(text));
        EXPECT_EQ(raised.code, -313325);
        EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrInvalidText"));
        EXPECT_THAT(listed_, IsEmpty());
    }
}

TEST_F(WindowsListing, WhatIsNoFolderRaises) {
    write("file");
    const Raised raised = listingRaises(in("file\\*.ini"));
    EXPECT_EQ(raised.code, -313327);
    EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrFailed"));
    EXPECT_THAT(listed_, IsEmpty());
}

// A folder whose entries, and whose end, a test decides.
struct Search {
    static inline std::vector<std::wstring> names;
    static inline std::wstring pattern;
    static inline DWORD firstError = ERROR_SUCCESS;
    static inline DWORD endError = ERROR_NO_MORE_FILES;
    static inline std::size_t next = 0;
    static inline int closed = 0;

    static BOOL WINAPI findNext(HANDLE, WIN32_FIND_DATAW* entry) {
        if (next == names.size()) {
            SetLastError(endError);
            return FALSE;
        }
        std::wcscpy(entry->cFileName, names[next++].c_str());
        return TRUE;
    }
    static HANDLE WINAPI findFirst(LPCWSTR text, WIN32_FIND_DATAW* entry) {
        pattern = text;
        next = 0;
        if (firstError != ERROR_SUCCESS) {
            SetLastError(firstError);
            return INVALID_HANDLE_VALUE;
        }
        return findNext(nullptr, entry) ? reinterpret_cast<HANDLE>(std::uintptr_t{0x77})
                                        : INVALID_HANDLE_VALUE;
    }
    static BOOL WINAPI close(HANDLE) {
        ++closed;
        return TRUE;
    }

    explicit Search(std::vector<std::wstring> entries) {
        names = std::move(entries);
        firstError = ERROR_SUCCESS;
        endError = ERROR_NO_MORE_FILES;
        closed = 0;
    }

private:
    ImportedFunction first_{"FindFirstFileW", reinterpret_cast<void*>(&findFirst)};
    ImportedFunction next_{"FindNextFileW", reinterpret_cast<void*>(&findNext)};
    ImportedFunction close_{"FindClose", reinterpret_cast<void*>(&close)};
};

TEST_F(WindowsListing, TheSystemsOrderIsKept) {
    const Search search({L"z.ini", L"a.ini", L"m.ini", L"a.ini"});
    EXPECT_THAT(list("C:\\D\\*.ini"),
                ElementsAre("C:\\D\\z.ini", "C:\\D\\a.ini", "C:\\D\\m.ini", "C:\\D\\a.ini"));
    EXPECT_EQ(Search::pattern, L"C:\\D\\*.ini");
    EXPECT_EQ(Search::closed, 1);
}

TEST_F(WindowsListing, ANameWithAHalfCharacterEndsTheListingWithWhatCameBefore) {
    for (const wchar_t half : {wchar_t{0xD800}, wchar_t{0xDC00}}) {
        const Search search({L"a.ini", std::wstring(L"b") + half + L".ini", L"c.ini"});
        const Raised raised = listingRaises("C:\\D\\*.ini");
        EXPECT_EQ(raised.code, -313325);
        EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrInvalidText"));
        EXPECT_THAT(listed_, ElementsAre("C:\\D\\a.ini"));
        EXPECT_EQ(Search::closed, 1);
    }
}

TEST_F(WindowsListing, WhateverEndsTheListingIsItsEnd) {
    const Search search({L"a.ini"});
    Search::endError = ERROR_ACCESS_DENIED;
    EXPECT_THAT(list("C:\\D\\*.ini"), ElementsAre("C:\\D\\a.ini"));
    EXPECT_EQ(Search::closed, 1);
}

TEST_F(WindowsListing, OnlyMissingFilesAndFoldersAreAnEmptyList) {
    const Search search({});
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND}) {
        Search::firstError = code;
        EXPECT_THAT(list("C:\\D\\*.ini"), IsEmpty());
    }
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_INVALID_NAME, ERROR_DIRECTORY,
                             ERROR_NOT_READY, ERROR_BAD_NETPATH, ERROR_NO_MORE_FILES}) {
        Search::firstError = code;
        EXPECT_EQ(listingRaises("C:\\D\\*.ini").code, -313327) << code;
    }
    EXPECT_EQ(Search::closed, 0) << "nothing was opened";
}

// A conversion that fails for another reason than its text.
struct FailingConversion {
    static inline DWORD code = ERROR_SUCCESS;
    static int WINAPI toWide(UINT page, DWORD flags, LPCSTR, int, LPWSTR, int) {
        EXPECT_EQ(page, 65001U);
        EXPECT_EQ(flags, DWORD{MB_ERR_INVALID_CHARS});
        SetLastError(code);
        return 0;
    }
    static int WINAPI toNarrow(UINT page, DWORD flags, LPCWSTR, int, LPSTR, int, LPCSTR, LPBOOL) {
        EXPECT_EQ(page, 65001U);
        EXPECT_EQ(flags, DWORD{WC_ERR_INVALID_CHARS});
        SetLastError(code);
        return 0;
    }
};

TEST_F(WindowsListing, APatternThatCannotBeConvertedOtherwiseRaises) {
    Raised raised;
    for (const auto& [code, status] :
         {std::pair<DWORD, std::int32_t>{ERROR_NO_UNICODE_TRANSLATION, -313325},
          {ERROR_INVALID_PARAMETER, -313328}}) {
        FailingConversion::code = code;
        {
            const ImportedFunction conversion("MultiByteToWideChar",
                                              reinterpret_cast<void*>(&FailingConversion::toWide));
            raised = listingRaises("C:\\D\\*.ini");
        }
        EXPECT_EQ(raised.code, status);
    }
    EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrConversion"));
}

TEST_F(WindowsListing, ANameThatCannotBeConvertedOtherwiseRaises) {
    Raised raised;
    for (const auto& [code, status] :
         {std::pair<DWORD, std::int32_t>{ERROR_NO_UNICODE_TRANSLATION, -313325},
          {ERROR_INSUFFICIENT_BUFFER, -313328}}) {
        FailingConversion::code = code;
        {
            const Search search({L"a.ini"});
            const ImportedFunction conversion(
                "WideCharToMultiByte", reinterpret_cast<void*>(&FailingConversion::toNarrow));
            raised = listingRaises("C:\\D\\*.ini");
        }
        EXPECT_EQ(raised.code, status);
        EXPECT_EQ(Search::closed, 1);
    }
    EXPECT_TRUE(raised.hasSite(kListingSource, "kListErrConversion"));
}

} // namespace

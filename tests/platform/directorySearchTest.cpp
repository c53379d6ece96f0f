// Listings of real folders.
#include "platform/directorySearch.h"

#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using platform::DirectorySearch;
using platform::SearchOutcome;
using testing::ElementsAre;

class Listing : public testing::Test {
protected:
    void put(const std::string& name) { (void)folder_.file(name, ""); }
    [[nodiscard]] std::string pattern(const std::string& names) const {
        return folder_.path().string() + "/" + names;
    }

    std::vector<std::string> list(const std::string& pattern) {
        DirectorySearch search;
        EXPECT_EQ(search.open(pattern), SearchOutcome::entry);
        std::vector<std::string> names;
        std::string name = "poison";
        while (search.next(name) == SearchOutcome::entry)
            names.push_back(name);
        EXPECT_EQ(search.next(name), SearchOutcome::end);
        return names;
    }

    testsupport::TemporaryFolder folder_;
};

TEST_F(Listing, IsInByteOrderWhateverTheOrderOfCreation) {
    for (const char* name : {"b.ini", "\xC3\xA4.ini", "a.ini", "B.ini", "_.ini", "10.ini", "9.ini"})
        put(name);
    EXPECT_THAT(list(pattern("*.ini")),
                ElementsAre("10.ini", "9.ini", "B.ini", "_.ini", "a.ini", "b.ini", "\xC3\xA4.ini"));
}

TEST_F(Listing, HasMatchingNamesOnly) {
    for (const char* name : {"a.ini", "b.INI", ".c.ini", "d.ini.bak", "e.txt"})
        put(name);
    EXPECT_THAT(list(pattern("*.ini")), ElementsAre("a.ini"));
}

TEST_F(Listing, HasFoldersToo) {
    put("a.ini");
    std::filesystem::create_directory(folder_.path() / "b.ini");
    EXPECT_THAT(list(pattern("*.ini")), ElementsAre("a.ini", "b.ini"));
}

TEST_F(Listing, PatternWithoutFolderMeansTheCurrentOne) {
    put("only-here.ini");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    const std::vector<std::string> names = list("only-*.ini");
    std::filesystem::current_path(before);
    EXPECT_THAT(names, ElementsAre("only-here.ini"));
}

TEST_F(Listing, CharactersOfThePatternsFolderAreNoPattern) {
    std::filesystem::create_directory(folder_.path() / "x");
    put("x/a.ini");
    DirectorySearch search;
    EXPECT_EQ(search.open(pattern("?/*.ini")), SearchOutcome::nothingMatches);
}

TEST_F(Listing, NothingMatchesInAnEmptyFolder) {
    DirectorySearch search;
    EXPECT_EQ(search.open(pattern("*.ini")), SearchOutcome::nothingMatches);
    std::string name = "kept";
    EXPECT_EQ(search.next(name), SearchOutcome::end);
    EXPECT_EQ(name, "kept");
}

TEST_F(Listing, NothingMatchesInAMissingFolder) {
    DirectorySearch search;
    EXPECT_EQ(search.open(pattern("missing/*.ini")), SearchOutcome::nothingMatches);
    EXPECT_EQ(search.open(pattern("missing/below/*.ini")), SearchOutcome::nothingMatches);
}

TEST_F(Listing, FileInPlaceOfTheFolderFailsWithItsCode) {
    put("file");
    DirectorySearch search;
    EXPECT_EQ(search.open(pattern("file/*.ini")), SearchOutcome::failed);
    EXPECT_EQ(platform::lastSystemCode(), static_cast<platform::SystemCode>(ENOTDIR));
    EXPECT_EQ(search.open(pattern(std::string(300, 'x') + "/*.ini")), SearchOutcome::failed);
    EXPECT_EQ(platform::lastSystemCode(), static_cast<platform::SystemCode>(ENAMETOOLONG));
}

TEST_F(Listing, PatternThatIsNoUtf8IsInvalidText) {
    DirectorySearch search;
    EXPECT_EQ(search.open(pattern("\xFF*.ini")), SearchOutcome::invalidText);
    EXPECT_EQ(search.open("\xC3/*.ini"), SearchOutcome::invalidText);
}

TEST_F(Listing, NameThatIsNoUtf8IsInvalidTextAfterTheNamesBefore) {
    put("a.ini");
    put("b\xFF.ini");
    put("ignored\xFF.txt");
    DirectorySearch search;
    ASSERT_EQ(search.open(pattern("*.ini")), SearchOutcome::entry);
    std::string name;
    EXPECT_EQ(search.next(name), SearchOutcome::entry);
    EXPECT_EQ(name, "a.ini");
    EXPECT_EQ(search.next(name), SearchOutcome::invalidText);
    EXPECT_EQ(name, "a.ini");
}

TEST_F(Listing, OpeningAgainStartsAfresh) {
    put("a.ini");
    put("b.ini");
    DirectorySearch search;
    std::string name;
    ASSERT_EQ(search.open(pattern("*.ini")), SearchOutcome::entry);
    ASSERT_EQ(search.next(name), SearchOutcome::entry);
    ASSERT_EQ(search.open(pattern("*.ini")), SearchOutcome::entry);
    ASSERT_EQ(search.next(name), SearchOutcome::entry);
    EXPECT_EQ(name, "a.ini");
    ASSERT_EQ(search.open(pattern("*.none")), SearchOutcome::nothingMatches);
    EXPECT_EQ(search.next(name), SearchOutcome::end);
}

TEST(Separator, LastOneOfAPath) {
    EXPECT_EQ(platform::pathSeparator(), '/');
    EXPECT_EQ(platform::lastSeparator("/a/b"), 2U);
    EXPECT_EQ(platform::lastSeparator("/"), 0U);
    EXPECT_EQ(platform::lastSeparator("a\\b"), std::string::npos);
    EXPECT_EQ(platform::lastSeparator(""), std::string::npos);
}

} // namespace

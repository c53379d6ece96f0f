// Memory that runs out: every request is refused once, nothing leaks, nothing half done is left.
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "tests/pxidrivertools/iniHelpers.h"

namespace {

using namespace ini;

TEST(IniMemory, NoFileObjectWithoutMemory) {
    TestMemory memory;
    memory.failAt(1);
    EXPECT_EQ(createIniFile(memory.memory()), nullptr);
}

TEST(IniMemory, ALoadThatRunsOutKeepsWhatItHas) {
    std::string text;
    for (int n = 0; n < 20; ++n) {
        text += "[s" + std::to_string(n) + "]\n";
        for (int k = 0; k < 8 * n; ++k) // from none to more than any list or index starts with
            text += numbered("k", k) + "=1\n";
        text += "long Line0001=x\nlong Line0002=y\n";
    }
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    ASSERT_EQ(loadText(*file, text), kIniDone);
    memory.failAt(0);
    ASSERT_EQ(loadText(*file, text), kIniDone);
    const int requests = memory.requests();
    EXPECT_GT(requests, 60);
    const std::string whole = listing(*file);

    int failures = 0;
    for (int n = 1; n <= requests; ++n) {
        memory.failAt(n);
        const IniStatus status = loadText(*file, text);
        ASSERT_TRUE(status == -12 || status == kIniDone) << n;
        failures += status == -12;
        // Look-ups and giving back spare room go on without memory; all else is reported.
        if (status == kIniDone) {
            ASSERT_EQ(listing(*file), whole) << n;
        }
        for (std::uint32_t s = 0; s < sectionCount(*file); ++s)
            ASSERT_EQ(sectionAt(*file, static_cast<std::int32_t>(s + 1))->name.view(),
                      numbered("s", s));
    }
    EXPECT_GT(failures, 60);
    memory.failAt(0);
    EXPECT_EQ(loadText(*file, text), kIniDone);
    EXPECT_EQ(listing(*file), whole);
}

// What each refused request of one change comes to. The content is as before, and the same change
// succeeds once there is memory.
std::vector<IniStatus> failEach(std::string_view section, std::string_view key) {
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    EXPECT_EQ(loadText(*file, "[a]\nx=1\n"), kIniDone);
    const std::string before = listing(*file);
    std::vector<IniStatus> results;
    for (int n = 1;; ++n) {
        memory.failAt(n);
        const IniStatus status = setValue(*file, section, key, "new", kNoQuote);
        if (status == kIniStored)
            break;
        results.push_back(status);
        EXPECT_EQ(listing(*file), before) << n;
    }
    EXPECT_NE(listing(*file), before);
    return results;
}

TEST(IniMemory, SettingAValueChangesNothingWhenItFails) {
    EXPECT_EQ(failEach("a", "x"), std::vector<IniStatus>{-12});
    EXPECT_EQ(failEach("a", "y"), (std::vector<IniStatus>{-12, -12, 0}))
        << "name, value, list of keys";
    EXPECT_EQ(failEach("b", "y"), (std::vector<IniStatus>{-12, -12, -12, 0, -12}))
        << "section name, key name, value, list of keys, list of sections";
}

// Hosts keep hundreds of descriptions of half a kilobyte.
TEST(IniMemory, FewRecordsTakeOneKilobyte) {
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    memory.failAbove(1024);
    for (int key = 0; key < 20; ++key)
        ASSERT_EQ(setValue(*file, "a", numbered("key", key), "1", kNoQuote), kIniStored) << key;
}

TEST(IniMemory, RecordsForWhichThereIsNoRoomAreReported) {
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    memory.failAt(1);
    EXPECT_EQ(setValue(*file, "a", "x", "1", kNoQuote), -12) << "no room for the section";
    memory.failAt(0);
    EXPECT_EQ(setValue(*file, "a", "x", "1", kNoQuote), 1);
    // More keys than fit the first room for records, when there is no memory for a second.
    memory.failAbove(1000);
    int stored = 1;
    IniStatus status = kIniStored;
    while (status == kIniStored && stored < 1000) {
        status = setValue(*file, "a", numbered("key", stored), "1", kNoQuote);
        stored += status == kIniStored;
    }
    EXPECT_EQ(status, -12);
    EXPECT_GT(stored, 20);
    EXPECT_EQ(keyCount(*findSection(*file, "a")), static_cast<std::uint32_t>(stored));
    memory.failAbove(SIZE_MAX);
    EXPECT_EQ(setValue(*file, "a", numbered("key", stored), "1", kNoQuote), 1);
}

TEST(IniMemory, RenamingChangesNothingWhenItFails) {
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    ASSERT_EQ(loadText(*file, "[a]\nx=1\n"), kIniDone);
    memory.failAt(1);
    EXPECT_EQ(renameSection(*file, *findSection(*file, "a"), "b"), -12);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
}

TEST(IniMemory, RememberingAFileKeepsTheOldOneWhenItFails) {
    TestMemory memory;
    const IniFileOwner file(createIniFile(memory.memory()));
    ASSERT_EQ(rememberFile(*file, "first", 1), kIniDone);
    memory.failAt(1);
    EXPECT_EQ(rememberFile(*file, "second", 2), -12);
    EXPECT_EQ(file->path.view(), "first");
    EXPECT_EQ(file->lastWriteTime, 1U);
}

TEST(IniMemory, WritingWithoutMemoryTouchesNoFile) {
    TestMemory memory;
    TestFiles files;
    const IniFileOwner file(createIniFile(memory.memory()));
    memory.failAt(1);
    EXPECT_EQ(writeIni(*file, "/nowhere/x.ini", files), -12);
    EXPECT_TRUE(files.calls.empty());
}

} // namespace

// Saving, seeing that the file changed, and saving so that others see it.
#include "tests/pxidrivertools/iniFileFixture.h"

namespace {

using namespace ini;
using Status = tFixedStatus;
using Calls = std::vector<std::string>;

Calls oneSave(std::size_t size) {
    return {"open file.ini rb",
            "close",
            "open file.ini",
            "secure " + std::to_string(size),
            "write",
            "flush",
            "cut " + std::to_string(size),
            "close",
            "time file.ini"};
}

const Calls kOneSave = oneSave(12);

// A clock that stands still for a number of looks.
class SlowFiles : public TestFiles {
public:
    std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept override {
        next("time " + leaf(path));
        return stands-- > 0 ? 1000 : 1001;
    }
    void pause(std::chrono::milliseconds time) noexcept override {
        next("pause " + std::to_string(time.count()));
    }
    int stands = 0;
};

class IniFileSaveTest : public IniFileFixture {
protected:
    bool changed() {
        Status status;
        const bool answer = file.fileChanged(status);
        EXPECT_EQ(status.code, 0);
        return answer;
    }
};

TEST_F(IniFileSaveTest, RewritesTheFileInPlace) {
    open("[a]\nx=1\n;comment\n\ny=\"2\"\n[b]\nz=" + std::string(200, 'v') + "\n");
    set("a", "w", "3");
    files.failAt(0);
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(files.calls, oneSave(content().size()));
    EXPECT_EQ(content(), "[a]\r\nx = 1\r\ny = \"2\"\r\nw = 3\r\n\r\n[b]\r\nz = " +
                             std::string(200, 'v') + "\r\n");
    EXPECT_EQ(folder.fileCount(), 1U);
}

TEST_F(IniFileSaveTest, WhatWasSavedOpensAsItWas) {
    open("[a]\nx=1\ny=\" 2 \"\n[b]\nz=3\n");
    EXPECT_EQ(save(), 0);
    const std::string first = content();
    EXPECT_EQ(codeOf([this](Status& s) { file.open(path().c_str(), 0, s); }), 0);
    EXPECT_EQ(get("a", "y"), " 2 ");
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(content(), first);
}

TEST_F(IniFileSaveTest, EachFailingStepIsReportedAndDeletesTheFile) {
    std::vector<std::int32_t> codes;
    for (std::size_t n = 1; n <= kOneSave.size(); ++n) {
        open("[a]\nx=1\n");
        files.failAt(n);
        codes.push_back(save());
        const bool kept = n <= 4 || n == 9; // before the content is touched, and after it is whole
        EXPECT_EQ(folder.has("file.ini"), kept) << n;
        if (codes.back() != 0 && n != 4) {
            EXPECT_EQ(content(), kept ? "[a]\nx=1\n" : "(no such file)") << n;
        }
        EXPECT_EQ(get("a", "x"), "1") << "the object keeps its content";
    }
    EXPECT_EQ(codes, (std::vector<std::int32_t>{0, 0, -313319, -313319, -313319, -313319, -313319,
                                                -313319, 0}));
}

TEST_F(IniFileSaveTest, TheSystemsReasonComesWithTheStatus) {
    open("[a]\nx=1\n");
    files.failAt(4);
    Status status;
    file.save(status);
    EXPECT_EQ(status.code, -313319);
    EXPECT_EQ(status.systemCode, TestFiles::kFailure);
    Status missing;
    file.open(folder.file("none.ini").c_str(), 0, missing);
    EXPECT_EQ(missing.code, -313316);
    EXPECT_EQ(missing.systemCode, platform::kNotFound);
}

TEST_F(IniFileSaveTest, WhatIsThereAlreadyIsNotWrittenAgain) {
    open("[a]\nx=1\n");
    EXPECT_EQ(save(), 0);
    const auto time = std::filesystem::last_write_time(path()) - std::chrono::hours(1);
    std::filesystem::last_write_time(path(), time);
    files.failAt(0);
    EXPECT_EQ(save(), 0);
    EXPECT_EQ(files.calls, (Calls{"open file.ini rb", "close", "time file.ini"}));
    EXPECT_EQ(std::filesystem::last_write_time(path()), time);
    EXPECT_FALSE(changed());
}

TEST_F(IniFileSaveTest, WithoutMemoryNothingIsWritten) {
    open("[a]\nx=1\n");
    memory.failAt(1);
    EXPECT_EQ(save(), -313319);
    EXPECT_EQ(content(), "[a]\nx=1\n");
}

TEST_F(IniFileSaveTest, TheFileHasChangedWhenItsTimeDiffersOrItIsGone) {
    open("[a]\nx=1\n");
    // Whole seconds are what every library can set.
    const auto time =
        std::chrono::floor<std::chrono::seconds>(std::filesystem::last_write_time(path()));
    std::filesystem::last_write_time(path(), time);
    EXPECT_EQ(codeOf([&](Status& s) { file.open(path().c_str(), 0, s); }), 0);
    EXPECT_FALSE(changed());
    std::filesystem::last_write_time(path(), time + std::chrono::seconds(2));
    EXPECT_TRUE(changed());
    std::filesystem::last_write_time(path(), time - std::chrono::seconds(2));
    EXPECT_TRUE(changed());
    std::filesystem::last_write_time(path(), time);
    EXPECT_FALSE(changed());
    std::filesystem::remove(path());
    EXPECT_TRUE(changed());
    EXPECT_EQ(save(), 0);
    EXPECT_FALSE(changed());
}

TEST_F(IniFileSaveTest, ConfirmSaveIsGivenBackAsItWasSet) {
    Status status;
    EXPECT_EQ(file.getConfirmSave(status), 0);
    for (const unsigned value : {2U, 1U, 128U, 255U}) {
        file.setConfirmSave(static_cast<std::uint8_t>(value), status);
        EXPECT_EQ(file.getConfirmSave(status), value);
    }
    open("[a]\n");
    EXPECT_EQ(file.getConfirmSave(status), 255) << "whatever is open";
    file.setConfirmSave(0, status);
    EXPECT_EQ(file.getConfirmSave(status), 0);
    EXPECT_EQ(status.code, 0);
}

class IniFileConfirmTest : public IniFileFixture {
protected:
    IniFileConfirmTest() {
        folder.write("file.ini", "[a]\nx=1\n");
        Status status;
        slowFile.open(path().c_str(), 0, status);
        slowFile.setConfirmSave(1, status);
        EXPECT_EQ(status.code, 0);
        slow.failAt(0);
    }
    // The recorded time is 1000; this many looks after it see the same.
    std::int32_t saveWhileClockStands(int looks) {
        slow.stands = looks;
        return codeOf([this](Status& s) { slowFile.save(s); });
    }

    SlowFiles slow = [] {
        SlowFiles made;
        made.stands = 1;
        return made;
    }();
    cIniFile slowFile{{memory.memory(), &slow}};
};

TEST_F(IniFileConfirmTest, AChangedTimeNeedsOneWrite) {
    EXPECT_EQ(saveWhileClockStands(0), 0);
    EXPECT_EQ(slow.calls, kOneSave);
}

TEST_F(IniFileConfirmTest, WritesAgainAfterAPauseWhileTheTimeStands) {
    EXPECT_EQ(saveWhileClockStands(2), 0);
    Calls expected;
    for (int n = 0; n < 3; ++n) {
        if (n != 0)
            expected.emplace_back("pause 5");
        expected.insert(expected.end(), kOneSave.begin(), kOneSave.end());
    }
    EXPECT_EQ(slow.calls, expected);
}

TEST_F(IniFileConfirmTest, TheFifthWriteIsTheLast) {
    EXPECT_EQ(saveWhileClockStands(4), 0);
    EXPECT_EQ(std::count(slow.calls.begin(), slow.calls.end(), "write"), 5);
}

TEST_F(IniFileConfirmTest, ATimeThatNeverChangesIsAFailure) {
    EXPECT_EQ(saveWhileClockStands(100), -313319);
    EXPECT_EQ(std::count(slow.calls.begin(), slow.calls.end(), "write"), 5);
    EXPECT_EQ(std::count(slow.calls.begin(), slow.calls.end(), "pause 5"), 4);
    EXPECT_EQ(content(), "[a]\r\nx = 1\r\n") << "the content is there all the same";
}

TEST_F(IniFileConfirmTest, WithoutTheFlagOneWriteIsEnough) {
    Status status;
    slowFile.setConfirmSave(0, status);
    EXPECT_EQ(saveWhileClockStands(100), 0);
    EXPECT_EQ(slow.calls, kOneSave);
}

TEST_F(IniFileConfirmTest, AfterClearingTheTimeOnDiskIsCompared) {
    Status status;
    slowFile.clear(status);
    EXPECT_EQ(saveWhileClockStands(2), 0);
    EXPECT_EQ(slow.calls.front(), "time file.ini");
    EXPECT_EQ(std::count(slow.calls.begin(), slow.calls.end(), "pause 5"), 1);
}

TEST_F(IniFileConfirmTest, TwoSavesInARowBothChangeTheRealTime) {
    open("[a]\nx=1\n");
    Status status;
    file.setConfirmSave(1, status);
    std::optional<platform::FileTime> before = platform::lastWriteTime(path().c_str());
    for (int n = 0; n < 5; ++n) {
        file.save(status);
        ASSERT_EQ(status.code, 0);
        const auto after = platform::lastWriteTime(path().c_str());
        ASSERT_NE(after, before);
        before = after;
    }
}

} // namespace

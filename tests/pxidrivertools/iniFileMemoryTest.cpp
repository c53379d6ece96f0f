// Texts and lists without memory: each request is refused once, reported, and nothing has changed.
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "tests/pxidrivertools/iniFileFixture.h"
#include "tests/support/allocationFaults.h"

namespace {

using namespace ini;
using Status = tFixedStatus;

const std::string kLong(100, 'v'); // beyond what a string holds without memory
const std::wstring kLongWide(100, L'v');

class IniFileTextMemoryTest : public testing::Test {
protected:
    IniFileTextMemoryTest() {
        folder.write("file.ini", "[a]\nx=" + kLong + "," + kLong + "\nn=1,2,3\n[" + kLong + "]\n");
        Status status;
        file.open(path.c_str(), 0, status);
        EXPECT_EQ(status.code, 0);
    }

    std::string value(const std::string& key) {
        Status status;
        std::string text;
        file.getString("a", key, text, status);
        EXPECT_EQ(status.code, 0);
        return text;
    }

    // Refuses each request of the operation once; each refusal must give -52000 and leave the
    // output as it was. Returns how many requests there were.
    template <class Output, class Operation>
    int refuseEach(const Output& untouched, Operation operation) {
        for (std::size_t n = 1;; ++n) {
            Status status;
            Output output = untouched;
            bool refused = false;
            {
                const testsupport::AllocationFault fault(n);
                operation(output, status);
                refused = fault.happened();
            }
            if (!refused) {
                EXPECT_EQ(status.code, 0);
                EXPECT_FALSE(output == untouched);
                return static_cast<int>(n) - 1;
            }
            EXPECT_EQ(status.code, -52000) << "request " << n;
            EXPECT_TRUE(output == untouched) << "request " << n;
            if (status.code != -52000)
                return -1;
        }
    }
    // The same for a change of key x.
    template <class Operation>
    int refuseEachChange(Operation operation) {
        const std::string before = value("x");
        for (std::size_t n = 1;; ++n) {
            Status status;
            bool refused = false;
            {
                const testsupport::AllocationFault fault(n);
                operation(status);
                refused = fault.happened();
            }
            if (!refused) {
                EXPECT_EQ(status.code, 0);
                EXPECT_NE(value("x"), before);
                return static_cast<int>(n) - 1;
            }
            EXPECT_EQ(status.code, -52000) << "request " << n;
            EXPECT_EQ(value("x"), before);
            if (status.code != -52000)
                return -1;
        }
    }

    testsupport::FileFolder folder;
    std::string path = folder.file("file.ini");
    cIniFile file;
};

TEST_F(IniFileTextMemoryTest, Paths) {
    EXPECT_EQ(refuseEach(std::string("-"), [this](auto& out, Status& s) { file.getPath(out, s); }),
              1);
    EXPECT_EQ(
        refuseEach(std::wstring(L"-"), [this](auto& out, Status& s) { file.getPath(out, s); }), 1);
}

TEST_F(IniFileTextMemoryTest, Opening) {
    const std::wstring wide(path.begin(), path.end());
    EXPECT_GE(refuseEach(0,
                         [&](int& opened, Status& s) {
                             file.open(path.c_str(), 0, s);
                             opened = s.code == 0;
                         }),
              2);
    EXPECT_GE(refuseEach(0,
                         [&](int& opened, Status& s) {
                             file.open(wide.c_str(), 0, s);
                             opened = s.code == 0;
                         }),
              4);
}

TEST_F(IniFileTextMemoryTest, SectionNames) {
    EXPECT_GE(refuseEach(std::list<std::string>{"-"},
                         [this](auto& out, Status& s) { file.getSectionNames(out, s); }),
              3);
}

TEST_F(IniFileTextMemoryTest, ReadStrings) {
    EXPECT_GE(refuseEach(std::string("-"),
                         [this](auto& out, Status& s) { file.getString("a", "x", out, s); }),
              3);
    EXPECT_GE(refuseEach(std::wstring(L"-"),
                         [this](auto& out, Status& s) { file.getString("a", "x", out, s); }),
              4);
    EXPECT_EQ(refuseEach(std::string_view("-"),
                         [this](auto& out, Status& s) {
                             tText text;
                             file.getText("a", "x", text, s);
                             if (text.size() != 0)
                                 out = "text";
                         }),
              2)
        << "the text and its count of holders";
}

TEST_F(IniFileTextMemoryTest, ReadLists) {
    EXPECT_GE(refuseEach(std::list<std::string>{"-"},
                         [this](auto& out, Status& s) { file.getStringList("a", "x", out, s); }),
              4);
    EXPECT_GE(
        refuseEach(std::list<std::wstring>{L"-"},
                   [this](auto& out, Status& s) { file.getWideStringList("a", "x", out, s); }),
        8);
    EXPECT_GE(refuseEach(std::list<std::int32_t>{7},
                         [this](auto& out, Status& s) { file.getIntegerList("a", "n", out, s); }),
              6);
}

TEST_F(IniFileTextMemoryTest, StoredTextsAndLists) {
    const std::string text(120, 'w');
    EXPECT_EQ(refuseEachChange([&](Status& s) { file.setString("a", "x", text, s); }), 1);
    const std::list<std::string> strings{kLong, kLong, kLong};
    EXPECT_GE(refuseEachChange([&](Status& s) { file.setStringList("a", "x", strings, s); }), 2);
    const std::list<std::wstring> wide{kLongWide};
    EXPECT_GE(refuseEachChange([&](Status& s) { file.setWideStringList("a", "x", wide, s); }), 4);
    const std::list<std::int32_t> integers(20, 1234567);
    EXPECT_GE(refuseEachChange([&](Status& s) { file.setIntegerList("a", "x", integers, s); }), 2);
}

// The names of temporary files, on the way of the safe write-back.
TEST_F(IniFileTextMemoryTest, WritingBack) {
    const IniFileOwner engine(createIniFile());
    ASSERT_EQ(setValue(*engine, "a", "x", kLong, kNoQuote), kIniStored);
    const std::string before = folder.read("file.ini");
    for (std::size_t n = 1;; ++n) {
        IniStatus status = kIniDone;
        bool refused = false;
        {
            const testsupport::AllocationFault fault(n);
            status = writeIni(*engine, path.c_str());
            refused = fault.happened();
        }
        if (!refused) {
            EXPECT_EQ(status, kIniDone);
            EXPECT_GT(n, 3U);
            return;
        }
        ASSERT_EQ(status, kIniOutOfMemory);
        EXPECT_TRUE(platform::isOutOfMemory(engine->failure));
        ASSERT_EQ(folder.read("file.ini"), before);
        EXPECT_EQ(folder.fileCount(), 1U);
    }
}

} // namespace

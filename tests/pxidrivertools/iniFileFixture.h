// A cIniFile over a file of the test's own, and a status that says what it should.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

class IniFileFixture : public testing::Test {
protected:
    using Status = ini::tFixedStatus;

    // The code that an operation leaves in a fresh status.
    template <class Operation>
    static std::int32_t codeOf(Operation operation) {
        Status status;
        operation(status);
        if (status.code == 0)
            return 0;
        EXPECT_STREQ(status.component, "zotavpci");
        EXPECT_STREQ(status.file, "pxidrivertools\\cIniFile");
        EXPECT_GT(status.line, 0);
        return status.code;
    }

    std::int32_t open(const std::string& content, std::uint32_t flags = 0) {
        folder.write("file.ini", content);
        return codeOf([&](Status& s) { file.open(path().c_str(), flags, s); });
    }
    std::string path() const { return folder.file("file.ini"); }
    std::string content() const { return folder.read("file.ini"); }
    std::int32_t save() {
        return codeOf([this](Status& s) { file.save(s); });
    }

    // The value as text, or the code.
    std::string get(const std::string& section, const std::string& key) {
        std::string value = "untouched";
        const std::int32_t code =
            codeOf([&](Status& s) { file.getString(section, key, value, s); });
        if (code == 0)
            return value;
        EXPECT_EQ(value, "untouched");
        return std::to_string(code);
    }
    std::int32_t set(const std::string& section, const std::string& key, const std::string& value) {
        return codeOf([&](Status& s) { file.setString(section, key, value, s); });
    }

    testsupport::FileFolder folder;
    TestMemory memory;
    TestFiles files;
    ini::cIniFile file{{memory.memory(), &files}};
};

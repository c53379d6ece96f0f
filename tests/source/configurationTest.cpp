// Values of the configuration where it is a text file, and what the error record says of a value
// that cannot be had.
#include "pxidrivertools/configuration.h"

#include "tests/source/support/systemCodes.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using nlohmann::json;
using nZOQUIL000::tErrorStatus;

constexpr const char* kHeader = "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n";

class Configuration : public testing::Test {
protected:
    // The configuration file of this test; "Path" and "ConfigPath" stand below the header.
    void write(const std::string& text) const { (void)folder_.file("tav.conf", text); }

    // The value, which must be there.
    static std::string value(const char* name) {
        tErrorStatus status;
        std::string text = readConfiguration(name, status);
        EXPECT_EQ(status.code, 0) << status.textOrEmpty();
        EXPECT_STREQ(status.textOrEmpty(), "");
        return text;
    }

    // Reads "Path", which must fail with `code`; the record of the failure.
    json recordOf(std::int32_t code) const {
        tErrorStatus status;
        EXPECT_EQ(readConfiguration("Path", status), "");
        EXPECT_EQ(status.code, code);
        json record = json::parse(status.textOrEmpty());
        EXPECT_EQ(record["file"], "pxidrivertools\\registryhelper");
        EXPECT_EQ(record["component"], "zotavpci");
        EXPECT_GT(record["line"], 0);
        EXPECT_EQ(record["configuration"], (json{{"value", "Path"}, {"origin", file_}}));
        EXPECT_EQ(record["internal_error"]["api"], "posix");
        return record;
    }

    testsupport::TemporaryFolder folder_;
    std::string file_ = (folder_.path() / "tav.conf").string();
    testsupport::EnvironmentValue variable_{"TAV_MANAGER_CONF", file_};
};

TEST_F(Configuration, ValuesStandInTheSectionThatIsNamedLikeTheKey) {
    EXPECT_STREQ(kConfigurationKey, "SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion");
    write("[Other]\nPath=wrong\n" + std::string(kHeader) +
          "Path=/opt/tav/\nConfigPath=/var/lib/tav\n[Behind]\nPath=wrong\n");
    EXPECT_EQ(value("Path"), "/opt/tav/");
    EXPECT_EQ(value("ConfigPath"), "/var/lib/tav");
}

TEST_F(Configuration, TheTwoValuesAreCalledPathAndConfigPath) {
    EXPECT_STREQ(kPathValue, "Path");
    EXPECT_STREQ(kConfigPathValue, "ConfigPath");
}

TEST_F(Configuration, QuotesAroundAValueAreStripped) {
    write(kHeader + std::string("Path=\" two words/ \"\nConfigPath=\"\"\n"));
    EXPECT_EQ(value("Path"), " two words/ ");
    EXPECT_EQ(value("ConfigPath"), "");
}

TEST_F(Configuration, NamesAreReadToTheLetter) {
    write(kHeader + std::string("path=other\nPath=this\n"));
    EXPECT_EQ(value("Path"), "this");
    write("[software\\quorvane\\tav manager\\currentversion]\nPath=other\n");
    recordOf(kConfigurationErrNoKey);
}

TEST_F(Configuration, EachReadSeesTheFileAsItIsThen) {
    write(kHeader + std::string("Path=before\n"));
    EXPECT_EQ(value("Path"), "before");
    write(kHeader + std::string("Path=after\n"));
    EXPECT_EQ(value("Path"), "after");
}

TEST_F(Configuration, AMissingFileIsAMissingKey) {
    EXPECT_EQ(kConfigurationErrNoKey, -52003);
    const json record = recordOf(-52003);
    EXPECT_EQ(record["error_constant"], "kConfigurationErrNoKey");
    EXPECT_EQ(record["internal_error"]["code"], 2);
    EXPECT_EQ(record["internal_error"]["string"], "No such file or directory");
}

TEST_F(Configuration, AMissingSectionIsAMissingKey) {
    write("[Other]\nPath=/opt/tav/\n");
    const json record = recordOf(-52003);
    EXPECT_EQ(record["error_constant"], "kConfigurationErrNoKey");
    EXPECT_EQ(record["internal_error"]["code"], 2);
}

TEST_F(Configuration, AMissingValueGivesTheStatusOfTheSystemsError) {
    for (const char* text : {"ConfigPath=/var\n", "Path=\nConfigPath=/var\n", "Other=1\n"}) {
        write(kHeader + std::string(text));
        const json record = recordOf(kNoSuchFile);
        EXPECT_EQ(record["error_constant"], "systemError");
        EXPECT_EQ(record["internal_error"]["code"], 2);
        EXPECT_EQ(record["internal_error"]["string"], "No such file or directory");
    }
}

TEST_F(Configuration, AFileThatCannotBeReadIsAMissingKeyWithTheSystemsReason) {
    std::filesystem::create_directory(file_);
    const json record = recordOf(-52003);
    EXPECT_EQ(record["internal_error"]["code"], 21); // a folder
    EXPECT_EQ(record["internal_error"]["string"], "Is a directory");
}

TEST_F(Configuration, AFileThatMakesNoSenseIsAMissingKey) {
    write(std::string("\xFF\xFE[\0S\0", 6));
    const json record = recordOf(-52003);
    EXPECT_EQ(record["internal_error"]["code"], EBADMSG);
}

TEST_F(Configuration, TheRecordIsWrittenInThisOrderWithoutSpaces) {
    tErrorStatus status;
    readConfiguration("ConfigPath", status);
    const std::string line = std::to_string(json::parse(status.textOrEmpty())["line"].get<int>());
    EXPECT_EQ(status.textOrEmpty(),
              R"({"error_constant":"kConfigurationErrNoKey",)"
              R"("file":"pxidrivertools\\registryhelper","line":)" +
                  line + R"(,"component":"zotavpci","configuration":{"value":"ConfigPath",)" +
                  R"("origin":")" + file_ + R"("},"internal_error":{"api":"posix","code":2,)" +
                  R"("string":"No such file or directory"}})");
}

TEST_F(Configuration, AStatusThatHasFailedBeforeIsLeftAlone) {
    write(kHeader + std::string("Path=/opt/tav/\n"));
    tErrorStatus status;
    status.code = -1;
    EXPECT_EQ(readConfiguration("Path", status), "");
    EXPECT_EQ(status.code, -1);
    EXPECT_STREQ(status.textOrEmpty(), "");
}

TEST_F(Configuration, AWarningDoesNotKeepAValueFromBeingRead) {
    write(kHeader + std::string("Path=/opt/tav/\n"));
    tErrorStatus status;
    status.code = 5;
    EXPECT_EQ(readConfiguration("Path", status), "/opt/tav/");
    EXPECT_EQ(status.code, 5);
}

TEST_F(Configuration, RunningOutOfMemoryIsReportedAndNeverRaised) {
    const std::string path(100, 'p');
    write(kHeader + ("Path=" + path + "\n"));
    std::size_t nth = 1;
    for (;; ++nth) {
        tErrorStatus status;
        std::string text;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            text = readConfiguration("Path", status);
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(text, path);
            break;
        }
        EXPECT_EQ(status.code, -52000) << nth;
        EXPECT_EQ(json::parse(status.textOrEmpty())["error_constant"], "zoquilerr_memoryFull");
        EXPECT_EQ(text, "");
    }
    EXPECT_GT(nth, 1U);
}

TEST_F(Configuration, WithoutMemoryForTheRecordTheCodeIsStillTheRightOne) {
    for (std::size_t nth = 1;; ++nth) {
        tErrorStatus status;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            readConfiguration("Path", status);
            happened = fault.happened();
        }
        EXPECT_EQ(status.code, -52003);
        EXPECT_EQ(json::parse(status.textOrEmpty())["error_constant"], "kConfigurationErrNoKey");
        EXPECT_EQ(json::parse(status.textOrEmpty()).contains("configuration"), !happened);
        if (!happened)
            break;
        ASSERT_LT(nth, 100U);
    }
}

} // namespace

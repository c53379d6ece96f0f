// Configuration values out of a text file.
#include "platform/configurationValue.h"

#include "tests/platform/configurationKey.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <optional>
#include <string>

namespace {

using platform::ConfigurationLookup;
using platform::ConfigurationOutcome;
using platform::ConfigurationValue;
using platform::readConfigurationValue;
using platform::SystemCode;

// What the reader was asked, and what it is to answer.
struct Reader {
    static inline std::string section;
    static inline std::string name;
    static inline std::string content;
    static inline ConfigurationLookup answer;
    static inline std::string text;
    static inline int error;
    static inline int calls;

    static ConfigurationLookup read(std::FILE* stream, const char* askedSection,
                                    const char* askedName, std::string& result) {
        ++calls;
        section = askedSection;
        name = askedName;
        content.clear();
        for (int byte = std::fgetc(stream); byte != EOF; byte = std::fgetc(stream))
            content += static_cast<char>(byte);
        result = text;
        errno = error;
        return answer;
    }
    static ConfigurationLookup raise(std::FILE*, const char*, const char*, std::string&) {
        throw std::bad_alloc();
    }
};

class Configuration : public testing::Test {
protected:
    void SetUp() override {
        Reader::section = Reader::name = Reader::content = "";
        Reader::answer = ConfigurationLookup::found;
        Reader::text = "value";
        Reader::error = 0;
        Reader::calls = 0;
    }
    static ConfigurationValue read() { return readConfigurationValue(kKey, "Path", &Reader::read); }
    void expect(ConfigurationLookup answer, ConfigurationOutcome outcome, int code) {
        Reader::answer = answer;
        const ConfigurationValue value = read();
        EXPECT_EQ(value.outcome, outcome);
        EXPECT_EQ(value.code, static_cast<SystemCode>(code));
        EXPECT_EQ(value.text, "");
        EXPECT_EQ(Reader::calls, 1);
    }

    testsupport::TemporaryFolder folder_;
    std::string file_ = folder_.file("own.conf", "the text\n").string();
    testsupport::EnvironmentValue variable_{"TAV_MANAGER_CONF", file_};
};

TEST_F(Configuration, ComesFromTheFileThatTheEnvironmentNames) {
    const ConfigurationValue value = read();
    EXPECT_EQ(value.outcome, ConfigurationOutcome::found);
    EXPECT_EQ(value.code, 0U);
    EXPECT_EQ(value.text, "value");
    EXPECT_EQ(Reader::content, "the text\n");
    EXPECT_EQ(Reader::section, kKey);
    EXPECT_EQ(Reader::name, "Path");
    EXPECT_EQ(platform::configurationOrigin(kKey), file_);
}

TEST_F(Configuration, WithoutANameInTheEnvironmentItIsTheMachines) {
    variable_.set("");
    EXPECT_EQ(platform::configurationOrigin(kKey), "/etc/tav-manager.conf");
    variable_.set(std::nullopt);
    EXPECT_EQ(platform::configurationOrigin(kKey), "/etc/tav-manager.conf");
}

TEST_F(Configuration, TextEndsAtItsFirstZeroByte) {
    Reader::text = std::string("a\0b", 3);
    EXPECT_EQ(read().text, "a");
}

TEST_F(Configuration, MissingFileIsAMissingKey) {
    variable_.set(file_ + ".missing");
    const ConfigurationValue value = read();
    EXPECT_EQ(value.outcome, ConfigurationOutcome::keyMissing);
    EXPECT_EQ(value.code, static_cast<SystemCode>(ENOENT));
    EXPECT_EQ(Reader::calls, 0);
}

TEST_F(Configuration, MissingSectionIsAMissingKey) {
    expect(ConfigurationLookup::sectionMissing, ConfigurationOutcome::keyMissing, ENOENT);
}

TEST_F(Configuration, MissingValueFailsWithNoSuchFile) {
    Reader::error = EIO;
    expect(ConfigurationLookup::valueMissing, ConfigurationOutcome::valueFailed, 2);
}

TEST_F(Configuration, UnreadableFileIsAMissingKeyWithTheSystemsCode) {
    Reader::error = EISDIR;
    expect(ConfigurationLookup::unreadable, ConfigurationOutcome::keyMissing, EISDIR);
}

TEST_F(Configuration, UnreadableFileWithoutASystemErrorIsMalformedData) {
    expect(ConfigurationLookup::unreadable, ConfigurationOutcome::keyMissing, EBADMSG);
}

TEST_F(Configuration, UnreadableForWantOfMemoryIsOutOfMemory) {
    Reader::error = ENOMEM;
    expect(ConfigurationLookup::unreadable, ConfigurationOutcome::outOfMemory, ENOMEM);
}

TEST_F(Configuration, ReaderOutOfMemoryIsOutOfMemory) {
    expect(ConfigurationLookup::outOfMemory, ConfigurationOutcome::outOfMemory, ENOMEM);
}

TEST_F(Configuration, NoMemoryForTheTextIsOutOfMemory) {
    const ConfigurationValue value = readConfigurationValue(kKey, "Path", &Reader::raise);
    EXPECT_EQ(value.outcome, ConfigurationOutcome::outOfMemory);
    EXPECT_EQ(value.code, static_cast<SystemCode>(ENOMEM));
}

} // namespace

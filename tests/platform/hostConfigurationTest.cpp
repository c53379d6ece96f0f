// A configuration that a host puts in force for itself.
#include "platform/hostConfiguration.h"

#include "platform/busLocation.h"
#include "platform/configurationValue.h"
#include "tests/platform/configurationKey.h"
#include "tests/support/environmentValue.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace {

using platform::ConfigurationLookup;
using platform::HostConfiguration;
using platform::SystemCode;
using testsupport::EnvironmentValue;

constexpr const char* kFileVariable = "TAV_MANAGER_CONF";

std::optional<std::string> variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

ConfigurationLookup readWhole(std::FILE* stream, const char*, const char*, std::string& text) {
    for (int byte = std::fgetc(stream); byte != EOF; byte = std::fgetc(stream))
        text += static_cast<char>(byte);
    return ConfigurationLookup::found;
}

std::string textInForce() {
    return platform::readConfigurationValue(kKey, "Path", &readWhole).text;
}

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

TEST(HostConfiguration, IsTheConfigurationFileWhileItLives) {
    const EnvironmentValue before(kFileVariable, "/nowhere/at/all");
    {
        const HostConfiguration own(kKey, {{"Path", "/opt/a b/"}, {"ConfigPath", ""}});
        ASSERT_EQ(own.code(), 0U);
        const std::string expected = "[SOFTWARE\\Maker\\Product]\nPath=\"/opt/a b/\"\n"
                                     "ConfigPath=\"\"\n";
        EXPECT_EQ(textInForce(), expected);
        EXPECT_EQ(textInForce(), expected) << "a second reader starts at the beginning";
    }
    EXPECT_EQ(variable(kFileVariable), "/nowhere/at/all");
}

TEST(HostConfiguration, LeavesNothingBehind) {
    EnvironmentValue before(kFileVariable, std::nullopt);
    const std::size_t descriptors = openDescriptors();
    { const HostConfiguration own(kKey, {{"Path", "/opt/"}}); }
    EXPECT_EQ(variable(kFileVariable), std::nullopt);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(HostConfiguration, CanBeReplacedByANextOne) {
    const EnvironmentValue before(kFileVariable, std::nullopt);
    { const HostConfiguration first(kKey, {{"Path", "1"}}); }
    const HostConfiguration second(kKey, {{"Path", "2"}});
    EXPECT_EQ(textInForce(), "[SOFTWARE\\Maker\\Product]\nPath=\"2\"\n");
}

TEST(HostConfiguration, LargeValuesArriveWhole) {
    const EnvironmentValue before(kFileVariable, std::nullopt);
    const std::string value(3'000'000, 'v');
    const HostConfiguration own(kKey, {{"Path", value}});
    ASSERT_EQ(own.code(), 0U);
    EXPECT_EQ(textInForce(), "[SOFTWARE\\Maker\\Product]\nPath=\"" + value + "\"\n");
}

TEST(HostConfiguration, RefusesWhatWouldNotBeReadBack) {
    const EnvironmentValue before(kFileVariable, "/nowhere/at/all");
    const auto codeOf = [](const char* key, const HostConfiguration::Values& values) {
        const HostConfiguration own(key, values);
        EXPECT_EQ(variable(kFileVariable), "/nowhere/at/all");
        return own.code();
    };
    constexpr SystemCode kInvalid = EINVAL;
    EXPECT_EQ(codeOf("", {{"Path", "x"}}), kInvalid);
    EXPECT_EQ(codeOf("a]b", {{"Path", "x"}}), kInvalid);
    EXPECT_EQ(codeOf("a\nb", {{"Path", "x"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"", "x"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"a=b", "x"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{";a", "x"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"Path", "x\ny"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"Path", "x\ry"}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"Path", std::string("x\0y", 3)}}), kInvalid);
    EXPECT_EQ(codeOf(kKey, {{"ok", "x"}, {"Path", "x\n"}}), kInvalid);
}

TEST(RecordedBus, IsWhatTheProcessSeesFromNowOn) {
    EnvironmentValue before("TAV_PCI_DUMP", std::nullopt);
    EXPECT_EQ(platform::busLocation(), "/sys");
    EXPECT_EQ(platform::useRecordedBus("/some/machine.dump"), 0U);
    EXPECT_EQ(platform::busLocation(), "/some/machine.dump");
    before.set("");
    EXPECT_EQ(platform::busLocation(), "/sys");
}

TEST(RecordedBus, EmptyNameIsRefusedRatherThanTakenForTheLiveBus) {
    const EnvironmentValue before("TAV_PCI_DUMP", "/before");
    EXPECT_EQ(platform::useRecordedBus(""), static_cast<SystemCode>(ENOENT));
    EXPECT_EQ(platform::busLocation(), "/before");
}

} // namespace

// What a host program puts in force for itself on Windows, where nobody else may: the variables,
// the configuration, the recorded bus; and the words of its command line.
#include "machine/machineDevices.h"
#include "platform/busLocation.h"
#include "platform/configurationValue.h"
#include "platform/hostConfiguration.h"
#include "platform/windows/environmentVariable.h"
#include "platform/windows/hostVariable.h"
#include "pxidrivertools/configuration.h"
#include "quil/tErrorStatus.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/windows/registryTree.h"
#include "tests/support/windows/startProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationKey;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::readConfiguration;
using platform::HostConfiguration;
using testsupport::EnvironmentValue;
using testsupport::runProgram;

const fs::path kDump = fs::path(TAV_SOURCE_DIR) / "samples" / "switchboxes.dump";

std::string inOtherProcess(const std::vector<std::string>& words) {
    const testsupport::ProgramResult result = runProgram(TAV_OTHER_PROCESS, words);
    EXPECT_EQ(result.exitStatus, 0);
    return result.output;
}

std::string inForce(const char* name) {
    nZOQUIL000::tErrorStatus status;
    const std::string text = readConfiguration(name, status);
    return status.failed() ? std::to_string(status.code) : text;
}

std::vector<fs::path> temporaryFiles() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path())) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    return files;
}

TEST(WindowsEnvironment, VariablesAreReadAndWrittenInUtf8) {
    constexpr const wchar_t* kName = L"TAV_TEST_VARIABLE";
    SetEnvironmentVariableW(kName, nullptr);
    EXPECT_EQ(platform::environmentVariable(kName), std::nullopt);
    const std::string text = "a \xE6\x97\xA5 \xF0\x9D\x84\x9E";
    EXPECT_EQ(platform::setEnvironmentVariable(kName, text), 0U);
    EXPECT_EQ(platform::environmentVariable(kName), text);
    wchar_t wide[16] = {};
    EXPECT_EQ(GetEnvironmentVariableW(kName, wide, 16), 6U);
    EXPECT_EQ(std::wstring(wide), L"a \u65E5 \U0001D11E");

    const std::string longText(20000, 'x');
    EXPECT_EQ(platform::setEnvironmentVariable(kName, longText), 0U);
    EXPECT_EQ(platform::environmentVariable(kName), longText);

    EXPECT_EQ(platform::setEnvironmentVariable(kName, "\xFF"),
              platform::SystemCode{ERROR_NO_UNICODE_TRANSLATION});
    EXPECT_EQ(platform::environmentVariable(kName), longText) << "what was there stays";
    SetEnvironmentVariableW(kName, L"half \xD800");
    EXPECT_EQ(platform::environmentVariable(kName), std::nullopt);
    SetEnvironmentVariableW(kName, L"");
    EXPECT_EQ(platform::environmentVariable(kName), std::nullopt);
    SetEnvironmentVariableW(kName, nullptr);
}

TEST(WindowsHostVariable, IsThisProcessesAlone) {
    constexpr const wchar_t* kName = L"TAV_TEST_HOST";
    EXPECT_EQ(platform::hostVariable(kName), std::nullopt);
    EXPECT_EQ(platform::setHostVariable(kName, "own"), 0U);
    EXPECT_EQ(platform::hostVariable(kName), "own");
    platform::clearHostVariable(kName);
    EXPECT_EQ(platform::hostVariable(kName), std::nullopt);
    // A variable of the bare name, such as anybody may set, is not one.
    const EnvironmentValue bare("TAV_TEST_HOST", "somebody's");
    EXPECT_EQ(platform::hostVariable(kName), std::nullopt);
}

TEST(WindowsHostConfiguration, TakesTheRegistrysPlaceWhileItLives) {
    const testsupport::RegistryTree machine(kConfigurationKey, KEY_WOW64_32KEY);
    machine.set("", "Path", REG_SZ, "C:\\machine\\");
    const std::vector<fs::path> files = temporaryFiles();
    {
        const HostConfiguration own(kConfigurationKey,
                                    {{"Path", "C:\\own \xC3\xA4\\"}, {"ConfigPath", ""}});
        ASSERT_EQ(own.code(), 0U);
        EXPECT_EQ(inForce("Path"), "C:\\own \xC3\xA4\\");
        EXPECT_EQ(inForce("ConfigPath"), "");
        EXPECT_EQ(temporaryFiles().size(), files.size() + 1);
        EXPECT_NE(platform::configurationOrigin(kConfigurationKey).find("\\tav"),
                  std::string::npos);
    }
    EXPECT_EQ(inForce("Path"), "C:\\machine\\");
    EXPECT_EQ(temporaryFiles(), files) << "nothing is left behind";
}

TEST(WindowsHostConfiguration, DoesNotReachTheProgramsThatThisOneStarts) {
    const testsupport::RegistryTree machine(kConfigurationKey, KEY_WOW64_32KEY);
    machine.set("", "Path", REG_SZ, "C:\\machine\\");
    const HostConfiguration own(kConfigurationKey, {{"Path", "C:\\own\\"}});
    EXPECT_EQ(inForce("Path"), "C:\\own\\");
    EXPECT_EQ(inOtherProcess({"configuration", "Path"}), "0 C:\\machine\\");
}

TEST(WindowsHostConfiguration, AVariableOfTheEnvironmentDoesNotCount) {
    const testsupport::TemporaryFolder folder;
    const std::string file =
        folder.file("tav.conf", std::string("[") + kConfigurationKey + "]\nPath=C:\\foreign\\\n")
            .string();
    const EnvironmentValue variable("TAV_MANAGER_CONF", file);
    const EnvironmentValue functions("TAV_PCI_FUNCTIONS", kDump.string());
    EXPECT_EQ(inForce("Path"), "-52003");
    EXPECT_EQ(inOtherProcess({"configuration", "Path"}), "-52003 ");
    EXPECT_EQ(inOtherProcess({"bus"}), "(none) (system)");
}

TEST(WindowsHostConfiguration, CanBeReplacedByANextOne) {
    { const HostConfiguration first(kConfigurationKey, {{"Path", "1"}}); }
    const HostConfiguration second(kConfigurationKey, {{"Path", "2"}});
    EXPECT_EQ(inForce("Path"), "2");
    EXPECT_EQ(inForce("Other"), std::to_string(static_cast<std::int32_t>(0x80070002)));
}

TEST(WindowsHostConfiguration, WhatCannotBeWrittenAsTextIsRefused) {
    const std::vector<fs::path> files = temporaryFiles();
    const HostConfiguration own(kConfigurationKey, {{"Path", "two\nlines"}});
    EXPECT_EQ(own.code(), platform::SystemCode{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(inForce("Path"), "-52003");
    EXPECT_EQ(temporaryFiles(), files);
}

TEST(WindowsRecordedBus, StandsForTheSystemsDevicesInThisProcessOnly) {
    const EnvironmentValue before("TAV_PCI_DUMP", std::nullopt);
    EXPECT_EQ(platform::useRecordedBus(""), platform::SystemCode{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(platform::busLocation(), std::nullopt);
    ASSERT_EQ(platform::useRecordedBus(kDump.string()), 0U);
    EXPECT_EQ(platform::busLocation(), kDump.string());
    EXPECT_EQ(platform::makeSystemDevices(), nullptr);
    const auto devices = machine::makePciDevices();
    ASSERT_EQ(devices->open(), 0U);
    ASSERT_TRUE(devices->has(0));
    EXPECT_EQ(devices->readProperty(0, "busType").value, 0x20706369U);
    // The bridge library may be told by anybody; the list of devices only by the process itself.
    EXPECT_EQ(inOtherProcess({"bus"}), kDump.string() + " (system)");
    platform::clearHostVariable(platform::kHostPciFunctions);
}

TEST(WindowsCommandLine, EveryCharacterReachesTheProgram) {
    EXPECT_EQ(inOtherProcess({"arguments", "plain", "", "two words", "\"quoted\"", "end\\",
                              "a\\\"b", "*.ini"}),
              "[plain]\n[]\n[two words]\n[\"quoted\"]\n[end\\]\n[a\\\"b]\n[*.ini]\n");
}

// Starts a program with a line that the code page cannot carry, its output in a file.
std::string outputOf(const std::wstring& line, const fs::path& file) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE output = CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = output;
    PROCESS_INFORMATION process = {};
    const DWORD code = testsupport::startProcess(nullptr, line, start, process);
    CloseHandle(output);
    EXPECT_EQ(code, static_cast<DWORD>(ERROR_SUCCESS));
    if (code != ERROR_SUCCESS)
        return {};
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return testsupport::fileTextIfAny(file);
}

TEST(WindowsCommandLine, CharactersOutsideTheCodePageReachTheProgram) {
    const testsupport::TemporaryFolder folder;
    const std::wstring program = fs::path(TAV_OTHER_PROCESS).wstring();
    EXPECT_EQ(outputOf(L"\"" + program + L"\" arguments \u65E5\u672C \U0001D11E \u00E4",
                       folder.path() / "output"),
              "[\xE6\x97\xA5\xE6\x9C\xAC]\n[\xF0\x9D\x84\x9E]\n[\xC3\xA4]\n");
}

TEST(WindowsCommandLine, TheToolWorksOnFilesOutsideTheCodePage) {
    const testsupport::TemporaryFolder folder;
    const fs::path strange = folder.path() / L"\u65E5\u672C";
    fs::create_directories(folder.path() / "state");
    fs::create_directories(strange);
    fs::copy_file(kDump, strange / L"\u03A9.dump");
    fs::copy(fs::path(TAV_SOURCE_DIR) / "descriptions", strange / "descriptions",
             fs::copy_options::recursive);
    const auto quoted = [](const fs::path& path) { return L"\"" + path.wstring() + L"\""; };
    const auto list = [&](const fs::path& dump, const fs::path& descriptions) {
        return outputOf(quoted(fs::path(TAVCTL_FILE)) + L" list --json --dump " + quoted(dump) +
                            L" --descriptions " + quoted(descriptions) + L" --state " +
                            quoted(folder.path() / "state"),
                        folder.path() / "output");
    };
    const std::string expected = list(kDump, fs::path(TAV_SOURCE_DIR) / "descriptions");
    EXPECT_NE(expected.find("\"name\":\"TAV1\""), std::string::npos) << expected;
    EXPECT_EQ(list(strange / L"\u03A9.dump", strange / "descriptions"), expected);
}

} // namespace

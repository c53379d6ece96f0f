// Folders and messages outside ASCII, where the process's code page is not UTF-8: what a host gets,
// and that tavctl gets and says the same.
#include "platform/systemCode.h"
#include "platform/text.h"
#include "platform/windows/systemMessage.h"
#include "pxidrivertools/configuration.h"
#include "source/cPciTavFilesystem.h"
#include "tests/source/support/raised.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/windows/registryTree.h"
#include "tests/windows/importedFunction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <cwchar>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::kConfigurationKey;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testsupport::ProgramResult;
using testsupport::runProgram;
using testwindows::ImportedFunction;

std::string inUtf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string inCodePage(const fs::path& path) {
    const std::wstring wide = path.wstring();
    std::string text(4 * wide.size(), '\0');
    const int length =
        WideCharToMultiByte(CP_ACP, 0, wide.c_str(), static_cast<int>(wide.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// A machine whose registry names a folder with a letter that the code page has.
class WindowsCodePage : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(GetACP(), static_cast<UINT>(CP_UTF8)) << "hosts of this system have no such page";
        fs::create_directories(strange_);
        fs::copy(fs::path(TAV_SOURCE_DIR) / "descriptions", strange_, fs::copy_options::recursive);
    }

    void configure(const fs::path& path, const fs::path& configPath) const {
        registry_.set("", "Path", REG_SZ, inCodePage(path / "") + '\0');
        registry_.set("", "ConfigPath", REG_SZ, inCodePage(configPath / "") + '\0');
    }

    static ProgramResult tavctl(const std::vector<std::string>& words) {
        return runProgram(TAVCTL_FILE, words);
    }

    testsupport::TemporaryFolder folder_;
    fs::path strange_ = fs::path(folder_.path()).make_preferred() / L"K\u00E4se";
    testsupport::RegistryTree registry_{kConfigurationKey, KEY_WOW64_32KEY};
    testsupport::EnvironmentValue bus_{"TAV_PCI_DUMP",
                                       std::string(TAV_SOURCE_DIR) + "/samples/switchboxes.dump"};
};

TEST_F(WindowsCodePage, TheToolFailsWhereAHostFailsAndSaysWhy) {
    configure(strange_, folder_.path());
    cPciTavFilesystem host;
    std::vector<std::string> files;
    const std::string pattern = host.GetDescriptionFilePattern();
    const auto raised = testsupport::raisedBy([&] { host.ListFiles(pattern, files); });
    ASSERT_EQ(raised.code, -313325);

    for (const char* command : {"list", "tree", "explain", "lint"}) {
        const ProgramResult result = tavctl({command});
        EXPECT_EQ(result.exitStatus, 3) << command;
        EXPECT_THAT(result.error,
                    HasSubstr("list descriptions (" + inUtf8(strange_) +
                              "\\PCI Hardware Descriptions\\*.ini): a host gets this name in code "
                              "page " +
                              std::to_string(GetACP()) + ", and the plug-in lists folders whose"))
            << command;
        EXPECT_THAT(result.error, HasSubstr("-313325")) << command;
    }
    // Named on the command line it needs no code page.
    EXPECT_EQ(tavctl({"lint", "--descriptions", inUtf8(strange_)}).exitStatus, 0);
}

TEST_F(WindowsCodePage, TheToolFindsTheNamesThatAHostStoresThere) {
    configure(fs::path(TAV_SOURCE_DIR) / "descriptions", strange_);
    cPciTavFilesystem host;
    ASSERT_EQ(host.EnsureFileExists(host.GetConfigPath() + "zotavpci.loc"), 0);
    EXPECT_TRUE(fs::exists(strange_ / "zotavpci.loc"));
    const fs::path stored = folder_.file("names", "[MR00:20]\r\nModel=M\r\nTerminalName=TAV7\r\n");
    fs::copy_file(stored, strange_ / "zotavpci.ini");
    const ProgramResult result = tavctl({"names", "list"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_THAT(result.output, HasSubstr("TAV7"));
}

TEST_F(WindowsCodePage, TheVariableForBridgesAloneIsTold) {
    configure(fs::path(TAV_SOURCE_DIR) / "descriptions", folder_.path());
    constexpr const char* kTold = "tavctl: TAV_PCI_DUMP stands for the bridges alone";
    EXPECT_THAT(tavctl({"list"}).error, HasSubstr(kTold));
    const ProgramResult both =
        tavctl({"list", "--dump", std::string(TAV_SOURCE_DIR) + "/samples/switchboxes.dump"});
    EXPECT_EQ(both.exitStatus, 0) << both.error;
    EXPECT_THAT(both.error, Not(HasSubstr(kTold)));
}

TEST_F(WindowsCodePage, WhoMayNotWriteLooksAllTheSame) {
    configure(fs::path(TAV_SOURCE_DIR) / "descriptions", strange_);
    const std::string dump = std::string(TAV_SOURCE_DIR) + "/samples/switchboxes.dump";
    const std::vector<std::string> told = {"--dump", dump, "--state", inUtf8(strange_)};
    const auto with = [&](std::vector<std::string> words) {
        words.insert(words.end(), told.begin(), told.end());
        return tavctl(words);
    };
    ASSERT_EQ(with({"list"}).exitStatus, 0);
    const fs::path files[] = {strange_ / "zotavpci.ini", strange_ / "zotavpci.loc"};
    const std::string names = testsupport::fileText(files[0]);
    for (const fs::path& file : files)
        ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
    for (const std::vector<std::string>& words : {std::vector<std::string>{"names", "list"},
                                                  {"names", "check"},
                                                  {"list"},
                                                  {"tree"},
                                                  {"explain"},
                                                  {"draw", "--format", "dot"}}) {
        const ProgramResult result = with(words);
        EXPECT_EQ(result.exitStatus, 0) << words.back() << ": " << result.error;
        if (words.front() == "list") {
            EXPECT_THAT(result.error, HasSubstr("tavctl: nothing is stored (" + inUtf8(strange_)));
            EXPECT_THAT(result.output, HasSubstr("TAV1 "));
        }
    }
    EXPECT_EQ(testsupport::fileText(files[0]), names);
    for (const fs::path& file : files)
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(WindowsReadableText, ComesOutOfTheCodePageUnlessItIsUtf8) {
    EXPECT_EQ(platform::readableText("plain"), "plain");
    EXPECT_EQ(platform::readableText("K\xC3\xA4se"), "K\xC3\xA4se");
    EXPECT_EQ(platform::readableText(inCodePage(L"K\u00E4se")), "K\xC3\xA4se");
    EXPECT_EQ(platform::narrowCharacterSet(), "code page " + std::to_string(GetACP()));
}

// A system that speaks with letters outside ASCII.
struct Speaker {
    static DWORD WINAPI wide(DWORD flags, LPCVOID, DWORD code, DWORD language, LPWSTR buffer, DWORD,
                             va_list*) {
        EXPECT_EQ(flags, 0x1300U);
        EXPECT_EQ(language, 0x400U);
        if (code != ERROR_ACCESS_DENIED)
            return 0;
        const std::wstring words = L"\u00C4rger \u65E5.\r\n";
        auto* const text = static_cast<wchar_t*>(LocalAlloc(0, (words.size() + 1) * 2));
        std::wmemcpy(text, words.c_str(), words.size() + 1);
        std::memcpy(static_cast<void*>(buffer), &text, sizeof text);
        return static_cast<DWORD>(words.size());
    }
    static DWORD WINAPI narrow(DWORD, LPCVOID, DWORD, DWORD, LPSTR buffer, DWORD, va_list*) {
        const std::string words = inCodePage(L"\u00C4rger.\r\n");
        auto* const text = static_cast<char*>(LocalAlloc(0, words.size() + 1));
        std::memcpy(text, words.c_str(), words.size() + 1);
        std::memcpy(static_cast<void*>(buffer), &text, sizeof text);
        return static_cast<DWORD>(words.size());
    }

    ImportedFunction wide_{"FormatMessageW", reinterpret_cast<void*>(&wide)};
    ImportedFunction narrow_{"FormatMessageA", reinterpret_cast<void*>(&narrow)};
};

TEST(WindowsSystemMessage, LosesNoLetter) {
    const Speaker speaker;
    EXPECT_EQ(platform::systemMessage(ERROR_ACCESS_DENIED), "\xC3\x84rger \xE6\x97\xA5.");
    EXPECT_EQ(platform::systemMessage(ERROR_DISK_FULL), "system error 112");
    EXPECT_EQ(platform::rawSystemMessage(ERROR_ACCESS_DENIED), "\xC3\x84rger.\r\n");
}

} // namespace

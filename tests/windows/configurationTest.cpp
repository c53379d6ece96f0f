// The machine's configuration in the 32-bit view of the registry, with values stored in every way.
#include "pxidrivertools/configuration.h"

#include "source/cPciTavFilesystem.h"
#include "tests/source/support/raised.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/windows/registryTree.h"
#include "tests/windows/importedFunction.h"
#include "tests/windows/systemText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::kConfigurationKey;
using testing::ElementsAre;
using testsupport::Raised;
using testsupport::raisedBy;
using testsupport::RegistryTree;
using testwindows::ImportedFunction;

constexpr const char* kSource = "pxidrivertools\\registryhelper";
constexpr const char* kOrigin =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion (32-bit view)";
constexpr std::int32_t kNoSuchFile = static_cast<std::int32_t>(0x80070002);

nlohmann::json internalError(DWORD code) {
    return {{"api", "win32"}, {"code", code}, {"string", testwindows::systemLine(code)}};
}

class WindowsConfiguration : public testing::Test {
protected:
    void SetUp() override {
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kConfigurationKey, 0,
                                KEY_READ | KEY_WOW64_32KEY, &key),
                  ERROR_FILE_NOT_FOUND)
            << "this machine has a configuration already";
    }
    RegistryTree& machine() {
        if (!machine_)
            machine_.emplace(kConfigurationKey, KEY_WOW64_32KEY);
        return *machine_;
    }
    // What "ConfigPath" reads as when it is stored so.
    std::string read(DWORD type, const std::string& bytes) {
        machine().set("", "ConfigPath", type, bytes);
        return filesystem_.GetConfigPath();
    }

    cPciTavFilesystem filesystem_;

private:
    std::optional<RegistryTree> machine_;
};

TEST_F(WindowsConfiguration, BothValuesComeFromThe32BitView) {
    machine().set("", "Path", REG_SZ, std::string("C:\\tav\\\0", 8));
    machine().set("", "ConfigPath", REG_SZ, std::string("C:\\state\\\0", 10));
    EXPECT_EQ(filesystem_.GetDescriptionFilePattern(), "C:\\tav\\PCI Hardware Descriptions\\*.ini");
    EXPECT_EQ(filesystem_.GetConfigPath(), "C:\\state\\");
}

TEST_F(WindowsConfiguration, NoSeparatorIsAddedToThePath) {
    machine().set("", "Path", REG_SZ, std::string("C:\\tav\0", 7));
    EXPECT_EQ(filesystem_.GetDescriptionFilePattern(), "C:\\tavPCI Hardware Descriptions\\*.ini");
}

TEST_F(WindowsConfiguration, TheOtherViewDoesNotCount) {
    const RegistryTree other(kConfigurationKey, KEY_WOW64_64KEY);
    other.set("", "ConfigPath", REG_SZ, std::string("C:\\64\\\0", 7));
    EXPECT_EQ(raisedBy([&] { filesystem_.GetConfigPath(); }).code, -52003);
    EXPECT_EQ(read(REG_SZ, std::string("C:\\32\\\0", 7)), "C:\\32\\");
}

TEST_F(WindowsConfiguration, The32BitViewIsBelowItsNodeFor64BitPrograms) {
    machine();
    const RegistryTree node("SOFTWARE\\WOW6432Node\\Quorvane\\TAV Manager\\CurrentVersion",
                            KEY_WOW64_64KEY);
    node.set("", "ConfigPath", REG_SZ, std::string("C:\\node\\\0", 9));
    EXPECT_EQ(filesystem_.GetConfigPath(), "C:\\node\\");
}

TEST_F(WindowsConfiguration, ATextNeedsNoTerminatingZero) {
    EXPECT_EQ(read(REG_SZ, "C:\\state\\"), "C:\\state\\");
    EXPECT_EQ(read(REG_SZ, std::string("C:\\state\\\0", 10)), "C:\\state\\");
    EXPECT_EQ(read(REG_EXPAND_SZ, "C:\\state\\"), "C:\\state\\");
    EXPECT_EQ(read(REG_SZ, std::string("C:\\state\\\0more\0", 15)), "C:\\state\\");
}

TEST_F(WindowsConfiguration, VariablesInATextAreNotExpanded) {
    EXPECT_EQ(read(REG_EXPAND_SZ, std::string("%SystemRoot%\\tav\\\0", 18)), "%SystemRoot%\\tav\\");
}

TEST_F(WindowsConfiguration, AListOfTextsReadsAsItsFirst) {
    EXPECT_EQ(read(REG_MULTI_SZ, "C:\\a\\"), "C:\\a\\");
    EXPECT_EQ(read(REG_MULTI_SZ, std::string("C:\\a\\\0", 6)), "C:\\a\\");
    EXPECT_EQ(read(REG_MULTI_SZ, std::string("C:\\a\\\0\0", 7)), "C:\\a\\");
    EXPECT_EQ(read(REG_MULTI_SZ, std::string("C:\\a\\\0D:\\b\\\0\0", 13)), "C:\\a\\");
    EXPECT_EQ(read(REG_MULTI_SZ, std::string("\0", 1)), "");
}

TEST_F(WindowsConfiguration, OtherTypesAreTakenAsTheirBytes) {
    EXPECT_EQ(read(REG_BINARY, "C:\\raw\\"), "C:\\raw\\");
    EXPECT_EQ(read(REG_BINARY, std::string("C:\\raw\\\0rest", 12)), "C:\\raw\\");
    EXPECT_EQ(read(REG_DWORD, "DWOR"), "DWOR");
    EXPECT_EQ(read(REG_DWORD, std::string("C:\0\0", 4)), "C:");
    EXPECT_EQ(read(REG_NONE, "C:\\"), "C:\\");
}

TEST_F(WindowsConfiguration, AnEmptyValueIsAnEmptyText) {
    EXPECT_EQ(read(REG_SZ, ""), "");
    EXPECT_EQ(read(REG_SZ, std::string("\0", 1)), "");
    EXPECT_EQ(read(REG_MULTI_SZ, ""), "");
    EXPECT_EQ(read(REG_BINARY, ""), "");
}

TEST_F(WindowsConfiguration, ALongValueIsReadWhole) {
    const std::string path = "C:\\" + std::string(5000, 'x') + "\\";
    EXPECT_EQ(read(REG_SZ, path), path);
}

TEST_F(WindowsConfiguration, WithoutTheKeyBothPathsRaise) {
    for (const bool pattern : {true, false}) {
        const Raised raised = raisedBy([&] {
            pattern ? filesystem_.GetDescriptionFilePattern() : filesystem_.GetConfigPath();
        });
        EXPECT_EQ(raised.code, -52003);
        EXPECT_TRUE(raised.hasSite(kSource, "kConfigurationErrNoKey"));
        EXPECT_EQ(
            raised.record["configuration"],
            (nlohmann::json{{"value", pattern ? "Path" : "ConfigPath"}, {"origin", kOrigin}}));
        EXPECT_EQ(raised.record["internal_error"], internalError(ERROR_FILE_NOT_FOUND));
    }
}

TEST_F(WindowsConfiguration, AMissingValueRaisesTheSystemsError) {
    machine().set("", "Other", REG_SZ, "1");
    for (const bool pattern : {true, false}) {
        const Raised raised = raisedBy([&] {
            pattern ? filesystem_.GetDescriptionFilePattern() : filesystem_.GetConfigPath();
        });
        EXPECT_EQ(raised.code, kNoSuchFile);
        EXPECT_TRUE(raised.hasSite(kSource, "systemError"));
        EXPECT_EQ(
            raised.record["configuration"],
            (nlohmann::json{{"value", pattern ? "Path" : "ConfigPath"}, {"origin", kOrigin}}));
        EXPECT_EQ(raised.record["internal_error"], internalError(ERROR_FILE_NOT_FOUND));
    }
}

TEST_F(WindowsConfiguration, WithoutMemoryForTheTextIsOutOfMemory) {
    const std::string path(500, 'x');
    machine().set("", "ConfigPath", REG_SZ, path);
    std::size_t faults = 0;
    for (std::size_t nth = 1;; ++nth) {
        nZOQUIL000::tErrorStatus status;
        std::string text;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            text = nZoPxiDriverTools_1_0::readConfiguration("ConfigPath", status);
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(text, path);
            break;
        }
        EXPECT_EQ(status.code, -52000);
        EXPECT_EQ(text, "");
        ++faults;
    }
    EXPECT_GE(faults, 1U);
}

// The calls that reading a value makes, and what they answer.
struct RegistryCalls {
    static inline std::vector<std::string> made;
    static inline LSTATUS openAnswer = ERROR_SUCCESS;
    static inline LSTATUS secondQueryAnswer = ERROR_SUCCESS;

    static LSTATUS WINAPI open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
        made.push_back("open " + std::string(root == HKEY_LOCAL_MACHINE ? "machine " : "other ") +
                       path + " " + std::to_string(options) + " " + std::to_string(access));
        *key = reinterpret_cast<HKEY>(std::uintptr_t{0x1234});
        return openAnswer;
    }
    static LSTATUS WINAPI query(HKEY, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data,
                                LPDWORD size) {
        made.push_back(std::string(data == nullptr ? "size of " : "read ") + name);
        *size = 4;
        if (data == nullptr)
            return ERROR_SUCCESS;
        std::memcpy(data, "C:\\\0", 4);
        *type = REG_SZ;
        return secondQueryAnswer;
    }
    static LSTATUS WINAPI close(HKEY key) {
        made.emplace_back(key == reinterpret_cast<HKEY>(std::uintptr_t{0x1234}) ? "close"
                                                                                : "close other");
        return ERROR_SUCCESS;
    }

    RegistryCalls() {
        made.clear();
        openAnswer = secondQueryAnswer = ERROR_SUCCESS;
    }

private:
    ImportedFunction open_{"RegOpenKeyExA", reinterpret_cast<void*>(&open)};
    ImportedFunction query_{"RegQueryValueExA", reinterpret_cast<void*>(&query)};
    ImportedFunction close_{"RegCloseKey", reinterpret_cast<void*>(&close)};
};

constexpr const char* kOpenCall =
    "open machine SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion 0 131609"; // 0x20219

TEST(WindowsConfigurationCalls, AskForTheSizeFirstWithTheDocumentedAccess) {
    static_assert(131609 == 0x20219);
    cPciTavFilesystem filesystem;
    const RegistryCalls calls;
    EXPECT_EQ(filesystem.GetConfigPath(), "C:\\");
    EXPECT_THAT(RegistryCalls::made,
                ElementsAre(kOpenCall, "size of ConfigPath", "read ConfigPath", "close"));
}

TEST(WindowsConfigurationCalls, AnyErrorOfOpeningTheKeyIsAMissingKey) {
    cPciTavFilesystem filesystem;
    const RegistryCalls calls;
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED}) {
        RegistryCalls::made.clear();
        RegistryCalls::openAnswer = static_cast<LSTATUS>(code);
        const Raised raised = raisedBy([&] { filesystem.GetConfigPath(); });
        EXPECT_EQ(raised.code, -52003);
        EXPECT_EQ(raised.record["internal_error"], internalError(code));
        EXPECT_EQ(RegistryCalls::made.at(0), kOpenCall);
    }
}

TEST(WindowsConfigurationCalls, AFailedReadRaisesItsErrorAndClosesTheKey) {
    cPciTavFilesystem filesystem;
    const RegistryCalls calls;
    RegistryCalls::secondQueryAnswer = ERROR_ACCESS_DENIED;
    const Raised denied = raisedBy([&] { filesystem.GetConfigPath(); });
    EXPECT_EQ(denied.code, static_cast<std::int32_t>(0x80070005));
    EXPECT_EQ(denied.record["internal_error"], internalError(ERROR_ACCESS_DENIED));
    EXPECT_THAT(RegistryCalls::made,
                ElementsAre(kOpenCall, "size of ConfigPath", "read ConfigPath", "close"));
    for (const DWORD code : {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY}) {
        RegistryCalls::secondQueryAnswer = static_cast<LSTATUS>(code);
        EXPECT_EQ(raisedBy([&] { filesystem.GetConfigPath(); }).code, -52000);
    }
}

} // namespace

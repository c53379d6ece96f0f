// The product's own files as the system's loader meets them.
#include "tests/windows/peFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <imagehlp.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;
using testwindows::PeFile;
using testwindows::readPeFile;

constexpr bool kIs64 = sizeof(void*) == 8;

struct ProductFile {
    const char* path;
    const char* name;
    const char* description;
};

class ProductFiles : public testing::TestWithParam<ProductFile> {};

// All of them come with every Windows that there is.
const std::set<std::string> kSystemLibraries = {"advapi32.dll", "cfgmgr32.dll", "kernel32.dll",
                                                "msvcrt.dll",   "setupapi.dll", "shell32.dll",
                                                "user32.dll"};

TEST_P(ProductFiles, ImportFromSystemLibrariesOnly) {
    const PeFile file = readPeFile(GetParam().path);
    EXPECT_THAT(file.imports, Not(IsEmpty()));
    for (const auto& [library, functions] : file.imports) {
        EXPECT_TRUE(kSystemLibraries.contains(library)) << library;
        EXPECT_THAT(functions, Not(IsEmpty())) << library;
    }
}

TEST_P(ProductFiles, AreOfThisTarget) {
    const PeFile file = readPeFile(GetParam().path);
    EXPECT_EQ(file.machine, kIs64 ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386);
    EXPECT_EQ((file.characteristics & IMAGE_FILE_32BIT_MACHINE) != 0, !kIs64);
}

TEST_P(ProductFiles, AreLoadedAtRandomAddressesAndDoNotRunData) {
    const PeFile file = readPeFile(GetParam().path);
    EXPECT_TRUE(file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    constexpr WORD kHighEntropy = 0x20;
    EXPECT_EQ((file.dllCharacteristics & kHighEntropy) != 0, kIs64);
    // Without these the addresses could not be random, whatever the flags say.
    EXPECT_GT(file.relocationBytes, 8U);
    EXPECT_FALSE(file.characteristics & IMAGE_FILE_RELOCS_STRIPPED);
}

// On x86 a handler of exceptions stands on the stack, where an overflow reaches it: with this mark
// the loader calls none that is inside the file. marksTest.sh looks for what would register one. On
// x64 they stand in tables that cannot be written, and the mark has no meaning.
TEST_P(ProductFiles, HaveNoHandlersOnTheStack) {
    const PeFile file = readPeFile(GetParam().path);
    EXPECT_EQ((file.dllCharacteristics & IMAGE_DLLCHARACTERISTICS_NO_SEH) != 0, !kIs64);
}

// It writes no files of everybody's, so a server of many users need not watch it. Libraries have no
// such mark.
TEST(Tables, TheToolIsFitForServersOfManyUsers) {
    EXPECT_TRUE(readPeFile(TAVCTL_FILE).dllCharacteristics &
                IMAGE_DLLCHARACTERISTICS_TERMINAL_SERVER_AWARE);
}

// What GCC and its linker cannot do is not announced either: no checks of indirect calls, and no
// table that would list where these may lead.
TEST_P(ProductFiles, AnnounceNoChecksThatTheyDoNotHave) {
    const PeFile file = readPeFile(GetParam().path);
    constexpr WORD kGuardedCalls = 0x4000;
    EXPECT_FALSE(file.dllCharacteristics & kGuardedCalls);
    EXPECT_EQ(file.loadConfigurationBytes, 0U);
}

TEST_P(ProductFiles, DoNotSayWhenTheyWereMade) {
    const PeFile file = readPeFile(GetParam().path);
    EXPECT_EQ(file.linkedAt, 0U);
    EXPECT_EQ(file.exportsMadeAt, 0U);
}

// Sections follow each other without a gap, the one that names the symbols among them; Windows
// loads nothing else.
TEST_P(ProductFiles, AreLaidOutAsTheLoaderWantsThem) {
    const PeFile file = readPeFile(GetParam().path);
    ASSERT_THAT(file.sections, Not(IsEmpty()));
    const auto filledUp = [&](std::size_t bytes) {
        return (bytes + file.sectionAlignment - 1) / file.sectionAlignment * file.sectionAlignment;
    };
    std::size_t next = file.sections.front().address;
    for (const testwindows::PeSection& section : file.sections) {
        EXPECT_EQ(section.address, next) << section.name;
        next = filledUp(section.address + section.bytes);
    }
    EXPECT_EQ(file.imageBytes, next);
}

// As the system works it out, so that nothing of the file is damaged and drivers' rules hold too.
TEST_P(ProductFiles, HaveTheirChecksum) {
    DWORD inHeader = 0;
    DWORD computed = 0;
    ASSERT_EQ(
        MapFileAndCheckSumW(std::filesystem::path(GetParam().path).c_str(), &inHeader, &computed),
        static_cast<DWORD>(CHECKSUM_SUCCESS));
    EXPECT_EQ(inHeader, computed);
}

// What checks the stack travels inside, and asks the system for the number that it checks with.
TEST_P(ProductFiles, CheckTheirStack) {
    PeFile file = readPeFile(GetParam().path);
    EXPECT_TRUE(file.imports["advapi32.dll"].contains("CryptGenRandom"));
}

// What comes and goes in a host must not bring the compiler's library of threads along, which
// leaves a slot for thread-local storage and memory behind each time; the tool has threads, and
// brings it.
TEST(Tables, OnlyTheToolTakesALibraryOfThreadsAlong) {
    for (const char* const name :
         {"AddVectoredExceptionHandler", "CreateSemaphoreA", "SetThreadContext"}) {
        EXPECT_FALSE(readPeFile(ZOTAVPCI_FILE).imports["kernel32.dll"].contains(name)) << name;
        EXPECT_FALSE(readPeFile(ZOPCIBRD_FILE).imports["kernel32.dll"].contains(name)) << name;
        EXPECT_TRUE(readPeFile(TAVCTL_FILE).imports["kernel32.dll"].contains(name)) << name;
    }
}

class VersionResource {
public:
    explicit VersionResource(const char* file) {
        const std::wstring name = std::filesystem::path(file).wstring();
        DWORD ignored = 0;
        bytes_.resize(GetFileVersionInfoSizeW(name.c_str(), &ignored));
        if (bytes_.empty() ||
            !GetFileVersionInfoW(name.c_str(), 0, static_cast<DWORD>(bytes_.size()), bytes_.data()))
            throw std::runtime_error(std::string("no version resource: ") + file);
    }
    [[nodiscard]] VS_FIXEDFILEINFO numbers() const {
        VS_FIXEDFILEINFO numbers = {};
        UINT size = 0;
        void* found = nullptr;
        if (VerQueryValueW(bytes_.data(), L"\\", &found, &size) && size >= sizeof numbers)
            numbers = *static_cast<const VS_FIXEDFILEINFO*>(found);
        return numbers;
    }
    [[nodiscard]] std::string text(const std::wstring& name) const {
        UINT size = 0;
        void* found = nullptr;
        const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
        if (!VerQueryValueW(bytes_.data(), path.c_str(), &found, &size))
            return "(none)";
        return std::filesystem::path(static_cast<const wchar_t*>(found)).string();
    }

private:
    std::vector<char> bytes_;
};

TEST_P(ProductFiles, SayTheirVersion) {
    const VersionResource resource(GetParam().path);
    const VS_FIXEDFILEINFO numbers = resource.numbers();
    EXPECT_EQ(numbers.dwSignature, VS_FFI_SIGNATURE);
    EXPECT_EQ(HIWORD(numbers.dwFileVersionMS), TAV_VERSION_MAJOR);
    EXPECT_EQ(LOWORD(numbers.dwFileVersionMS), TAV_VERSION_MINOR);
    EXPECT_EQ(HIWORD(numbers.dwFileVersionLS), TAV_VERSION_PATCH);
    EXPECT_EQ(numbers.dwProductVersionMS, numbers.dwFileVersionMS);
    EXPECT_EQ(numbers.dwProductVersionLS, numbers.dwFileVersionLS);
    EXPECT_EQ(resource.text(L"FileVersion"), TAV_VERSION);
    EXPECT_EQ(resource.text(L"ProductVersion"), TAV_VERSION);
    EXPECT_EQ(resource.text(L"OriginalFilename"), GetParam().name);
    EXPECT_EQ(resource.text(L"FileDescription"), GetParam().description);
    EXPECT_EQ(resource.text(L"InternalName"), GetParam().name);
    EXPECT_EQ(resource.text(L"ProductName"), "zotavpci");
    EXPECT_EQ(resource.text(L"CompanyName"), "zotavpci team");
    EXPECT_EQ(resource.text(L"LegalCopyright"), "Copyright (C) zotavpci team");
}

TEST_P(ProductFiles, SayWhatKindOfFileTheyAre) {
    const VS_FIXEDFILEINFO numbers = VersionResource(GetParam().path).numbers();
    const bool isProgram = std::string(GetParam().name).ends_with(".exe");
    EXPECT_EQ(numbers.dwFileType, static_cast<DWORD>(isProgram ? VFT_APP : VFT_DLL));
    EXPECT_EQ(numbers.dwFileSubtype, static_cast<DWORD>(VFT2_UNKNOWN)) << "neither driver nor font";
    EXPECT_EQ(numbers.dwFileOS, static_cast<DWORD>(VOS_NT_WINDOWS32));
    EXPECT_EQ(numbers.dwFileFlagsMask, static_cast<DWORD>(VS_FFI_FILEFLAGSMASK));
    EXPECT_EQ(numbers.dwFileFlags, 0U) << "a finished file of the version that it says";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProductFiles,
    testing::Values(ProductFile{ZOTAVPCI_FILE, "zotavpci.dll", "TAV Manager plug-in for PCI"},
                    ProductFile{ZOPCIBRD_FILE, "zopcibrd.dll", "PCI bridges of recorded buses"},
                    ProductFile{TAVCTL_FILE, "tavctl.exe", "TAV hardware on the command line"}),
    [](const auto& file) {
        const std::string name = file.param.name;
        return name.substr(0, name.find('.'));
    });

TEST(Tables, ThePluginExportsItsFiveFunctions) {
    const PeFile file = readPeFile(ZOTAVPCI_FILE);
    EXPECT_TRUE(file.characteristics & IMAGE_FILE_DLL);
    EXPECT_THAT(file.exports,
                UnorderedElementsAre("tavPlugin_initialize", "tavPlugin_finalize",
                                     "tavPlugin_getDeviceCount", "tavPlugin_getDeviceAttributeI32",
                                     "tavPlugin_getDeviceAttributeUTF8"));
    EXPECT_EQ(file.exportsByNumberOnly, 0U);
}

TEST(Tables, TheBridgeLibraryExportsItsEighteenFunctionsAndTheList) {
    const PeFile file = readPeFile(ZOPCIBRD_FILE);
    EXPECT_TRUE(file.characteristics & IMAGE_FILE_DLL);
    EXPECT_THAT(file.exports,
                UnorderedElementsAre(
                    "ZoPciBrd_OpenSession", "ZoPciBrd_CloseSession", "ZoPciBrd_FindBridgesByPciIds",
                    "ZoPciBrd_FindBridgeByAddress", "ZoPciBrd_FindBridgeBySlotPath",
                    "ZoPciBrd_FindParentBridgeForBus", "ZoPciBrd_GetBridgeParent",
                    "ZoPciBrd_GetBridgeChildren", "ZoPciBrd_GetBusChildren",
                    "ZoPciBrd_GetRootBuses", "ZoPciBrd_GetBridgeAddress",
                    "ZoPciBrd_GetBridgeSlotPath", "ZoPciBrd_GetBridgeIds",
                    "ZoPciBrd_SetAttributeU32", "ZoPciBrd_GetAttributeU32", "ZoPciBrd_OpenBridge",
                    "ZoPciBrd_CloseBridge", "ZoPciBrd_EepromUpdate", "ZoPciBrd_GetFunctions"));
    EXPECT_EQ(file.exportsByNumberOnly, 0U);
}

TEST(Tables, TheToolExportsNothing) {
    EXPECT_THAT(readPeFile(TAVCTL_FILE).exports, IsEmpty());
}

// The bridge library is bound while the plug-in runs, so neither the plug-in nor the tool names it.
TEST(Tables, NobodyImportsTheBridgeLibraryOrThePlugin) {
    for (const char* const path : {ZOTAVPCI_FILE, ZOPCIBRD_FILE, TAVCTL_FILE}) {
        const PeFile file = readPeFile(path);
        EXPECT_FALSE(file.imports.contains("zopcibrd.dll")) << path;
        EXPECT_FALSE(file.imports.contains("zotavpci.dll")) << path;
    }
}

} // namespace

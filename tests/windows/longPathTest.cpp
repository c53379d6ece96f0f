// Paths that are longer than the system's functions take them in their usual form.
#include "platform/windows/longPath.h"

#include "platform/directorySearch.h"
#include "platform/file.h"
#include "platform/fileLock.h"
#include "platform/fileReplacement.h"
#include "platform/utf8Path.h"
#include "source/cPciTavFilesystem.h"
#include "tests/source/support/raised.h"
#include "tests/support/fileText.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"
#include "tests/windows/importedFunction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace platform;
using nZoTavManagerPciPlugin_15_0::cPciTavFilesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::ProgramResult;
using testsupport::raisedBy;
using testwindows::ImportedFunction;

const std::wstring kLongName(200, L'x');

std::wstring longFormOf(const std::wstring& path) {
    const auto text = longForm(path.c_str());
    return text == nullptr ? L"(none)" : text.get();
}

TEST(WindowsLongPath, IsOneThatTheUsualFormHasNoRoomFor) {
    EXPECT_FALSE(isLongPath(L"C:\\a.ini"));
    EXPECT_FALSE(isLongPath(L"a.ini"));
    EXPECT_FALSE(isLongPath((L"C:\\" + std::wstring(244, L'x')).c_str()));
    EXPECT_TRUE(isLongPath((L"C:\\" + std::wstring(245, L'x')).c_str()));
    EXPECT_TRUE(isLongPath(("C:/" + std::string(245, 'x')).c_str()));
    EXPECT_TRUE(isLongPath((L"\\\\server\\share\\" + std::wstring(245, L'x')).c_str()));
    EXPECT_FALSE(isLongPath((L"\\\\?\\C:\\" + std::wstring(300, L'x')).c_str()))
        << "it has the form";
    EXPECT_FALSE(isLongPath((L"\\\\.\\" + std::wstring(300, L'x')).c_str()));
}

TEST(WindowsLongPath, OfARelativeOneTheCurrentFolderCounts) {
    const testsupport::TemporaryFolder folder;
    fs::create_directories(folder.path() / kLongName);
    const std::wstring name(60, L'y');
    EXPECT_FALSE(isLongPath(name.c_str()));
    const fs::path before = fs::current_path();
    fs::current_path(folder.path() / kLongName);
    EXPECT_TRUE(isLongPath(name.c_str()));
    EXPECT_EQ(longFormOf(name), L"\\\\?\\" + fs::current_path().wstring() + L"\\" + name);
    fs::current_path(before);
}

TEST(WindowsLongPath, HasAFormWithoutALimit) {
    EXPECT_EQ(longFormOf(L"C:\\a\\b.ini"), L"\\\\?\\C:\\a\\b.ini");
    EXPECT_EQ(longFormOf(L"C:/a/./b/../c.ini"), L"\\\\?\\C:\\a\\c.ini");
    EXPECT_EQ(longFormOf(L"C:\\a\\*.ini"), L"\\\\?\\C:\\a\\*.ini");
    EXPECT_EQ(longFormOf(L"\\\\server\\share\\a"), L"\\\\?\\UNC\\server\\share\\a");
    EXPECT_EQ(longFormOf(L"//server/share/a"), L"\\\\?\\UNC\\server\\share\\a");
    EXPECT_EQ(longFormOf(L"\\\\?\\C:\\a"), L"\\\\?\\C:\\a");
    EXPECT_EQ(longFormOf(L"NUL"), L"\\\\.\\NUL");
    EXPECT_EQ(longFormOf(L"C:\\" + std::wstring(40000, L'x')), L"(none)");
    const std::wstring usual = L"C:\\a/b.ini";
    EXPECT_EQ(withLongPrefix(usual), usual);
    EXPECT_EQ(withLongPrefix(L"C:/" + kLongName + L"/" + kLongName),
              L"\\\\?\\C:\\" + kLongName + L"\\" + kLongName);
}

TEST(WindowsLongPath, IsTooLongInAnyFormWhenItOrANameInItIs) {
    EXPECT_FALSE(isTooLong(L"C:\\a.ini"));
    EXPECT_FALSE(isTooLong(L"C:\\" + kLongName + L"\\" + kLongName + L"/" + kLongName));
    EXPECT_FALSE(isTooLong(L"C:\\" + std::wstring(255, L'x') + L"\\*.ini"));
    EXPECT_TRUE(isTooLong(L"C:\\" + std::wstring(256, L'x') + L"\\*.ini"));
    std::wstring endless = L"C:\\";
    while (endless.size() < 40000)
        endless += kLongName + L"\\";
    EXPECT_TRUE(isTooLong(endless));
}

// A folder far from the root.
class WindowsDeepFolder : public testing::Test {
protected:
    WindowsDeepFolder() {
        fs::path deep = folder_.path();
        for (int i = 0; i < 3; ++i)
            deep /= kLongName;
        deep_ = platform::utf8Text(deep.make_preferred());
        CreateDirectoryW((folder_.path() / kLongName).c_str(), nullptr);
        makeFolder(fs::path(deep).parent_path());
        makeFolder(deep);
    }
    static void makeFolder(const fs::path& path) {
        ASSERT_TRUE(CreateDirectoryW(longFormOf(path.wstring()).c_str(), nullptr));
    }
    [[nodiscard]] std::string in(const std::string& name) const { return deep_ + "\\" + name; }
    void write(const std::string& name, const std::string& text) const {
        const Stream stream = openStream(in(name).c_str(), "wb");
        ASSERT_NE(stream, nullptr) << lastSystemCode();
        std::fputs(text.c_str(), stream.get());
    }

    testsupport::TemporaryFolder folder_;
    std::string deep_;
};

TEST_F(WindowsDeepFolder, FilesInItAreReadAndWritten) {
    write("a.ini", "text");
    EXPECT_TRUE(lastWriteTime(in("a.ini").c_str()).has_value());
    FileLock lock;
    EXPECT_EQ(lock.open(in("a.ini").c_str()), kNoSystemError);
    lock.close();
    NewFile made = createExclusively(in("new.ini").c_str(), NewFileAccess::usual);
    EXPECT_EQ(made.code, kNoSystemError);
    made.stream.reset();
    EXPECT_EQ(renameReplacing(in("a.ini").c_str(), in("new.ini").c_str()), kNoSystemError);
    EXPECT_EQ(lastWriteTime(in("a.ini").c_str()), std::nullopt);
    Stream stream = openStream(in("new.ini").c_str(), "rb");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(std::fgetc(stream.get()), 't');
    stream.reset();
    EXPECT_EQ(removeFile(in("new.ini").c_str()), kNoSystemError);
}

// The system's function, with what it is called with.
struct FindFirst {
    static inline std::wstring called;
    static inline ImportedFunction* function = nullptr;
    static HANDLE WINAPI find(LPCWSTR pattern, WIN32_FIND_DATAW* entry) {
        called = pattern;
        return reinterpret_cast<decltype(&FindFirstFileW)>(function->real())(pattern, entry);
    }

    FindFirst() { function = &replaced_; }

private:
    ImportedFunction replaced_{"FindFirstFileW", reinterpret_cast<void*>(&find)};
};

TEST_F(WindowsDeepFolder, IsListedInTheLongerFormAndNamedInTheUsualOne) {
    write("a.ini", "");
    const FindFirst find;
    std::vector<std::string> files;
    cPciTavFilesystem().ListFiles(in("*.ini"), files);
    EXPECT_THAT(files, ElementsAre(in("a.ini")));
    EXPECT_EQ(FindFirst::called, longFormOf(platform::utf8Path(in("*.ini")).wstring()));
    cPciTavFilesystem().ListFiles("C:\\*.none", files);
    EXPECT_EQ(FindFirst::called, L"C:\\*.none");
}

TEST(WindowsLongListing, OfAPathThatIsTooLongFailsWithItsCode) {
    const std::string endless = [] {
        std::string path = "C:\\";
        while (path.size() < 40000)
            path += std::string(200, 'x') + "\\";
        return path;
    }();
    for (const std::string& folder : {"C:\\" + std::string(300, 'x') + "\\", endless}) {
        DirectorySearch search;
        EXPECT_EQ(search.open(folder + "*.ini"), SearchOutcome::failed);
        EXPECT_EQ(lastSystemCode(), SystemCode{ERROR_FILENAME_EXCED_RANGE});
        std::vector<std::string> files;
        EXPECT_EQ(raisedBy([&] { cPciTavFilesystem().ListFiles(folder + "*.ini", files); }).code,
                  -313327);
    }
}

TEST_F(WindowsDeepFolder, ServesTheToolForDescriptionsAndNames) {
    const fs::path inner = platform::utf8Path(in("PCI Hardware Descriptions"));
    makeFolder(inner);
    for (const auto& file : fs::directory_iterator(fs::path(TAV_SOURCE_DIR) / "descriptions" /
                                                   "PCI Hardware Descriptions"))
        write("PCI Hardware Descriptions\\" + file.path().filename().string(),
              testsupport::fileText(file.path()));
    const ProgramResult list = testsupport::runProgram(
        TAVCTL_FILE, {"list", "--json", "--dump", TAV_SOURCE_DIR "/samples/switchboxes.dump",
                      "--descriptions", deep_, "--state", deep_});
    EXPECT_EQ(list.exitStatus, 0) << list.error;
    EXPECT_THAT(list.output, HasSubstr("\"name\":\"TAVCard1\""));
    EXPECT_TRUE(lastWriteTime(in("zotavpci.ini").c_str()).has_value());
    const ProgramResult lint =
        testsupport::runProgram(TAVCTL_FILE, {"lint", "--descriptions", deep_});
    EXPECT_EQ(lint.output, "3 files, no problems\n");

    const ProgramResult once = testsupport::runProgram(
        TAVCTL_FILE, {"names", "backup", in("saved.ini"), "--state", deep_});
    EXPECT_EQ(once.exitStatus, 0) << once.error;
    const ProgramResult twice = testsupport::runProgram(
        TAVCTL_FILE, {"names", "backup", in("saved.ini"), "--state", deep_});
    EXPECT_EQ(twice.exitStatus, 3);
    EXPECT_THAT(twice.error, HasSubstr("the file exists"));
}

TEST(WindowsLongDescriptions, ThatNoFormHasRoomForAreToldOf) {
    const std::string folder = "C:\\" + std::string(300, 'x');
    const ProgramResult result = testsupport::runProgram(
        TAVCTL_FILE,
        {"list", "--dump", TAV_SOURCE_DIR "/samples/switchboxes.dump", "--descriptions", folder});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_THAT(result.error, HasSubstr(folder));
    EXPECT_THAT(result.error, testing::Not(HasSubstr("no such folder")));
}

TEST(WindowsManifest, TakesPathsOfAnyLength) {
    constexpr int kManifest = 24; // RT_MANIFEST
    const HMODULE tool = LoadLibraryExW(fs::path(TAVCTL_FILE).make_preferred().c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE);
    const HRSRC found = FindResourceW(tool, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(kManifest));
    ASSERT_NE(found, nullptr);
    const std::string text(static_cast<const char*>(LockResource(LoadResource(tool, found))),
                           SizeofResource(tool, found));
    EXPECT_THAT(text, HasSubstr("<longPathAware xmlns=\"http://schemas.microsoft.com/SMI/2016/"
                                "WindowsSettings\">true</longPathAware>"));
    FreeLibrary(tool);
}

} // namespace

// Where the configuration says that things are, making a file, and listing real folders.
#include "platform/hostConfiguration.h"
#include "pxidrivertools/configuration.h"
#include "source/cPciTavFilesystem.h"
#include "tests/source/support/raised.h"
#include "tests/source/support/slotOf.h"
#include "tests/source/support/systemCodes.h"
#include "tests/support/allocationFaults.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::kConfigurationKey;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::Raised;
using testsupport::raisedBy;

constexpr const char* kSource = "source\\cPciTavFilesystem";
constexpr const char* kRegistrySource = "pxidrivertools\\registryhelper";

class Filesystem : public testing::Test {
protected:
    // The folder's path with a separator at the end, as "Path" is configured.
    [[nodiscard]] std::string folderPath() const { return folder_.path().string() + "/"; }
    [[nodiscard]] std::string in(const std::string& name) const { return folderPath() + name; }
    void write(const std::string& name, const std::string& content = "") const {
        (void)folder_.file(name, content);
    }
    void configure(const platform::HostConfiguration::Values& values) {
        configuration_.emplace(kConfigurationKey, values);
        ASSERT_EQ(configuration_->code(), platform::kNoSystemError);
    }

    // The listing; what it raises fails the test.
    std::vector<std::string> list(const std::string& pattern) {
        std::vector<std::string> files{"from before"};
        filesystem_.ListFiles(pattern, files);
        return files;
    }
    // What a listing raises, and in `listed_` what it left behind.
    Raised listingRaises(const std::string& pattern) {
        return raisedBy([&] { filesystem_.ListFiles(pattern, listed_); });
    }

    testsupport::TemporaryFolder folder_;
    std::optional<platform::HostConfiguration> configuration_;
    cPciTavFilesystem filesystem_;
    std::vector<std::string> listed_{"from before"};
};

TEST(FilesystemInterface, OperationsStandInTheirSlots) {
    using testsupport::slotOf;
    EXPECT_EQ(slotOf(&iPciTavFilesystem::GetDescriptionFilePattern), 1U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::GetConfigPath), 2U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::EnsureFileExists), 3U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::IsLocked), 4U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::LockFile), 5U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::UnlockFile), 6U);
    EXPECT_EQ(slotOf(&iPciTavFilesystem::ListFiles), 7U);
    EXPECT_TRUE(std::has_virtual_destructor_v<iPciTavFilesystem>);
}

TEST_F(Filesystem, ThePatternIsThePathWithFolderAndPatternAppended) {
    configure({{"Path", "/opt/tav/"}, {"ConfigPath", "/var/tav/"}});
    EXPECT_EQ(filesystem_.GetDescriptionFilePattern(), "/opt/tav/PCI Hardware Descriptions/*.ini");
}

TEST_F(Filesystem, NoSeparatorIsAddedToThePath) {
    configure({{"Path", "/opt/tav"}});
    EXPECT_EQ(filesystem_.GetDescriptionFilePattern(), "/opt/tavPCI Hardware Descriptions/*.ini");
    configure({{"Path", ""}});
    EXPECT_EQ(filesystem_.GetDescriptionFilePattern(), "PCI Hardware Descriptions/*.ini");
}

TEST_F(Filesystem, ThePathWithoutItsSeparatorFindsNothing) {
    write("PCI Hardware Descriptions/a.ini");
    configure({{"Path", folder_.path().string()}});
    EXPECT_THAT(list(filesystem_.GetDescriptionFilePattern()), IsEmpty());
    configure({{"Path", folderPath()}});
    EXPECT_THAT(list(filesystem_.GetDescriptionFilePattern()),
                ElementsAre(in("PCI Hardware Descriptions/a.ini")));
}

TEST_F(Filesystem, TheConfigPathIsGivenAsStored) {
    configure({{"Path", "/opt/tav/"}, {"ConfigPath", " /var//tav"}});
    EXPECT_EQ(filesystem_.GetConfigPath(), " /var//tav");
}

TEST_F(Filesystem, WithoutAConfigurationBothPathsRaise) {
    const std::string file = in("missing.conf");
    const testsupport::EnvironmentValue variable("TAV_MANAGER_CONF", file);
    const Raised pattern = raisedBy([&] { filesystem_.GetDescriptionFilePattern(); });
    EXPECT_EQ(pattern.code, -52003);
    EXPECT_TRUE(pattern.hasSite(kRegistrySource, "kConfigurationErrNoKey"));
    EXPECT_EQ(pattern.record["configuration"],
              (nlohmann::json{{"value", "Path"}, {"origin", file}}));
    const Raised path = raisedBy([&] { filesystem_.GetConfigPath(); });
    EXPECT_EQ(path.code, -52003);
    EXPECT_TRUE(path.hasSite(kRegistrySource, "kConfigurationErrNoKey"));
    EXPECT_EQ(path.record["configuration"],
              (nlohmann::json{{"value", "ConfigPath"}, {"origin", file}}));
}

TEST_F(Filesystem, AMissingValueRaisesTheSystemsError) {
    configure({{"Other", "1"}});
    const Raised pattern = raisedBy([&] { filesystem_.GetDescriptionFilePattern(); });
    EXPECT_EQ(pattern.code, kNoSuchFile);
    EXPECT_TRUE(pattern.hasSite(kRegistrySource, "systemError"));
    EXPECT_EQ(pattern.record["configuration"]["value"], "Path");
    const Raised path = raisedBy([&] { filesystem_.GetConfigPath(); });
    EXPECT_EQ(path.code, kNoSuchFile);
    EXPECT_EQ(path.record["configuration"]["value"], "ConfigPath");
}

class FilesystemFile : public Filesystem {
protected:
    void SetUp() override { maskBefore_ = umask(0); }
    void TearDown() override { umask(maskBefore_); }

    [[nodiscard]] fs::perms modeOf(const std::string& name) const {
        return fs::status(in(name)).permissions();
    }
    [[nodiscard]] std::string content(const std::string& name) const {
        return testsupport::fileTextIfAny(in(name));
    }

private:
    mode_t maskBefore_ = 0;
};

TEST_F(FilesystemFile, AMissingFileIsCreatedForItsOwnerOnly) {
    EXPECT_EQ(filesystem_.EnsureFileExists(in("new")), 0);
    EXPECT_TRUE(fs::is_regular_file(in("new")));
    EXPECT_EQ(fs::file_size(in("new")), 0U);
    EXPECT_EQ(modeOf("new"), fs::perms{0600});
}

TEST_F(FilesystemFile, TheOwnerMayAlwaysReadAndWriteWhatIsCreated) {
    umask(0777);
    EXPECT_EQ(filesystem_.EnsureFileExists(in("new")), 0);
    EXPECT_EQ(modeOf("new"), fs::perms{0600});
}

TEST_F(FilesystemFile, AFileThatIsThereIsLeftAsItIs) {
    write("old", "content");
    fs::permissions(in("old"), fs::perms{0644});
    EXPECT_EQ(filesystem_.EnsureFileExists(in("old")), 0);
    EXPECT_EQ(modeOf("old"), fs::perms{0644});
    EXPECT_EQ(content("old"), "content");
}

TEST_F(FilesystemFile, WhatCannotBeOpenedGivesTheSystemsError) {
    EXPECT_EQ(filesystem_.EnsureFileExists(in("no folder/new")), kNoEntry);
    EXPECT_EQ(filesystem_.EnsureFileExists(""), kNoEntry);
    write("file");
    EXPECT_EQ(filesystem_.EnsureFileExists(in("file/new")), 20); // no folder
}

TEST_F(Filesystem, AListingGivesFullPathsInByteOrder) {
    for (const char* name : {"b.ini", "a.ini", "B.ini", "10.ini", "9.ini", "\xC3\xA4.ini"})
        write(std::string("D/") + name);
    EXPECT_THAT(list(in("D/*.ini")),
                ElementsAre(in("D/10.ini"), in("D/9.ini"), in("D/B.ini"), in("D/a.ini"),
                            in("D/b.ini"), in("D/\xC3\xA4.ini")));
}

TEST_F(Filesystem, AListingHoldsWhatMatchesOnly) {
    for (const char* name : {"a.ini", "a.INI", ".hidden.ini", "a.ini~", "ini", "a.txt"})
        write(std::string("D/") + name);
    EXPECT_THAT(list(in("D/*.ini")), ElementsAre(in("D/a.ini")));
}

TEST_F(Filesystem, AFolderThatMatchesIsListedToo) {
    write("D/a.ini");
    fs::create_directories(in("D/folder.ini"));
    EXPECT_THAT(list(in("D/*.ini")), ElementsAre(in("D/a.ini"), in("D/folder.ini")));
}

TEST_F(Filesystem, TheFolderPartOfThePatternIsKeptAsItIsWritten) {
    write("D/a.ini");
    EXPECT_THAT(list(in("D//*.ini")), ElementsAre(in("D//a.ini")));
    EXPECT_THAT(list(in("D/../D/*.ini")), ElementsAre(in("D/../D/a.ini")));
}

TEST_F(Filesystem, APatternWithoutAFolderGivesNamesAlone) {
    write("a.ini");
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    EXPECT_THAT(list("*.ini"), ElementsAre("a.ini"));
    fs::current_path(before);
}

TEST_F(Filesystem, AnEmptyFolderIsAnEmptyList) {
    EXPECT_EQ(kListWarnNothingFound, 313300);
    fs::create_directory(in("D"));
    EXPECT_THAT(list(in("D/*.ini")), IsEmpty());
    write("D/a.txt");
    EXPECT_THAT(list(in("D/*.ini")), IsEmpty());
}

TEST_F(Filesystem, AMissingFolderIsAnEmptyList) {
    EXPECT_THAT(list(in("D/*.ini")), IsEmpty());
    EXPECT_THAT(list(in("D/E/*.ini")), IsEmpty());
}

TEST_F(Filesystem, AnEmptyPatternRaises) {
    const Raised raised = listingRaises("");
    EXPECT_EQ(raised.code, -313326);
    EXPECT_TRUE(raised.hasSite(kSource, "kListErrEmptyPattern"));
    EXPECT_THAT(listed_, IsEmpty());
}

TEST_F(Filesystem, APatternThatIsNoTextRaises) {
    const Raised raised = listingRaises(in("D/\xFF*.ini"));
    EXPECT_EQ(raised.code, -313325);
    EXPECT_TRUE(raised.hasSite(kSource, "kListErrInvalidText"));
    EXPECT_THAT(listed_, IsEmpty());
}

TEST_F(Filesystem, ANameThatIsNoTextEndsTheListing) {
    write("D/a.ini");
    write("D/b\xFF.ini");
    write("D/c.ini");
    const Raised raised = listingRaises(in("D/*.ini"));
    EXPECT_EQ(raised.code, -313325);
    EXPECT_TRUE(raised.hasSite(kSource, "kListErrInvalidText"));
    EXPECT_THAT(listed_, ElementsAre(in("D/a.ini")));
}

TEST_F(Filesystem, ANameThatIsNoTextDoesNoHarmWhereItDoesNotMatch) {
    write("D/a.ini");
    write("D/b\xFF.txt");
    EXPECT_THAT(list(in("D/*.ini")), ElementsAre(in("D/a.ini")));
}

TEST_F(Filesystem, AFolderThatCannotBeListedRaises) {
    write("D");
    const Raised raised = listingRaises(in("D/*.ini"));
    EXPECT_EQ(raised.code, -313327);
    EXPECT_TRUE(raised.hasSite(kSource, "kListErrFailed"));
    EXPECT_THAT(listed_, IsEmpty());
}

TEST_F(Filesystem, TextThatCannotBeConvertedHasAStatusOfItsOwn) {
    EXPECT_EQ(kListErrConversion, -313328);
}

// Lets each allocation of `call` fail in turn. Each time the call must raise the status of memory
// that ran out; answers how many allocations the call makes.
template <class Call>
std::size_t failEveryAllocation(Call call) {
    for (std::size_t nth = 1;; ++nth) {
        bool happened = false;
        std::int32_t code = 0;
        {
            const testsupport::AllocationFault fault(nth);
            try {
                call();
            } catch (const zoerr::Exception& exception) {
                code = exception.status().code;
            }
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(code, 0);
            return nth - 1;
        }
        EXPECT_EQ(code, -52000) << "allocation " << nth;
    }
}

TEST_F(Filesystem, RunningOutOfMemoryIsRaisedAsItsStatus) {
    configure({{"Path", std::string(100, 'p')}, {"ConfigPath", std::string(100, 'c')}});
    EXPECT_GT(failEveryAllocation([&] { filesystem_.GetDescriptionFilePattern(); }), 1U);
    EXPECT_GT(failEveryAllocation([&] { filesystem_.GetConfigPath(); }), 0U);
    write("D/a.ini");
    write("D/b.ini");
    const std::string pattern = in("D/*.ini");
    EXPECT_GT(failEveryAllocation([&] { filesystem_.ListFiles(pattern, listed_); }), 4U);
    EXPECT_THAT(listed_, ElementsAre(in("D/a.ini"), in("D/b.ini")));
}

TEST_F(Filesystem, TheRecordOfMemoryThatRanOutNamesItsPlace) {
    write("D/a.ini");
    const std::string pattern = in("D/*.ini");
    std::string record;
    {
        const testsupport::AllocationFault fault(1);
        try {
            filesystem_.ListFiles(pattern, listed_);
        } catch (const zoerr::Exception& exception) {
            record = exception.text();
        }
    }
    const nlohmann::json members = nlohmann::json::parse(record);
    EXPECT_EQ(members["error_constant"], "zoquilerr_memoryFull");
    EXPECT_EQ(members["file"], kSource);
    EXPECT_EQ(members["component"], "zotavpci");
}

} // namespace

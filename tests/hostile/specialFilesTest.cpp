// Pipes, folders, devices and links in place of each file that the product opens: nobody waits for
// ever, nothing fills the memory, nothing is put in their place, and what is wrong is told.
#include "machine/busTree.h"
#include "machine/machineBus.h"
#include "source/cPciTavFilesystem.h"
#include "tests/hostile/boundedRun.h"
#include "tests/hostile/documentedStatuses.h"
#include "tests/hostile/memory.h"
#include "tests/hostile/specialFile.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/effort.h"
#include "tests/support/environmentValue.h"
#include "tests/support/machines.h"

#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace {

namespace fs = std::filesystem;
using testhostile::BoundedResult;
using testhostile::Kind;
using testhostile::kKinds;
using testhostile::put;
using testhostile::runBounded;
using testhostile::whyNoFile;
using testsupport::EnvironmentValue;
using testsupport::TemporaryFolder;

// A machine with everything that a listing needs, to be spoilt in one place.
class SpecialFiles : public testing::Test {
protected:
    SpecialFiles() {
        fs::copy(testplugin::kSampleDescriptions, descriptions, fs::copy_options::recursive);
        fs::copy_file(testplugin::kSampleDump, dump);
        fs::create_directory(state);
    }

    [[nodiscard]] BoundedResult run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--dump", dump.string(), "--descriptions",
                                           descriptions.string(), "--state", state.string()});
        BoundedResult result = runBounded(TAVCTL_FILE, arguments);
        EXPECT_FALSE(result.hung);
        EXPECT_EQ(result.signal, 0);
        EXPECT_LT(result.peak, testhostile::memoryBound(0, 0));
        return result;
    }

    // What listing the devices says, in one sentence; "N devices" when it lists them.
    static std::string sentence(const BoundedResult& result) {
        if (result.exitStatus == 0)
            return std::to_string(nlohmann::json::parse(result.output)["devices"].size()) +
                   " devices";
        const auto error = nlohmann::json::parse(result.error)["error"];
        EXPECT_EQ(result.exitStatus, 3);
        // The plug-in has not been asked where there is no bus to look at.
        EXPECT_TRUE(error["status"].is_null() ||
                    testhostile::isDocumentedInitialize(error["status"]))
            << error["status"];
        return error["operation"].get<std::string>() + " (" + error["object"].get<std::string>() +
               "): " + error["reason"].get<std::string>();
    }

    // Each kind in the place of one file, and what listing says of it.
    void forEachKind(const fs::path& place,
                     const std::function<std::string(Kind)>& expected) const {
        std::uint64_t kinds = 0;
        for (const Kind kind : kKinds) {
            SCOPED_TRACE(testhostile::nameOf(kind));
            put(kind, place);
            EXPECT_EQ(sentence(run({"list", "--json"})), expected(kind));
            EXPECT_TRUE(testhostile::isStill(kind, place));
            ++kinds;
        }
        testsupport::figure(kinds, "kinds of things in place of " + place.filename().string());
    }

    TemporaryFolder folder;
    fs::path descriptions = folder.path() / "descriptions";
    fs::path state = folder.path() / "state";
    fs::path dump = folder.path() / "bus.dump";
};

TEST_F(SpecialFiles, InPlaceOfTheNameFileAreRefusedButForTheNullDevice) {
    const fs::path place = state / "zotavpci.ini";
    forEachKind(place, [&](Kind kind) {
        return kind == Kind::linkToNull
                   ? "4 devices"
                   : "read terminal names (" + place.string() + "): " + whyNoFile(kind);
    });
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(fs::status("/dev/null").permissions() & fs::perms(0666), fs::perms(0666));
}

TEST_F(SpecialFiles, InPlaceOfTheLockFileAreRefused) {
    const fs::path place = state / "zotavpci.loc";
    forEachKind(place, [&](Kind kind) {
        return "lock terminal names (" + place.string() + "): " + whyNoFile(kind);
    });
}

TEST_F(SpecialFiles, InPlaceOfADescriptionAreRefused) {
    const fs::path place = descriptions / "PCI Hardware Descriptions" / "aaa.ini";
    forEachKind(place, [&](Kind kind) {
        return "load description (" + place.string() + "): " +
               (kind == Kind::linkToNull
                    ? "there is no section [UpstreamTAV]; expected a line [UpstreamTAV], "
                      "spelled exactly so"
                    : "the file cannot be opened or read: " + whyNoFile(kind) +
                          "; expected a readable file, and no folder");
    });
}

TEST_F(SpecialFiles, InPlaceOfADumpAreReadAsFarAsTheyGo) {
    forEachKind(dump, [&](Kind kind) -> std::string {
        const std::string start = "open bridge session (" + dump.string() + "): " + dump.string();
        switch (kind) {
        case Kind::linkToNull:
            return "0 devices";
        case Kind::pipe: // that nobody writes to
            return start + ": Broken pipe";
        case Kind::folder: // of recordings, as far as can be seen
            return "search for recordings (" + dump.string() +
                   "): no recorded bus is in this folder";
        case Kind::linkToZero:
        case Kind::linkToFull:
            return start + ": a line is longer than 1048576 bytes";
        default:
            return start + ": " + whyNoFile(kind);
        }
    });
}

TEST_F(SpecialFiles, InPlaceOfTheConfigurationAreRefused) {
    const fs::path place = folder.path() / "tav.conf";
    const EnvironmentValue configuration("TAV_MANAGER_CONF", place.string());
    for (const Kind kind : kKinds) {
        SCOPED_TRACE(testhostile::nameOf(kind));
        put(kind, place);
        const BoundedResult result =
            runBounded(TAVCTL_FILE, {"list", "--json", "--dump", dump.string()});
        EXPECT_FALSE(result.hung);
        EXPECT_LT(result.peak, testhostile::memoryBound(0, 0));
        EXPECT_EQ(result.exitStatus, 3);
        const auto error = nlohmann::json::parse(result.error)["error"];
        EXPECT_EQ(error["operation"], "read configuration value \"Path\"");
        EXPECT_EQ(error["object"], place.string());
        EXPECT_EQ(error["status"], -52003);
        const auto& told = error["record"]["internal_error"]["string"];
        EXPECT_TRUE(kind == Kind::linkToNull || told == whyNoFile(kind)) << told;
    }
}

// A copied /sys; what one of its functions says of itself.
TEST_F(SpecialFiles, InPlaceOfAFileOfSysfsHoldNobodyUp) {
    const testsupport::machines::Switch machine;
    dump = folder.path() / "sys";
    machine.bus.writeSysfs(dump);
    const fs::path function = fs::canonical(dump / "bus/pci/devices/0000:00:1c.0");
    forEachKind(function / "max_link_width", [](Kind) { return "0 devices"; });
    // 64 zeros are no bridge, and any other kind is a function that cannot be read: either way what
    // was below it is on a root bus.
    forEachKind(function / "config", [](Kind) { return "0 devices"; });
}

TEST_F(SpecialFiles, InPlaceOfTheNameOfARootBridgeHoldNobodyUp) {
    const testsupport::machines::Switch machine;
    const fs::path sys = folder.path() / "sys";
    machine.bus.writeSysfs(sys);
    const fs::path place = sys / "devices/pci0000:00/firmware_node/hid";
    fs::create_directories(place.parent_path());
    for (const Kind kind : kKinds) {
        SCOPED_TRACE(testhostile::nameOf(kind));
        put(kind, place);
        std::shared_ptr<const machine::MachineBus> bus;
        ASSERT_EQ(machine::readMachineBus(sys.string(), bus), platform::kNoSystemError);
        machine::BusTree tree(bus);
        platform::DeviceNode port = 0;
        EXPECT_TRUE(tree.open("PCI\\0000:00:1c.0", port));
    }
    EXPECT_LT(testhostile::peakResidentBytes(), testhostile::memoryBound(0, 0));
}

TEST_F(SpecialFiles, AreToldByTheCommandsThatReadNames) {
    const fs::path place = state / "zotavpci.ini";
    for (const Kind kind : kKinds) {
        SCOPED_TRACE(testhostile::nameOf(kind));
        put(kind, place);
        for (const char* word : {"list", "check"}) {
            const BoundedResult result = run({"names", word, "--stored"});
            // Where a link leads to nothing, no names are stored yet.
            const bool isEmpty = kind == Kind::linkToNull || kind == Kind::linkToNowhere ||
                                 kind == Kind::linkToItself;
            EXPECT_EQ(result.exitStatus, isEmpty ? 0 : 3) << result.error;
            if (isEmpty)
                continue;
            const std::string told =
                "read terminal names (" + place.string() + "): " + whyNoFile(kind);
            EXPECT_NE(result.error.find(told), std::string::npos) << result.error;
        }
    }
}

TEST_F(SpecialFiles, AreNotReplacedByABackupOrARestore) {
    ASSERT_EQ(run({"list"}).exitStatus, 0);
    const fs::path backup = folder.path() / "backup.ini";
    ASSERT_EQ(run({"names", "backup", backup.string()}).exitStatus, 0);
    for (const Kind kind : kKinds) {
        SCOPED_TRACE(testhostile::nameOf(kind));
        const fs::path target = folder.path() / "target.ini";
        put(kind, target);
        const BoundedResult saved = run({"names", "backup", "--force", target.string()});
        EXPECT_EQ(saved.exitStatus, 3);
        EXPECT_EQ(saved.error,
                  "tavctl: write terminal names (" + target.string() + "): " +
                      (kind == Kind::linkToNull ? "Not a regular file" : whyNoFile(kind)) + "\n");
        EXPECT_TRUE(testhostile::isStill(kind, target));
        const BoundedResult put_back = run({"names", "restore", "--force", target.string()});
        EXPECT_TRUE(testhostile::isStill(kind, target));
        EXPECT_EQ(put_back.exitStatus, kind == Kind::linkToNull ? 0 : 3) << put_back.error;
        ASSERT_EQ(run({"names", "restore", backup.string()}).exitStatus, 0);
    }
}

TEST_F(SpecialFiles, AreFoundByLint) {
    const fs::path place = descriptions / "PCI Hardware Descriptions" / "aaa.ini";
    for (const Kind kind : kKinds) {
        SCOPED_TRACE(testhostile::nameOf(kind));
        put(kind, place);
        const BoundedResult result =
            runBounded(TAVCTL_FILE, {"lint", "--descriptions", descriptions.string()});
        EXPECT_FALSE(result.hung);
        EXPECT_EQ(result.exitStatus, 1) << result.error;
        EXPECT_NE(result.output.find(place.string() + (kind == Kind::linkToNull
                                                           ? ": error: missing-section"
                                                           : ": error: cannot-open")),
                  std::string::npos)
            << result.output;
        EXPECT_LT(result.peak, testhostile::memoryBound(0, 0));
    }
}

// A link to a file that is not there yet is no offence: the file is made.
TEST_F(SpecialFiles, LinkToAFileToBeIsFollowed) {
    fs::create_directory(folder.path() / "elsewhere");
    const fs::path target = folder.path() / "elsewhere" / "names.ini";
    fs::create_symlink(target, state / "zotavpci.ini");
    EXPECT_EQ(sentence(run({"list", "--json"})), "4 devices");
    EXPECT_TRUE(fs::is_symlink(state / "zotavpci.ini"));
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_GT(fs::file_size(target), 0U);
}

} // namespace

// What the product may do to whom: state files belong to their owner, an environment that somebody
// else has set counts for nothing in a process with raised privileges, and no library comes from
// the current folder.
#include "platform/file.h"
#include "platform/fileReplacement.h"
#include "tests/hostile/boundedRun.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/command.h"
#include "tests/support/effort.h"
#include "tests/support/fileText.h"
#include "tests/support/otherUser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testsupport::CommandResult;
using testsupport::TemporaryFolder;

constexpr fs::perms kOwnerOnly = fs::perms::owner_read | fs::perms::owner_write;
constexpr fs::perms kForAll = fs::perms(0755);

// The mask that takes nothing away, for this process and what it starts.
class OpenMask {
public:
    OpenMask() : before_(umask(0)) {}
    ~OpenMask() { umask(before_); }
    OpenMask(const OpenMask&) = delete;
    OpenMask& operator=(const OpenMask&) = delete;

private:
    mode_t before_;
};

TEST(LeastPrivilege, StateFilesBelongToTheirOwnerUnderAnyMask) {
    const TemporaryFolder folder;
    const std::vector<std::string> options{
        "--dump",         testplugin::kSampleDump.string(),
        "--descriptions", testplugin::kSampleDescriptions.string(),
        "--state",        folder.path().string()};
    const auto tavctl = [&](std::vector<std::string> words) {
        words.insert(words.end(), options.begin(), options.end());
        const auto result = testhostile::runBounded(TAVCTL_FILE, words);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
    };
    const OpenMask mask;
    const fs::path names = folder.path() / "zotavpci.ini";
    const fs::path before = folder.path() / "zotavpci.ini.before";
    const fs::path backup = folder.path() / "backup.ini";
    tavctl({"list"});
    tavctl({"names", "backup", backup.string()});
    std::uint64_t files = 0;
    for (const fs::path& file : {names, folder.path() / "zotavpci.loc", backup}) {
        EXPECT_EQ(fs::status(file).permissions(), kOwnerOnly) << file;
        ++files;
    }
    // What was opened to others by hand stays so.
    fs::permissions(names, fs::perms(0664));
    std::ofstream(names, std::ios::app) << "; by hand\n";
    tavctl({"names", "restore", backup.string()});
    EXPECT_EQ(fs::status(names).permissions(), fs::perms(0664));
    EXPECT_EQ(fs::status(before).permissions(), fs::perms(0664));
    fs::remove(names);
    tavctl({"names", "restore", backup.string()});
    EXPECT_EQ(fs::status(names).permissions(), kOwnerOnly);
    EXPECT_EQ(fs::status(before).permissions(), kOwnerOnly);
    testsupport::figure(files, "kinds of state files that only their owner may read");
}

// An administrator shares names with a group by the folder's own permissions.
TEST(LeastPrivilege, StateFilesAreTheirFoldersGroupsWhereItHandsItOn) {
    const auto permissionsIn = [](fs::perms ofFolder) {
        const TemporaryFolder folder;
        fs::permissions(folder.path(), ofFolder);
        EXPECT_EQ(testhostile::runBounded(
                      TAVCTL_FILE,
                      {"list", "--dump", testplugin::kSampleDump.string(), "--descriptions",
                       testplugin::kSampleDescriptions.string(), "--state", folder.path().string()})
                      .exitStatus,
                  0);
        const fs::perms names = fs::status(folder.path() / "zotavpci.ini").permissions();
        EXPECT_EQ(fs::status(folder.path() / "zotavpci.loc").permissions(), names);
        EXPECT_TRUE(platform::createExclusively((folder.path() / "beside").c_str()).stream);
        EXPECT_EQ(fs::status(folder.path() / "beside").permissions(), names);
        return names;
    };
    const OpenMask mask;
    EXPECT_EQ(permissionsIn(fs::perms(02775)), fs::perms(0664));
    EXPECT_EQ(permissionsIn(fs::perms(02770)), fs::perms(0660));
    EXPECT_EQ(permissionsIn(fs::perms(03777)), fs::perms(0664)) << "never writable for all";
    EXPECT_EQ(permissionsIn(fs::perms(0775)), kOwnerOnly);
    EXPECT_EQ(permissionsIn(fs::perms(02755)), kOwnerOnly);
}

// Behind a link is another folder, which has not said so.
TEST(LeastPrivilege, AStateFileBehindALinkIsItsOwners) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    fs::permissions(folder.path(), fs::perms(02775));
    const fs::path link = folder.path() / "names";
    fs::create_symlink(elsewhere.path() / "names", link);
    EXPECT_TRUE(platform::openStream(link.c_str(), "a"));
    EXPECT_EQ(fs::status(link).permissions(), kOwnerOnly);
}

// What root restores, the service that the names belong to can still read and write; and the file
// is where an administrator has put it.
TEST(LeastPrivilege, RestoredNamesKeepTheirOwnerAndTheirPlace) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    const std::string text = "[MR00:08]\r\nModel = Box\r\nTerminalName = TAV1\r\n";
    const fs::path backup = folder.file("backup.ini", text);
    const fs::path kept = elsewhere.file("names", "[MR00:08]\n");
    fs::permissions(kept, fs::perms(0660));
    testsupport::OtherUser::take(kept);
    struct stat before = {};
    ASSERT_EQ(stat(kept.c_str(), &before), 0);
    fs::create_directory(folder.path() / "state");
    const fs::path link = folder.path() / "state" / "zotavpci.ini";
    fs::create_symlink(kept, link);
    const auto restored =
        testhostile::runBounded(TAVCTL_FILE, {"names", "restore", backup.string(), "--state",
                                              (folder.path() / "state").string()});
    EXPECT_EQ(restored.exitStatus, 0) << restored.error;
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(testsupport::fileText(kept), text);
    struct stat after = {};
    ASSERT_EQ(stat(kept.c_str(), &after), 0);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(after.st_mode, before.st_mode);
}

// Not first for all and then for the owner: in between, others could open it.
TEST(LeastPrivilege, StateFilesBelongToTheirOwnerFromTheStart) {
    const TemporaryFolder folder;
    const OpenMask mask;
    const fs::path appended = folder.path() / "appended";
    EXPECT_TRUE(platform::openStream(appended.c_str(), "a"));
    EXPECT_EQ(fs::status(appended).permissions(), kOwnerOnly);
    const fs::path temporary = folder.path() / "temporary";
    EXPECT_TRUE(platform::createExclusively(temporary.c_str()).stream);
    EXPECT_EQ(fs::status(temporary).permissions(), kOwnerOnly);
    // A result is no state file.
    const fs::path result = folder.path() / "result";
    EXPECT_TRUE(platform::openStream(result.c_str(), "w"));
    EXPECT_EQ(fs::status(result).permissions(), fs::perms(0666));
}

// A host with its libraries, its bus and its descriptions, in a folder that every user may read.
class Host : public testing::Test {
protected:
    Host() {
        fs::permissions(folder.path(), kForAll);
        fs::create_directories(own);
        fs::copy_file(PRIVILEGE_HOST_FILE, own / "host");
        fs::copy_file(ZOTAVPCI_FILE, plugin);
        fs::copy(testplugin::kSampleDescriptions, folder.path() / "descriptions",
                 fs::copy_options::recursive);
        fs::copy_file(testplugin::kSampleDump, dump);
        fs::create_directory(state);
        fs::permissions(state, fs::perms(0777));
        std::ofstream(configuration) << "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\nPath = "
                                     << (folder.path() / "descriptions").string()
                                     << "/\nConfigPath = " << state.string() << "/\n";
    }

    using Facts = std::map<std::string, std::string>;

    // Runs the host by a shell's words around it; what it tells.
    [[nodiscard]] Facts run(const std::string& before, const std::string& arguments) const {
        const CommandResult result = testsupport::runCommand(
            "export TAV_MANAGER_CONF=" + configuration.string() + " TAV_PCI_DUMP=" + dump.string() +
            " PLANTED_MARKER=" + marker.string() + "; " + before + " " + arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.output;
        Facts facts;
        std::istringstream lines(result.output);
        for (std::string name, value; lines >> name && std::getline(lines >> std::ws, value);)
            facts[name] = value;
        return facts;
    }

    TemporaryFolder folder;
    fs::path own = folder.path() / "own";
    fs::path plugin = own / "zotavpci.so";
    fs::path state = folder.path() / "state";
    fs::path dump = folder.path() / "bus.dump";
    fs::path configuration = folder.path() / "tav.conf";
    fs::path marker = folder.path() / "state" / "marker";
};

class RaisedHost : public Host {
protected:
    // Gives the host another identity than that of the user who runs it. As root: root's, run by
    // nobody; else that of another of the user's groups. Answers the words to run it with.
    std::string raise() {
        const std::string host = (own / "host").string();
        struct statvfs system = {};
        if (statvfs(own.c_str(), &system) != 0 || (system.f_flag & ST_NOSUID) != 0) {
            ADD_FAILURE() << own << " is where programs cannot raise privileges; set TMPDIR";
            return {};
        }
        fs::copy_file(own / "host", own / "raised");
        const std::string raised = (own / "raised").string();
        if (geteuid() == 0) {
            fs::permissions(raised, fs::perms(04755));
            const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
            ordinary_ = nobody + host;
            return nobody + raised;
        }
        ordinary_ = host;
        std::vector<gid_t> groups(static_cast<std::size_t>(getgroups(0, nullptr)));
        getgroups(static_cast<int>(groups.size()), groups.data());
        for (const gid_t group : groups) {
            if (group != getegid() && chown(raised.c_str(), geteuid(), group) == 0) {
                fs::permissions(raised, fs::perms(02755));
                return raised;
            }
        }
        ADD_FAILURE() << "neither root nor member of a second group: run this test as root";
        return {};
    }

    std::string ordinary_;
};

TEST_F(RaisedHost, TakesNothingFromItsEnvironment) {
    const std::string raised = raise();
    ASSERT_FALSE(raised.empty());
    // In such a process the loader finds nothing beside the plug-in: the host brings the library.
    fs::copy_file(ZOPCIBRD_FILE, own / "zopcibrd.so");
    const std::string arguments =
        "--initialize " + plugin.string() + " " + (own / "zopcibrd.so").string();

    Facts facts = run(raised, arguments);
    ASSERT_EQ(facts["raised"], "1") << "the system does not raise privileges here";
    EXPECT_EQ(facts["configuration"], "/etc/tav-manager.conf");
    EXPECT_EQ(facts["bus"], "/sys");
    EXPECT_EQ(facts["ownConfiguration"], std::to_string(EPERM));
    EXPECT_EQ(facts["ownBus"], std::to_string(EPERM));
    EXPECT_TRUE(facts["initialize"] == "-52003" || fs::exists("/etc/tav-manager.conf"))
        << facts["initialize"];
    EXPECT_TRUE(fs::is_empty(state)) << "the configuration of the environment was used";

    // The same program without privileges, in the same environment.
    facts = run(ordinary_, arguments);
    EXPECT_EQ(facts["raised"], "0");
    EXPECT_EQ(facts["configuration"], configuration.string());
    EXPECT_EQ(facts["bus"], dump.string());
    EXPECT_EQ(facts["ownConfiguration"], "0");
    EXPECT_EQ(facts["ownBus"], "0");
    EXPECT_EQ(facts["initialize"], "0");
    EXPECT_EQ(facts["devices"], "4");
    EXPECT_FALSE(fs::is_empty(state));
    testsupport::figure(2, "environment overrides that raised privileges switch off");
}

// A folder that somebody else can write to, with a bridge library in it.
class LibrarySearch : public Host {
protected:
    LibrarySearch() {
        fs::create_directories(current / "glibc-hwcaps" / "x86-64-v2");
        for (const char* place : {"", "sub", "glibc-hwcaps/x86-64-v2"}) {
            fs::create_directories(current / place);
            fs::copy_file(PLANTED_BRIDGE_FILE, current / place / "zopcibrd.so");
        }
    }

    // With the current folder there, and the loader's path as given, or none.
    [[nodiscard]] Facts runThere(const char* path, const std::string& arguments) const {
        const std::string setting = path == nullptr
                                        ? "unset LD_LIBRARY_PATH; "
                                        : "export LD_LIBRARY_PATH='" + std::string(path) + "'; ";
        return run("cd " + current.string() + "; " + setting + (own / "host").string(), arguments);
    }

    fs::path current = folder.path() / "current";
};

constexpr const char* kPaths[] = {nullptr,         "",  ":",  "::",  "/nowhere:",    ":/nowhere",
                                  "/nowhere::/no", ".", "./", "sub", "/nowhere:sub", "sub:.",
                                  "../current",    ";"};
// A host loads the plug-in beside its own libraries or apart from them, where a sanitizer, which is
// the program's, is not to be found.
std::vector<std::string> hosts(const std::string& words) {
    if (testsupport::isSanitized())
        return {words};
    return {words, "--apart " + words};
}

TEST_F(LibrarySearch, NeverUsesTheCurrentFolder) {
    std::uint64_t paths = 0;
    for (const char* path : kPaths) {
        SCOPED_TRACE(path == nullptr ? "none" : path);
        for (const std::string& host : hosts("--initialize ")) {
            SCOPED_TRACE(host);
            Facts facts = runThere(path, host + plugin.string());
            EXPECT_EQ(facts["initialize"], "-52005");
            EXPECT_FALSE(fs::exists(marker));
        }
        ++paths;
    }
    testsupport::figure(paths, "loader paths under which the current folder is not searched");
}

TEST_F(LibrarySearch, FindsTheLibraryBesideThePluginInSpiteOfIt) {
    fs::copy_file(ZOPCIBRD_FILE, own / "zopcibrd.so");
    for (const char* path : kPaths) {
        SCOPED_TRACE(path == nullptr ? "none" : path);
        for (const std::string& host : hosts("--initialize ")) {
            SCOPED_TRACE(host);
            Facts facts = runThere(path, host + plugin.string());
            EXPECT_EQ(facts["initialize"], "0");
            EXPECT_EQ(facts["devices"], "4");
            EXPECT_FALSE(fs::exists(marker));
        }
    }
}

TEST_F(LibrarySearch, FollowsWholePathsOfTheEnvironment) {
    const fs::path elsewhere = folder.path() / "elsewhere";
    fs::create_directory(elsewhere);
    fs::copy_file(ZOPCIBRD_FILE, elsewhere / "zopcibrd.so");
    for (const std::string& path : {elsewhere.string(), ":" + elsewhere.string(),
                                    elsewhere.string() + ":", "sub:" + elsewhere.string()}) {
        SCOPED_TRACE(path);
        for (const std::string& host : hosts("--initialize ")) {
            SCOPED_TRACE(host);
            Facts facts = runThere(path.c_str(), host + plugin.string());
            EXPECT_EQ(facts["initialize"], "0");
            EXPECT_EQ(facts["devices"], "4");
            EXPECT_FALSE(fs::exists(marker));
        }
    }
}

// What the loader alone would do, so that the tests above are seen to be about something.
TEST_F(LibrarySearch, OfTheLoaderAloneUsesTheCurrentFolder) {
    for (const char* path : {":", "/nowhere:", ".", "sub", ";"}) {
        SCOPED_TRACE(path);
        for (const std::string& host : hosts("")) {
            SCOPED_TRACE(host);
            EXPECT_EQ(runThere(path, host + "zopcibrd.so")["loaded"], "1");
            EXPECT_TRUE(fs::remove(marker));
        }
    }
}

} // namespace

// Files of absurd size and content in place of each file that the product reads: the memory that
// they take stays proportional to their size, the work comes to an end, and what is wrong is told.
#include "include/tavPlugin.h"
#include "tests/hostile/boundedRun.h"
#include "tests/hostile/documentedStatuses.h"
#include "tests/hostile/hugeFile.h"
#include "tests/hostile/memory.h"
#include "tests/plugin/pluginCopy.h"
#include "tests/support/busBuilder.h"
#include "tests/support/effort.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using testhostile::kMegabyte;
namespace fs = std::filesystem;
using nlohmann::json;
using testhostile::BoundedResult;
using testhostile::HugeFile;
using testhostile::runBounded;
using testsupport::effort;
using testsupport::figure;
using testsupport::TemporaryFolder;

// A model with these texts that is on the sample bus twice.
std::string description(const std::string& model, const std::string& base = "TAV",
                        const std::string& labels = "HOST,1,2,3") {
    return "[UpstreamTAV]\nModel=" + model +
           "\nDeviceCategory=SwitchboxTav\nInternalBridges=\"\"\nConnectorLabels=" + labels +
           "\nDownstreamPorts=1,2,3\nHasUpstreamPort=1\nTerminalNameBase=" + base +
           "\n[Anchor]\nPciHeaderType=1\nVid=104C\nPid=8232\nSsVid=0\nSsPid=0\n"
           "[UpstreamPort]\nIDsSameAs=Anchor\nTraversalMapFromAnchor=\"\"\n"
           "[DownstreamPort1]\nVid=104C\nPid=8233\nSsVid=0\nSsPid=0\nTraversalMapFromAnchor=d0f0\n"
           "[DownstreamPort2]\nIDsSameAs=DownstreamPort1\nTraversalMapFromAnchor=d1f0\n"
           "[DownstreamPort3]\nIDsSameAs=DownstreamPort1\nTraversalMapFromAnchor=d2f0\n";
}

class HostileFiles : public testing::Test {
protected:
    HostileFiles() {
        fs::create_directories(box.parent_path());
        fs::create_directory(state);
        HugeFile(box).text(description("Box")).finish();
    }

    // Runs tavctl on these files, of which `inputBytes` are huge.
    [[nodiscard]] BoundedResult run(std::vector<std::string> arguments, std::uint64_t inputBytes,
                                    std::size_t perByte) const {
        const std::string command = arguments.front();
        arguments.insert(arguments.end(), {"--dump", dump.string(), "--descriptions",
                                           descriptions.string(), "--state", state.string()});
        return runAsTold(command, arguments, inputBytes, perByte);
    }

    static BoundedResult runAsTold(const std::string& command,
                                   const std::vector<std::string>& arguments,
                                   std::uint64_t inputBytes, std::size_t perByte) {
        BoundedResult result =
            runBounded(TAVCTL_FILE, arguments, static_cast<unsigned>(effort(200, 1'200)));
        EXPECT_FALSE(result.hung);
        EXPECT_EQ(result.signal, 0);
        EXPECT_LT(result.peak, testhostile::memoryBound(inputBytes, perByte));
        if (inputBytes > kMegabyte)
            figure(result.peak / kMegabyte, "megabytes at most for " + command + " on " +
                                                std::to_string(inputBytes / kMegabyte) +
                                                " megabytes of input");
        return result;
    }

    // Lists the devices; the list, or null and the failure.
    json list(std::uint64_t inputBytes = 0, std::size_t perByte = 0) {
        const BoundedResult result = run({"list", "--json"}, inputBytes, perByte);
        error = json();
        if (result.exitStatus == 0)
            return json::parse(result.output)["devices"];
        EXPECT_EQ(result.exitStatus, 3);
        error = json::parse(result.error)["error"];
        EXPECT_TRUE(testhostile::isDocumentedInitialize(error["status"])) << error;
        EXPECT_NE(error["operation"], "");
        return {};
    }

    [[nodiscard]] std::string names() const { return testsupport::fileTextIfAny(nameFile); }

    TemporaryFolder folder;
    fs::path descriptions = folder.path() / "descriptions";
    fs::path box = descriptions / "PCI Hardware Descriptions" / "box.ini";
    fs::path state = folder.path() / "state";
    fs::path nameFile = state / "zotavpci.ini";
    fs::path dump = testplugin::kSampleDump;
    json error;
};

// How large the hostile thing is. A checked program takes ten times as long for each byte; what it
// is after shows in a quarter of them, and how memory grows the other run holds.
std::uint64_t sizeOf(std::uint64_t inEveryRun, std::uint64_t inLongRuns) {
    constexpr std::uint64_t kLessWhereChecked = 4;
    const std::uint64_t size = effort(inEveryRun, inLongRuns);
    return testsupport::isSanitized() ? size / kLessWhereChecked : size;
}

// A line as long as files are, in each file.

std::uint64_t longLine() {
    return sizeOf(64, 1024) * kMegabyte;
}

TEST_F(HostileFiles, LongLineInADescriptionThatFitsNoDevice) {
    const auto size = HugeFile(box.parent_path() / "aaa.ini")
                          .text("[UpstreamTAV]\nModel=")
                          .fill("A", longLine())
                          .text("\nDeviceCategory=PCI\nInternalBridges=\"\"\nConnectorLabels=\"\"\n"
                                "DownstreamPorts=\"\"\nHasUpstreamPort=0\n[Anchor]\n"
                                "PciHeaderType=1\nVid=1\nPid=2\nSsVid=3\nSsPid=4\n")
                          .finish();
    EXPECT_EQ(list(size, 5).size(), 2U) << error;
}

TEST_F(HostileFiles, LongLineInTheDescriptionOfADevice) {
    const auto size = HugeFile(box)
                          .text(description("Box"))
                          .text("[UpstreamTAV]\nModel=")
                          .fill("\\", 32 * kMegabyte) // each is stored as two
                          .finish();
    EXPECT_TRUE(list(size, 20).is_null());
    EXPECT_EQ(error["operation"], "read attribute");
    EXPECT_EQ(error["status"], kTavManErrSoftwareFault); // a text that is too long for a host
    EXPECT_TRUE(list(size * 5, 8).is_null());            // with the names that are stored now
}

TEST_F(HostileFiles, LongLineInTheNameFile) {
    const auto size = HugeFile(nameFile)
                          .text("[MR00:77]\r\nModel=Box\r\nTerminalName=TAV")
                          .fill("1", longLine())
                          .finish();
    EXPECT_EQ(list(size, 6).size(), 2U) << error;
    EXPECT_GT(fs::file_size(nameFile), size); // all of it is still there
}

TEST_F(HostileFiles, LongLineInTheConfiguration) {
    const fs::path file = folder.path() / "tav.conf";
    const auto size = HugeFile(file)
                          .text("[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\nConfigPath=" +
                                state.string() + "/\nPath=/")
                          .fill("A", longLine())
                          .finish();
    const testsupport::EnvironmentValue configuration("TAV_MANAGER_CONF", file.string());
    const BoundedResult result =
        runAsTold("list", {"list", "--json", "--dump", dump.string()}, size, 6);
    EXPECT_EQ(result.exitStatus, 3);
    const std::string start =
        R"({"version":1,"error":{"operation":"list descriptions","object":"/AAAA)";
    EXPECT_EQ(result.error.substr(0, start.size()), start);
}

TEST_F(HostileFiles, LongLineInADumpIsRefused) {
    dump = folder.path() / "bus.dump";
    HugeFile(dump).fill("00 ", longLine()).finish();
    EXPECT_TRUE(list().is_null());
    EXPECT_EQ(error["reason"], dump.string() + ": a line is longer than 1048576 bytes");
}

// As many sections as a file of a few hundred megabytes has.

std::uint64_t manySections() {
    return sizeOf(1'000'000, 10'000'000);
}

TEST_F(HostileFiles, ManySectionsInADescription) {
    const auto size = HugeFile(box)
                          .text(description("Box"))
                          .numbered("[Section #]\nKey=#\n", manySections())
                          .finish();
    figure(manySections(), "sections in a description");
    EXPECT_EQ(list(size, 16).size(), 2U) << error;
}

TEST_F(HostileFiles, ManySectionsInTheNameFile) {
    const auto size =
        HugeFile(nameFile)
            .numbered("[MR00:#]\r\nModel=Box\r\nTerminalName=TAV#\r\n", manySections())
            .finish();
    figure(manySections(), "names in a name file");
    const json devices = list(size, 40); // with those that are not there, which are told
    ASSERT_EQ(devices.size(), 2U) << error;
    EXPECT_EQ(devices[0]["name"], "TAV" + std::to_string(manySections()));
    EXPECT_EQ(devices[1]["name"], "TAV" + std::to_string(manySections() + 1));
    EXPECT_EQ(run({"names", "check", "--stored"}, size, 40).exitStatus, 1); // they are no slots
}

TEST_F(HostileFiles, SectionsAndKeysOfOneName) {
    const std::uint64_t count = manySections();
    const auto size = HugeFile(box)
                          .text(description("Box"))
                          .numbered("[One]\nOne=#\n", count)
                          .numbered("[Keys]\n# = a\n # Line1 = b\n", 2)
                          .numbered("Key # = a\n", count / 2)
                          .numbered("Joined Line# = a\n", count / 2)
                          .finish();
    EXPECT_EQ(list(size, 16).size(), 2U) << error;
    // Lint tells of each of them, so it takes a part of them.
    const auto part =
        HugeFile(box).text(description("Box")).numbered("[One]\nOne=#\n", count / 20).finish();
    EXPECT_EQ(runAsTold("lint", {"lint", box.string()}, part, 1'000).exitStatus, 0);
}

// Every slot has the name that the first device would get.
TEST_F(HostileFiles, NameFileFullOfOneName) {
    const std::uint64_t count = sizeOf(200'000, 2'000'000);
    const auto size = HugeFile(nameFile)
                          .numbered("[MR00:#]\r\nModel=Box\r\nTerminalName=TAV1\r\n", count)
                          .finish();
    const json devices = list(size, 40);
    ASSERT_EQ(devices.size(), 2U) << error;
    EXPECT_EQ(devices[0]["name"], "TAV2");
    EXPECT_EQ(devices[1]["name"], "TAV3");
    EXPECT_EQ(run({"names", "check", "--stored"}, size, 60).exitStatus, 1);
    EXPECT_EQ(run({"names", "check"}, size, 60).exitStatus, 1);
    EXPECT_EQ(run({"names", "list"}, size, 60).exitStatus, 0);
    EXPECT_EQ(run({"names", "preview"}, size, 60).exitStatus, 0);
    figure(count, "slots with one name in a name file");
}

TEST_F(HostileFiles, NothingButNulBytes) {
    const std::string nul(1, '\0');
    const std::uint64_t size = longLine();
    HugeFile(nameFile).fill(nul, size).finish();
    EXPECT_EQ(list(size, 5).size(), 2U) << error;
    HugeFile(box).text(description("Box")).fill(nul, size).finish();
    EXPECT_EQ(list(size, 5).size(), 2U) << error;
    HugeFile(box).fill(nul, size).finish();
    EXPECT_TRUE(list(size, 5).is_null());
    EXPECT_EQ(error["object"], box.string());
    EXPECT_EQ(error["status"], -313317); // there is no section
    const BoundedResult lint = runAsTold("lint", {"lint", box.string()}, size, 12);
    EXPECT_EQ(lint.exitStatus, 1);
    HugeFile(box).text(description("Box")).finish();
    dump = folder.path() / "bus.dump";
    HugeFile(dump).fill(nul, size).finish();
    EXPECT_TRUE(list().is_null());
    EXPECT_EQ(error["reason"], dump.string() + ": a line is longer than 1048576 bytes");
}

// Thousands of models that every box of one kind can be taken for: what is kept of each is little.
TEST_F(HostileFiles, ManyDescriptionsOfOneBox) {
    const std::uint64_t count = sizeOf(5'000, 100'000);
    std::uint64_t size = 0;
    for (std::uint64_t i = 0; i < count; ++i)
        size += HugeFile(box.parent_path() / ("box" + std::to_string(i) + ".ini"))
                    .text(description("Box " + std::to_string(i)))
                    .finish();
    figure(count, "description files");
    const BoundedResult explained = run({"explain", "--json"}, size, 4);
    EXPECT_EQ(explained.exitStatus, 0);
    EXPECT_EQ(json::parse(explained.output)["models"].size(), count + 1);
    const BoundedResult linted =
        runAsTold("lint", {"lint", "--json", "--descriptions", descriptions.string()}, size, 4);
    EXPECT_EQ(linted.exitStatus, 0);
    EXPECT_EQ(json::parse(linted.output)["warnings"], count);
}

// 255 alternate anchors and 255 bridges, which count once for each anchor.

std::string wideDescription(unsigned anchors, unsigned bridges, bool equal) {
    std::string alternates;
    std::string internal;
    std::string sections;
    for (unsigned i = 1; i <= anchors; ++i) {
        alternates += (i == 1 ? "" : ",") + std::to_string(i);
        sections += "[AlternateAnchor" + std::to_string(i) + "]\nPciHeaderType=1\nVid=104C\nPid=" +
                    (equal ? "8232" : std::to_string(1000 + i)) + "\nSsVid=0\nSsPid=0\n";
    }
    for (unsigned i = 1; i <= bridges; ++i) {
        internal += (i == 1 ? "" : ",") + std::to_string(i);
        sections += "[InternalBridge" + std::to_string(i) +
                    "]\nVid=104C\nPid=8233\nSsVid=0\nSsPid=0\nTraversalMapFromAnchor=d" +
                    std::to_string(i % 32) + "f" + std::to_string(i / 32) +
                    "\nIsOptional=" + (equal ? "0" : "1") + "\n";
    }
    return "[UpstreamTAV]\nModel=Wide\nDeviceCategory=PCI\nInternalBridges=" + internal +
           "\nConnectorLabels=\"\"\nDownstreamPorts=\"\"\nHasUpstreamPort=1\n"
           "[UpstreamPort]\nIDsSameAs=Anchor\nTraversalMapFromAnchor=\"\"\nIsOptional=1\n"
           "[Anchor]\nAlternateAnchors=" +
           alternates + "\nPciHeaderType=1\nVid=104C\nPid=8232\nSsVid=0\nSsPid=0\n" + sections;
}

// No bridge has those identifiers but of the first anchor, where the optional ones are left out.
TEST_F(HostileFiles, WideDescriptionWithAnchorsOfTheirOwn) {
    const auto width = static_cast<unsigned>(sizeOf(255, 255));
    HugeFile(box).text(wideDescription(width, width, false)).finish();
    EXPECT_TRUE(list(kMegabyte, 100).empty()) << error;
    EXPECT_TRUE(error.is_null());
    figure(width * (width + 1ULL), "bridges of a description whose anchors are all alternate");
    EXPECT_NE(run({"explain"}, kMegabyte, 400).exitStatus, 3);
    EXPECT_FALSE(runAsTold("lint", {"lint", box.string()}, kMegabyte, 400).hung);
}

// Every anchor is every other, and every bridge is asked for again and again.
TEST_F(HostileFiles, WideDescriptionWithOneAnchorOverAndOver) {
    const auto width = static_cast<unsigned>(sizeOf(63, 255));
    HugeFile(box).text(wideDescription(width, width, true)).finish();
    EXPECT_TRUE(list(kMegabyte, 200).empty()) << error;
    EXPECT_TRUE(error.is_null());
}

TEST_F(HostileFiles, IdentifiersThatReferInACircleAreNotFollowed) {
    const std::string text = description("Box");
    HugeFile(box).text(text + "[Anchor]\nIDsSameAs=Anchor\n").finish();
    EXPECT_EQ(list().size(), 2U) << error; // one step, to itself
    HugeFile(box)
        .text(text + "[Anchor]\nIDsSameAs=DownstreamPort1\n[DownstreamPort1]\nIDsSameAs=Anchor\n")
        .finish();
    EXPECT_TRUE(list().empty()); // the two have changed places
    EXPECT_TRUE(error.is_null());
    HugeFile(box)
        .text("[Anchor]\nIDsSameAs=UpstreamPort\n[DownstreamPort1]\nIDsSameAs=DownstreamPort2\n" +
              text)
        .finish();
    EXPECT_TRUE(list().is_null()); // a section that has none itself
    EXPECT_EQ(error["reason"], "[UpstreamPort] has no Vid; its own IDsSameAs is not followed; "
                               "expected the name of a section with Vid, Pid, SsVid and SsPid");
    EXPECT_EQ(error["status"], -313322);
    for (const char* word : {"explain", "lint"})
        EXPECT_FALSE(run({word}, 0, 0).hung);
}

// What a format function would take for conversions, in every text that the product handles.
TEST_F(HostileFiles, ConversionsInTextsAreTexts) {
    const std::string evil = "%n%s%99999999d%n";
    HugeFile(box)
        .text(description(evil, evil, evil + "0," + evil + "," + evil + "2," + evil))
        .finish();
    fs::rename(box, box.parent_path() / (evil + ".ini"));
    const fs::path strangeState = folder.path() / evil;
    fs::create_directory(strangeState);
    state = strangeState;
    nameFile = state / "zotavpci.ini";
    HugeFile(nameFile)
        .text("[" + evil + "]\r\n" + evil + "=" + evil + "\r\nTerminalName=" + evil + "\r\n")
        .finish();
    dump = folder.path() / (evil + ".dump");
    fs::copy_file(testplugin::kSampleDump, dump);
    for (int turn = 0; turn < 2; ++turn) { // given, and then found again or given anew
        const json devices = list();
        ASSERT_EQ(devices.size(), 2U) << error;
        EXPECT_EQ(devices[0]["model"], evil);
        EXPECT_EQ(devices[0]["ports"][0]["label"], evil);
        EXPECT_EQ(devices[0]["name"].get<std::string>().substr(0, evil.size()), evil);
    }
    for (const std::vector<std::string>& words : {std::vector<std::string>{"list"},
                                                  {"tree"},
                                                  {"draw"},
                                                  {"explain"},
                                                  {"names"},
                                                  {"names", "check"},
                                                  {"names", "preview"},
                                                  {"list", "--json"}}) {
        const BoundedResult result = run(words, 0, 0);
        EXPECT_LE(result.exitStatus, 1) << words.front() << result.error;
        EXPECT_GE(result.exitStatus, 0) << words.front();
    }
    EXPECT_LE(runAsTold("lint", {"lint", "--descriptions", descriptions.string()}, 0, 0).exitStatus,
              1);
    // And in what goes wrong.
    HugeFile(box).text("[UpstreamTAV]\nModel=" + evil + "\nDeviceCategory=" + evil + "\n").finish();
    EXPECT_TRUE(list().is_null());
    const std::string reason = "DeviceCategory: \"" + evil +
                               "\" is no device category; expected exactly PCI, Expresscard or "
                               "SwitchboxTav";
    EXPECT_EQ(error["reason"], reason);
    EXPECT_EQ(run({"list"}, 0, 0).error.find(": " + reason + "\n") == std::string::npos, false);
}

// Wherever a safe write could put its temporary file, a link waits for it.
TEST_F(HostileFiles, StateFolderFullOfLinks) {
    ASSERT_EQ(list().size(), 2U) << error;
    const std::string before = names();
    const fs::path backup = folder.path() / "backup.ini";
    ASSERT_EQ(run({"names", "backup", backup.string()}, 0, 0).exitStatus, 0);
    const std::string absent = "\r\n[MR00:78]\r\nModel = X\r\nTerminalName = X1\r\n";
    std::ofstream(backup, std::ios::app | std::ios::binary) << absent;
    const fs::path victim = folder.path() / "victim";
    HugeFile(victim).text("untouched").finish();
    const fs::path targets[] = {victim,         "/dev/zero",  "/dev/null",
                                "nowhere/file", "ini$$0.TMP", folder.path() / "new"};
    std::size_t links = 0;
    for (; links < 1000; ++links)
        fs::create_symlink(targets[links % std::size(targets)],
                           state / ("ini$$" + std::to_string(links) + ".TMP"));
    fs::create_symlink(victim, state / "zotavpci.TMP");
    const BoundedResult result = run({"names", "restore", backup.string()}, 0, 0);
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(result.error, "tavctl: write terminal names (" + nameFile.string() +
                                "): every name for a temporary file beside it is taken\n");
    EXPECT_EQ(names(), before);
    EXPECT_EQ(fs::file_size(victim), 9U);
    EXPECT_FALSE(fs::exists(folder.path() / "new"));
    EXPECT_EQ(list().size(), 2U) << error; // which needs no temporary file
    EXPECT_EQ(names(), before);
    // One name is enough.
    fs::remove(state / "ini$$999.TMP");
    EXPECT_EQ(run({"names", "restore", backup.string()}, 0, 0).exitStatus, 0);
    EXPECT_EQ(names(), before + absent);
    EXPECT_EQ(fs::file_size(victim), 9U);
    figure(links, "links in a state folder");
}

} // namespace

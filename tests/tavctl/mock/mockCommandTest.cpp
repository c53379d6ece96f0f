// tavctl mock as a person runs it.
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/mock/randomPlan.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testsupport::FileFolder;

constexpr const char* kB3 = "'TAV-B3 Switch Box' ";
constexpr const char* kC1 = "'TAV-C1 Adapter Card' ";
constexpr const char* kW7 = "'TAV-W7 Wide Switch Box' ";
const std::string kMachine = TAV_SOURCE_DIR "/samples/switchboxes.dump ";

class Mock : public testing::Test {
protected:
    // What list says of the bus that mock makes by these words.
    std::string listed(const std::string& words) {
        const std::string dump = folder_.file("made.dump");
        const auto made = runTavctl("mock " + words + " " + kDescriptions + "--force -o " + dump);
        if (made.exitStatus != 0)
            return made.output;
        const std::string state = folder_.file("state");
        fs::remove_all(state);
        fs::create_directory(state);
        return outputOf("list -v --dump " + dump + " " + kDescriptions + "--state " + state);
    }

    std::string listedByPlan(const std::string& plan, const std::string& more = {}) {
        return listed("--plan " + folder_.write("lab.plan", plan) + " " + more);
    }

    // What is said of a plan that is refused.
    testing::AssertionResult refuses(const std::string& plan, const std::string& text) {
        const std::string file = folder_.write("bad.plan", plan);
        return says(
            runTavctl("mock --plan " + file + " " + kDescriptions + "-o " + folder_.file("none")),
            1, "tavctl: plan the bus (" + file + text);
    }

    FileFolder folder_;
};

TEST_F(Mock, MakesABusOnWhichTheBoxIsListed) {
    EXPECT_EQ(listed(kB3), "NAME  MODEL              ADDRESS  CATEGORY      PORTS\n"
                           "TAV1  TAV-B3 Switch Box  01:00.0  SwitchboxTav  1,2,3\n"
                           "  upstream  bus 01  runs x1 2.5 GT/s\n"
                           "  port  1  bus 03  empty\n"
                           "  port  2  bus 04  empty\n"
                           "  port  3  bus 05  empty\n");
}

TEST_F(Mock, FindsWidthsByWhichTheLabelsComeOutEven) {
    EXPECT_EQ(listed(kW7), "NAME  MODEL                   ADDRESS  CATEGORY      PORTS\n"
                           "TAV1  TAV-W7 Wide Switch Box  01:00.0  SwitchboxTav  "
                           "A1,B1,B2,C1,C2,C3,C4\n"
                           "  upstream  bus 01  runs x8 2.5 GT/s\n"
                           "  port  A1  bus 03  x4  2.5 GT/s  empty\n"
                           "  port  B1  bus 04  x8  2.5 GT/s  empty\n"
                           "  port  B2  bus 04  x8  2.5 GT/s  empty\n"
                           "  port  C1  bus 05  x16  2.5 GT/s  empty\n"
                           "  port  C2  bus 05  x16  2.5 GT/s  empty\n"
                           "  port  C3  bus 05  x16  2.5 GT/s  empty\n"
                           "  port  C4  bus 05  x16  2.5 GT/s  empty\n");
}

TEST_F(Mock, PutsTheLastModelsAndCardsInTheirPlaces) {
    EXPECT_EQ(listed(std::string(kB3) + kW7 + kC1 + kB3 +
                     "--in TAV1:2 'root 40' --card TAVCard1:RIGHT TAV3:3"),
              "NAME      MODEL                   ADDRESS  CATEGORY      PORTS\n"
              "TAV1      TAV-B3 Switch Box       01:00.0  SwitchboxTav  1,2,3\n"
              "  upstream  bus 01  runs x1 2.5 GT/s\n"
              "  port  1  bus 03  empty\n"
              "  port  2  bus 04  runs x1 2.5 GT/s\n"
              "  port  3  bus 08  empty\n"
              "TAV2      TAV-B3 Switch Box       41:00.0  SwitchboxTav  1,2,3\n"
              "  upstream  bus 41  runs x1 2.5 GT/s\n"
              "  port  1  bus 43  empty\n"
              "  port  2  bus 44  empty\n"
              "  port  3  bus 45  runs x1 2.5 GT/s\n"
              "TAVCard1  TAV-C1 Adapter Card     04:00.0  PCI           LEFT,RIGHT\n"
              "  port  LEFT   bus 06  empty\n"
              "  port  RIGHT  bus 07\n"
              "TAV3      TAV-W7 Wide Switch Box  09:00.0  SwitchboxTav  A1,B1,B2,C1,C2,C3,C4\n"
              "  upstream  bus 09  runs x8 2.5 GT/s\n"
              "  port  A1  bus 0b  x4  2.5 GT/s  empty\n"
              "  port  B1  bus 0c  x8  2.5 GT/s  empty\n"
              "  port  B2  bus 0c  x8  2.5 GT/s  empty\n"
              "  port  C1  bus 0d  x16  2.5 GT/s  empty\n"
              "  port  C2  bus 0d  x16  2.5 GT/s  empty\n"
              "  port  C3  bus 0d  x16  2.5 GT/s  empty\n"
              "  port  C4  bus 0d  x16  2.5 GT/s  empty\n");
}

TEST_F(Mock, MakesWhatAPlanSaysOfLinksAndBuses) {
    EXPECT_EQ(listedByPlan("; a lab\n[Box Rack]\nModel = TAV-B3 Switch Box\nBus = 10\n"
                           "Link 2 = x1 of x4 2.5 of 8 GT/s\nBus 1 = 20\nReserve 2 = 8\n"
                           "[Box Wide]\nModel = TAV-W7 Wide Switch Box\nIn = Rack:2\n"
                           "[Endpoint Net]\nIn = Wide:B2\nLink = x4 5 GT/s\n"
                           "Vid = 1234\nPid = 5678\nSsVid = 9abc\nSsPid = def0\nClass = 0280\n"),
              "NAME  MODEL                   ADDRESS  CATEGORY      PORTS\n"
              "TAV1  TAV-B3 Switch Box       10:00.0  SwitchboxTav  1,2,3\n"
              "  upstream  bus 10  runs x1 2.5 GT/s\n"
              "  port  1  bus 20  empty\n"
              "  port  2  bus 21  runs x1 of x4 2.5 GT/s\n"
              "  port  3  bus 2e  empty\n"
              "TAV2  TAV-W7 Wide Switch Box  21:00.0  SwitchboxTav  A1,B1,B2,C1,C2,C3,C4\n"
              "  upstream  bus 21  runs x1 of x4 2.5 GT/s\n"
              "  port  A1  bus 23  x4  2.5 GT/s  empty\n"
              "  port  B1  bus 24  x8  2.5 GT/s  runs x4 2.5 GT/s\n"
              "  port  B2  bus 24  x8  2.5 GT/s  runs x4 2.5 GT/s\n"
              "  port  C1  bus 25  x16  2.5 GT/s  empty\n"
              "  port  C2  bus 25  x16  2.5 GT/s  empty\n"
              "  port  C3  bus 25  x16  2.5 GT/s  empty\n"
              "  port  C4  bus 25  x16  2.5 GT/s  empty\n");
    EXPECT_TRUE(says(runTavctl("tree -n --dump " + folder_.file("made.dump") + " " + kDescriptions +
                               "--state " + folder_.file("state")),
                     0, "1234:5678 9abc:def0"));
}

// The bytes that a port's capabilities and a bus range show are those of the plan.
TEST_F(Mock, KeepsBusNumbersFree) {
    ASSERT_TRUE(listedByPlan("[Box A]\nModel = TAV-B3 Switch Box\nReserve 1 = 4\n") != "");
    EXPECT_TRUE(
        says(testsupport::runCommand("lspci -F " + folder_.file("made.dump") + " -vv -s 02:00.0"),
             0, "Bus: primary=02, secondary=03, subordinate=07, sec-latency=0"));
}

TEST_F(Mock, LeavesOutWhatAPlanSaysIsMissing) {
    const std::string description =
        "[UpstreamTAV]\nModel = Half\nDeviceCategory = PCI\nInternalBridges = \"\"\n"
        "ConnectorLabels = UP,A,B\nDownstreamPorts = 1,2,3\nHasUpstreamPort = 1\n"
        "[Anchor]\nPciHeaderType = 1\nVid = 1\nPid = 2\nSsVid = 0\nSsPid = 0\n"
        "[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n"
        "[DownstreamPort1]\nVid = 1\nPid = 3\nSsVid = 0\nSsPid = 0\n"
        "TraversalMapFromAnchor = d0f0\n"
        "[DownstreamPort2]\nIDsSameAs = DownstreamPort1\nTraversalMapFromAnchor = d1f0\n"
        "[DownstreamPort3]\nIDsSameAs = DownstreamPort1\nTraversalMapFromAnchor = d2f0\n";
    fs::create_directories(folder_.file("PCI Hardware Descriptions"));
    folder_.write("PCI Hardware Descriptions/half.ini", description);
    const std::string plan =
        folder_.write("half.plan", "[Box H]\nModel = Half\nMissing = DownstreamPort2\n");
    const std::string dump = folder_.file("half.dump");
    const std::string own = "--descriptions " + folder_.file("") + " ";
    EXPECT_TRUE(says(runTavctl("mock --plan " + plan + " -o " + dump + " " + own), 0,
                     "wrote " + dump + ": 1 device\ntavctl: Half at 01:00.0 (TAV1)\n"));
    EXPECT_TRUE(
        says(runTavctl("list -v --dump " + dump + " --state " + folder_.file("") + " " + own), 0,
             "  port  A  bus 03  empty\n  port  B  bus 04  empty\n"));
    EXPECT_TRUE(says(runTavctl("tree --dump " + dump + " --state " + folder_.file("") + " " + own),
                     0, "02.0"));
    EXPECT_FALSE(says(testsupport::runCommand("lspci -F " + dump), 0, "02:01.0"));
}

TEST_F(Mock, AddsBoxesToARecordedMachine) {
    const std::string devices =
        listed(std::string(kC1) + kB3 + "--in TAV2:1 root --on " + kMachine);
    for (const char* line :
         {"TAV1      TAV-B3 Switch Box       01:00.0", "TAV2      TAV-B3 Switch Box       09:00.0",
          "TAV3      TAV-B3 Switch Box       11:00.0", "TAVCard1  TAV-C1 Adapter Card     04:00.0",
          "TAVCard2  TAV-C1 Adapter Card     0b:00.0",
          "  upstream  bus 41  runs x4 of x8 5 of 8 GT/s"})
        EXPECT_NE(devices.find(line), std::string::npos) << line << "\n" << devices;
    EXPECT_TRUE(says(testsupport::runCommand("lspci -t -F " + folder_.file("made.dump")), 0,
                     "+-07.0-[11-15]----00.0-[12-15]--+-00.0-[13]--\n"));
}

// A port that keeps numbers free is one that a running machine plugs boxes into.
TEST_F(Mock, UsesTheBusNumbersThatAPortKeepsFree) {
    const std::string base = folder_.file("base.dump");
    const std::string plan = folder_.write(
        "base.plan", "[Box A]\nModel = TAV-B3 Switch Box\nReserve 1 = 4\n[Box B]\nModel = "
                     "TAV-B3 Switch Box\n");
    ASSERT_TRUE(says(runTavctl("mock --plan " + plan + " -o " + base + " " + kDescriptions), 0,
                     "TAV-B3 Switch Box at 0a:00.0 (TAV2)"));
    const std::string fitting = "mock " + std::string(kB3) + kDescriptions + "--on " + base;
    const auto made = runTavctl(fitting + " --in TAV1:1 -o " + folder_.file("more.dump"));
    EXPECT_TRUE(says(made, 0, "TAV-B3 Switch Box at 03:00.0 (TAV2)"));
    EXPECT_EQ(made.output.find("other numbers"), std::string::npos) << made.output;
    EXPECT_TRUE(says(runTavctl(fitting + " --in TAV1:2 -o " + folder_.file("new.dump")), 0,
                     "buses of the recorded machine have other numbers now"));
    EXPECT_TRUE(says(runTavctl(fitting + " --in 02:00.0 -o " + folder_.file("at.dump")), 0,
                     "TAV-B3 Switch Box at 03:00.0 (TAV2)"));
}

TEST_F(Mock, WritesABusForEachStepOfAPlan) {
    const std::string plan = folder_.write(
        "steps.plan", "[Box Rack]\nModel = TAV-B3 Switch Box\nLink 2 = x4 8 GT/s\n"
                      "[Box Wide]\nModel = TAV-W7 Wide Switch Box\nIn = Rack:2\n"
                      "[Endpoint Net]\nIn = Wide:A1\nGone = 1\n"
                      "[Step 1 Wide]\nIn = Rack:3\n[Step 1 Net]\nGone = 0\n"
                      "[Step 2 Wide]\nLink = x1 of x8\nBus A1 = 40\n[Step 3 Rack]\nGone = 1\n"
                      "[Step 3 Wide]\nIn = root\n");
    const std::string words = "mock --plan " + plan + " " + kDescriptions;
    EXPECT_TRUE(says(runTavctl(words), 2,
                     "(--steps): the plan has steps; this option says where their buses go"));
    const std::string folder = folder_.file("steps");
    EXPECT_TRUE(says(runTavctl(words + "--steps " + folder), 3, "No such file or directory"));
    fs::create_directory(folder);
    EXPECT_TRUE(says(runTavctl(words + "--steps " + folder), 0,
                     "tavctl: wrote " + folder +
                         "/step-000.dump: 2 devices\n"
                         "tavctl: wrote " +
                         folder +
                         "/step-001.dump: 2 devices\n"
                         "tavctl: wrote " +
                         folder +
                         "/step-002.dump: 2 devices\n"
                         "tavctl: wrote " +
                         folder + "/step-003.dump: 1 device\n"));
    const auto wide = [&](const std::string& step) {
        return testsupport::runCommand(TAVCTL_FILE " list -v 'TAV-W7 Wide Switch Box' --dump " +
                                       folder + "/step-" + step + ".dump " + kDescriptions +
                                       "--state " + folder_.file("") + " 2>/dev/null | sed -n 3,4p")
            .output;
    };
    EXPECT_EQ(wide("000"), "  upstream  bus 04  runs x4 2.5 GT/s\n"
                           "  port  A1  bus 06  x4  2.5 GT/s  empty\n");
    EXPECT_EQ(wide("001"), "  upstream  bus 05  runs x1 2.5 GT/s\n"
                           "  port  A1  bus 07  x4  2.5 GT/s  runs x1 2.5 GT/s\n");
    EXPECT_EQ(wide("002"), "  upstream  bus 05  runs x1 2.5 GT/s\n"
                           "  port  A1  bus 40  x4  2.5 GT/s  runs x1 2.5 GT/s\n");
    EXPECT_EQ(wide("003"), "  upstream  bus 01  runs x1 of x8 2.5 GT/s\n"
                           "  port  A1  bus 40  x4  2.5 GT/s  runs x1 2.5 GT/s\n");
    EXPECT_TRUE(says(runTavctl(words + "--steps " + folder), 3,
                     "step-000.dump): the file exists; --force replaces it"));
    EXPECT_TRUE(says(runTavctl(words + "--force --steps " + folder), 0, "step-003.dump"));
    EXPECT_TRUE(says(runTavctl(words + "-o x --steps " + folder), 2, "--steps"));
}

TEST_F(Mock, SaysAtWhichStepTheBoxesAreNotListed) {
    const std::string plan =
        folder_.write("bad.plan", "[Box A]\nModel = TAV-B3 Switch Box\n[Step 1 A]\nMissing = 2\n");
    EXPECT_TRUE(
        says(runTavctl("mock --plan " + plan + " " + kDescriptions + "--steps " + folder_.file("")),
             1, "tavctl: plan the bus, step 1 (" + plan + ":1:2): 4 labels cannot come"));
    EXPECT_FALSE(folder_.has("step-000.dump"));
}

TEST_F(Mock, RefusesStepsOutOfOrder) {
    const std::string box = "[Box A]\nModel = TAV-B3 Switch Box\n";
    for (const char* number : {"0", "2"})
        EXPECT_TRUE(refuses(box + "[Step " + number + " A]\n",
                            ":3:2): steps stand in their order: step 1 comes next"));
    EXPECT_TRUE(refuses(box + "[Step 1 A]\n[Step 1 A]\n", ":4:2): this step was said of \"A\""));
    EXPECT_TRUE(refuses(box + "[Step 1 B]\n", ":3:2): no box and no endpoint is called \"B\""));
    EXPECT_TRUE(refuses(box + "[Step 1]\n", ":3:2): "));
    EXPECT_TRUE(refuses(box + "[Step 1 A]\n[Box B]\n", ":4:2): it stands behind a step; Gone = 1 "
                                                       "is for what comes later"));
    EXPECT_TRUE(refuses(box + "Gone = 2\n", ":3:8): \"2\" is not 0 or 1"));
}

// tests/guest boots that machine and lists its devices.
TEST_F(Mock, PrintsTheOptionsOfQemuThatMakeTheBus) {
    const std::string words =
        std::string(kB3) + kC1 + kW7 + "--in TAV1:2 'root 40' --card TAVCard1:LEFT TAV1:1 ";
    const std::string head = "# Made by tavctl";
    std::string made = runTavctl("mock --qemu " + words + kDescriptions).output;
    ASSERT_EQ(made.find(head + " " TAV_VERSION), 0U) << made;
    made.erase(head.size(), sizeof TAV_VERSION); // which the file there leaves out, and a blank
    EXPECT_EQ(made,
              testsupport::fileText(kProject / "tests/guest/machines/mocked/devices.machine"));
}

TEST_F(Mock, SaysWhatQemuDoesNotHave) {
    const auto refused = [&](const std::string& plan, const std::string& text) {
        return says(runTavctl("mock --qemu --plan " + folder_.write("qemu.plan", plan) + " " +
                              kDescriptions),
                    1, text);
    };
    const std::string box = "[Box A]\nModel = TAV-B3 Switch Box\n";
    EXPECT_TRUE(refused(box + "[Endpoint E]\nIn = A:1\nPid = 1234\n[Endpoint F]\nIn = A:2\n"
                              "Vid = 1af4\n",
                        "(--qemu): QEMU has no device with the identifiers 1AF4:10D3 subsystem "
                        "8086:0000 and 8086:1234 subsystem 8086:0000"));
    EXPECT_TRUE(refused(box + "Bus 1 = 9\n", "it is the firmware of QEMU's machine that numbers"));
    EXPECT_TRUE(refused(box + "Reserve 1 = 9\n",
                        "(--qemu): QEMU's xio3130-downstream keeps no bus numbers free"));
    EXPECT_TRUE(says(runTavctl("mock --qemu --plan " +
                               folder_.write("wide.plan", "[Box W]\nModel = TAV-W7 Wide Switch "
                                                          "Box\nReserve A1 = 9\nLink = x8 8 GT/s"
                                                          "\n") +
                               " " + kDescriptions),
                     0, ",x-width=4,x-speed=2_5,bus-reserve=9\n"));
    for (const char* other : {"--on x", "--steps x"})
        EXPECT_TRUE(says(runTavctl("mock --qemu Box " + std::string(other)), 2, "--qemu"));
}

TEST_F(Mock, GivesTheSameBytesForTheSameWords) {
    const std::string words =
        "mock " + std::string(kB3) + kC1 + "--in TAV1:2 --card TAV1:1 " + kDescriptions;
    const auto once = runTavctl(words);
    EXPECT_TRUE(says(once, 0,
                     "# Made by tavctl " TAV_VERSION " in the form of lspci -xxx; no machine has "
                     "this bus.\n# 01:00.0 TAV1: TAV-B3 Switch Box\n"
                     "# 04:00.0 TAVCard1: TAV-C1 Adapter Card\n\n00:00.0 0600: "));
    EXPECT_EQ(runTavctl(words).output, once.output);
    folder_.write("made", once.output);
    EXPECT_TRUE(says(runTavctl(words + "-o " + folder_.file("file")), 0, ""));
    EXPECT_EQ(folder_.read("file"), once.output);
}

TEST_F(Mock, IsReadByLspciWithoutAComplaint) {
    ASSERT_NE(listed(std::string(kB3) + kW7 + kC1 + "--in TAV1:1 --card TAV2:A1"), "");
    const std::string lspci = "lspci -F " + folder_.file("made.dump") + " ";
    EXPECT_EQ(testsupport::runCommand(lspci + "-t").output,
              "-[0000:00]-+-00.0\n"
              "           +-01.0-[01-08]----00.0-[02-08]--+-00.0-[03-06]----00.0-[04-06]--+-00.0\n"
              "           |                               |                               "
              "+-02.0-[05]--\n"
              "           |                               |                               "
              "\\-03.0-[06]--\n"
              "           |                               +-01.0-[07]--\n"
              "           |                               \\-02.0-[08]--\n"
              "           \\-02.0-[09-0d]----00.0-[0a-0d]--+-00.0-[0b]----00.0\n"
              "                                           +-00.1-[0c]--\n"
              "                                           \\-00.2-[0d]--\n");
    EXPECT_EQ(testsupport::runCommand(lspci + "-n -vvv 2>&1 >/dev/null | grep -v libkmod").output,
              "");
    const auto details = testsupport::runCommand(lspci + "-n -vvv 2>/dev/null");
    EXPECT_EQ(details.exitStatus, 0);
    for (const char* complaint : {"!!!", "???", "<unassigned>", "access denied", "invalid",
                                  "Unknown", "Chain broken", "error"})
        EXPECT_EQ(details.output.find(complaint), std::string::npos) << complaint;
    EXPECT_NE(details.output.find("Express (v2) Upstream Port"), std::string::npos);
    EXPECT_NE(details.output.find("Express (v2) Downstream Port"), std::string::npos);
    EXPECT_NE(details.output.find("Express (v2) PCI-Express to PCI/PCI-X Bridge"),
              std::string::npos);
}

TEST_F(Mock, LeavesAFileAsItIsWithoutForce) {
    const std::string file = folder_.write("mine", "edited by hand");
    const std::string words = "mock " + std::string(kB3) + kDescriptions + "-o " + file;
    EXPECT_TRUE(says(runTavctl(words), 3, "the file exists; --force replaces it"));
    EXPECT_EQ(folder_.read("mine"), "edited by hand");
    EXPECT_TRUE(says(runTavctl(words + " --force"), 0, "wrote " + file));
    EXPECT_NE(folder_.read("mine"), "edited by hand");
}

TEST_F(Mock, RefusesWordsThatMeanNothing) {
    const auto refused = [&](const std::string& words, int status, const std::string& text) {
        return says(runTavctl("mock " + words + " " + kDescriptions), status,
                    "tavctl: plan the bus" + text);
    };
    EXPECT_TRUE(refused("", 2, ": nothing is to stand on it"));
    EXPECT_TRUE(refused(std::string(kB3) + "--in root root", 2, " (--in): 2 places for 1 model"));
    EXPECT_TRUE(refused("'TAV-B3 Swich Box'", 1,
                        " (TAV-B3 Swich Box): no description file describes a model \"TAV-B3 "
                        "Swich Box\"; did you mean \"TAV-B3 Switch Box\"?"));
    EXPECT_TRUE(refused(std::string(kB3) + "--card TAV1:9", 1,
                        " (TAV1:9): TAV1 has no connector \"9\"; it has 1, 2 and 3"));
    EXPECT_TRUE(refused(std::string(kB3) + "--card TAV9:1", 1,
                        " (TAV9:1): \"TAV9:1\" is no place; one is written as NAME:LABEL of TAV1, "
                        "as root, as root 40 or as the address of a recorded bridge"));
    EXPECT_TRUE(
        refused(std::string(kB3) + "--in TAV1:1", 1, " (TAV1:1): TAV1 would be within itself"));
    EXPECT_TRUE(refused(std::string(kB3) + "--in 00:04.0", 1,
                        " (00:04.0): \"00:04.0\" is an address, and there is no recorded machine "
                        "that it is of"));
    EXPECT_TRUE(refused(std::string(kB3) + "--on " + kMachine + "--in 00:1f.0", 1,
                        " (00:1f.0): no bridge is at 00:1f.0 of the recorded machine"));
    EXPECT_TRUE(refused(std::string(kB3) + "--on " + kMachine + "--in 00:04.0", 1,
                        " (00:04.0): something else stands there already"));
    EXPECT_TRUE(refused(std::string(kB3) + "--on " + kMachine + "--in 'root 9'", 1,
                        " (root 9): bus 09 is no root bus of the recorded machine"));
    EXPECT_TRUE(refused(std::string(kB3) + "--card TAV1:1 TAV1:1", 1,
                        " (TAV1:1): something else stands there already"));
    EXPECT_TRUE(says(runTavctl("mock --plan /nonexistent " + kDescriptions), 3,
                     "tavctl: read the plan (/nonexistent): No such file"));
}

TEST_F(Mock, RefusesWhatARecordedMachineDoesNotAllow) {
    const auto refused = [&](const std::string& plan, const std::string& text) {
        return says(runTavctl("mock --on " + kMachine + "--plan " + folder_.write("on.plan", plan) +
                              " " + kDescriptions),
                    1, text);
    };
    EXPECT_TRUE(refused("[Box A]\nModel = TAV-B3 Switch Box\nIn = TAV2:1\nBus = 55\n",
                        ":4:1): the box is on bus 0b, as recorded"));
    EXPECT_TRUE(refused("[Box TAV1]\nModel = TAV-B3 Switch Box\n",
                        ":1:2): \"TAV1\" is a device of the recorded machine"));
    EXPECT_TRUE(says(runTavctl("mock --card TAV2:1 root --on " + kMachine + kDescriptions), 0,
                     "\n0b:00.0 0200: 8086:10d3\n"));
}

TEST_F(Mock, RefusesMoreThanARootBusHolds) {
    EXPECT_TRUE(says(runTavctl("mock --card $(yes root | head -256) " + kDescriptions), 1,
                     "root bus 00 has no room for another port"));
    EXPECT_TRUE(
        says(runTavctl("mock --qemu --card $(yes root | head -31) 'root 40' " + kDescriptions), 1,
             "root bus 00 has no room for another root bus"));
}

TEST_F(Mock, RefusesDescriptionsThatThePluginDoesNotLoad) {
    const std::string own = "mock Box --descriptions " + folder_.file("") + " ";
    fs::create_directories(folder_.file("PCI Hardware Descriptions"));
    EXPECT_TRUE(says(runTavctl(own), 1, "tavctl: there are no description files in "));
    folder_.write("PCI Hardware Descriptions/bad.ini", "[UpstreamTAV]\nModel = Box\n");
    EXPECT_TRUE(says(runTavctl(own), 1, "tavctl: load description ("));
    folder_.write("huge.plan", std::string(1U << 21, ';'));
    EXPECT_TRUE(says(runTavctl("mock --plan " + folder_.file("huge.plan") + " " + kDescriptions), 1,
                     "huge.plan): it has more than a megabyte"));
}

// Of a card without an upstream port the link is that of its own bridge.
TEST_F(Mock, TakesALinkForTheWayUpOfACard) {
    EXPECT_NE(listedByPlan("[Box C]\nModel = TAV-C1 Adapter Card\nLink = x1 of x4 5 GT/s\n"
                           "[Endpoint E]\nIn = root\nVid = 0x1234\n"),
              "");
    const std::string lspci = "lspci -vv -F " + folder_.file("made.dump") + " -s ";
    EXPECT_TRUE(says(testsupport::runCommand(lspci + "01:00.0"), 0, "Speed 5GT/s, Width x4,"));
    EXPECT_TRUE(
        says(testsupport::runCommand(lspci + "01:00.0"), 0, "LnkSta:\tSpeed 5GT/s, Width x1"));
    EXPECT_TRUE(says(testsupport::runCommand("lspci -n -F " + folder_.file("made.dump")), 0,
                     " 0200: 1234:10d3\n"));
}

TEST_F(Mock, RefusesPlansThatMeanNothing) {
    const std::string box = "[Box A]\nModel = TAV-B3 Switch Box\n";
    EXPECT_TRUE(refuses("Model = x\n", ":1:1): the key stands before the first section"));
    EXPECT_TRUE(refuses("[Crate A]\n", ":1:2): \"Crate A\" is no section of a plan; there are "
                                       "[Box NAME], [Endpoint NAME] and [Step NUMBER NAME]"));
    EXPECT_TRUE(refuses("[Box A]\nIn = root\n", ":1:2): the box has no Model"));
    EXPECT_TRUE(refuses("[Endpoint A]\n", ":1:2): the endpoint has no In"));
    EXPECT_TRUE(refuses(box + "[Box A]\n", ":3:2): \"A\" was begun before"));
    EXPECT_TRUE(refuses("[Box ]\n", ":1:2): "));
    EXPECT_TRUE(refuses(box + "Model = x\n", ":3:1): \"Model\" was given before"));
    EXPECT_TRUE(refuses(box + "In = \"\"\n", ":3:1): \"In\" has no value"));
    EXPECT_TRUE(refuses(box + "odd\n", ":3:1): this is neither a section, a key nor a comment"));
    EXPECT_TRUE(refuses(box + "Lnik = x1\n", ":3:1): \"Lnik\" is no key of this section; did you "
                                             "mean \"Link\"?"));
    EXPECT_TRUE(refuses(box + "Link = fast\n", ":3:8): \"fast\" is no link; one is written as x4, "
                                               "x1 of x4, 8 GT/s or x4 2.5 of 8 GT/s"));
    for (const char* link : {"x0", "x33", "x4 of x1", "x4 of", "x4 9 GT/s", "8", "8 of 2.5 GT/s",
                             "x1 8 GT/s more", "4"})
        EXPECT_TRUE(refuses(box + "Link = " + link + "\n", ":3:8): ")) << link;
    EXPECT_TRUE(refuses(box + "Bus 1 = 0\n",
                        ":3:9): \"0\" is not the hexadecimal number of a bus, 1 to FF"));
    EXPECT_TRUE(
        refuses(box + "Reserve 1 = 255\n", ":3:13): \"255\" is not a number of buses, 0 to 254"));
    EXPECT_TRUE(refuses(box + "Link 7 = x1\n", ":3:1): \"7\" is no label and no bridge of this "
                                               "model; there are UpstreamPort, DownstreamPort1, "
                                               "DownstreamPort2 and DownstreamPort3"));
    EXPECT_TRUE(refuses(box + "Link 1 = x1\nLink DownstreamPort1 = x1\n",
                        ":4:1): something was said of [DownstreamPort1] by another name before"));
    EXPECT_TRUE(refuses(box + "Missing = 1,,2\n", ":3:11): an item of the list is empty"));
    EXPECT_TRUE(refuses(box + "Anchor = Other\n",
                        ":3:10): \"Other\" is no anchor of this model; there is Anchor"));
    EXPECT_TRUE(refuses(box + "In = root zz\n",
                        ":3:6): \"zz\" is not the hexadecimal number of a bus, 0 to FF"));
    EXPECT_TRUE(refuses(box + "[Endpoint E]\nIn = A:1\nVid = 12345\n",
                        ":5:7): \"12345\" is not a hexadecimal number of up to four digits"));
    EXPECT_TRUE(refuses(box + "[Endpoint E]\nModel = x\n", ":4:1): \"Model\" is no key of this "
                                                           "section; there are In, Vid, Pid, "
                                                           "SsVid, SsPid, Class, Link and Gone"));
    EXPECT_TRUE(refuses(box + "Bus 2 = 3\n",
                        ":3:1): bus 03 is in use before; 04 is the first one that is free"));
    EXPECT_TRUE(refuses(box + "Reserve 2 = 254\n", ":3:1): the bus numbers do not last: ff is the "
                                                   "last one there is"));
    EXPECT_FALSE(folder_.has("none"));
}

TEST_F(Mock, SaysWhyThePluginWouldNotListABox) {
    const std::string wide = "[Box A]\nModel = TAV-W7 Wide Switch Box\n";
    EXPECT_TRUE(refuses("[Box A]\nModel = TAV-B3 Switch Box\nMissing = 2\n",
                        ":1:2): 4 labels cannot come out even with the ports that are there and "
                        "their links; a port that is missing takes none"));
    EXPECT_TRUE(refuses(wide + "Link C1 = x4\nLink B1 = x4\nLink A1 = x4\nLink = x4\n",
                        ":1:2): 9 labels cannot come out even with"));
    EXPECT_TRUE(refuses(wide + "Missing = C1\n",
                        ":1:2): the plug-in does not list it: a bridge that is counted is "
                        "missing, at \"d0f2\""));
    EXPECT_TRUE(refuses(wide + "Missing = UpstreamPort\n",
                        ":1:2): its anchor is among what is missing, so the plug-in does not "
                        "find it"));
}

TEST_F(Mock, SaysWhichRuleForbidsABox) {
    const std::string rules = TAV_SOURCE_DIR "/tests/tavctl/lint/rules/";
    fs::create_directories(folder_.file("PCI Hardware Descriptions"));
    for (const char* rule : {"anchor-not-described", "anchor-counted-twice", "too-many-labels"}) {
        fs::copy_file(rules + rule + "/bad/box.ini",
                      folder_.file("PCI Hardware Descriptions/box.ini"),
                      fs::copy_options::overwrite_existing);
        EXPECT_TRUE(says(runTavctl("mock Box --descriptions " + folder_.file("")), 1,
                         std::string("): ") + rule + ": "));
    }
    fs::remove(folder_.file("PCI Hardware Descriptions/box.ini"));
    for (const auto& each : fs::directory_iterator(rules + "same-tree/bad")) {
        if (each.path().extension() == ".ini")
            fs::copy(each.path(), folder_.file("PCI Hardware Descriptions"));
    }
    const auto both = runTavctl("mock --descriptions " + folder_.file("") + " 'Big Box'");
    EXPECT_TRUE(says(both, 1, "same-tree: the box can be taken for this model and for "));
}

// As a host lists it, and not only the plug-in's code in this program.
TEST_F(Mock, RandomPlansAreListedByThePlugin) {
    fs::create_directories(folder_.file("PCI Hardware Descriptions"));
    const std::string own = "--descriptions " + folder_.file("") + " ";
    unsigned compared = 0;
    for (std::uint32_t seed = 1; compared < 10; ++seed) {
        std::mt19937 random(seed);
        const std::vector<testtavctl::RandomBox> models{testtavctl::randomBox(random, 0),
                                                        testtavctl::randomBox(random, 1)};
        const auto plan = testtavctl::randomPlan(random, models);
        if (!plan.isSound)
            continue;
        ++compared;
        for (std::size_t i = 0; i < models.size(); ++i)
            folder_.write("PCI Hardware Descriptions/box" + std::to_string(i) + ".ini",
                          models[i].text);
        const std::string file = folder_.write("random.plan", plan.text);
        const std::string dump = folder_.file("random.dump");
        EXPECT_TRUE(says(runTavctl("mock --force --plan " + file + " -o " + dump + " " + own), 0,
                         "wrote " + dump))
            << seed;
        std::string expected;
        for (const auto& model : models) {
            std::string ports;
            for (std::size_t i = model.upstreamLabels; i < model.labels.size(); ++i)
                ports.append(ports.empty() ? "" : ",").append(model.labels[i]);
            for (const auto& box : plan.boxes) {
                if (&models[box.model] == &model)
                    expected += model.model + " " + (ports.empty() ? "-" : ports) + "\n";
            }
        }
        const auto listed = testsupport::runCommand(
            TAVCTL_FILE " list --dump " + dump + " --state " + folder_.file("") + " " + own +
            "2>/dev/null | tail -n +2 | awk '{ print $2, $3, $6 }'");
        EXPECT_EQ(listed.output, expected) << seed;
        fs::remove(folder_.file("zotavpci.ini"));
    }
}

} // namespace

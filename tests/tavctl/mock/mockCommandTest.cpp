// tavctl mock as a person runs it.
#include "tests/support/fileText.h"
#include "tests/tavctl/mock/mockTest.h"
#include "tests/tavctl/mock/randomPlan.h"
#include "tests/tavctl/sample.h"

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

class Mock : public MockTest {};

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

// The recorded machine is read, and what is left out of it told, once for all of them.
TEST_F(Mock, ReadsTheRecordedMachineOnceForAllSteps) {
    std::string machine = testsupport::fileText(kProject / "samples/switchboxes.dump");
    const std::string row = "\n00: f4 1a 44 10";
    ASSERT_NE(machine.find(row), std::string::npos);
    machine.replace(machine.find(row), row.size(), "\n00: ff ff 44 10"); // nothing answers there
    const std::string folder = folder_.file("steps");
    std::filesystem::create_directory(folder);
    const auto made = runTavctl(
        "mock --plan " +
        folder_.write("steps.plan", "[Box New]\nModel = TAV-C1 Adapter Card\n[Step 1 New]\n"
                                    "In = TAV1:3\n[Step 2 New]\nGone = 1\n") +
        " --on " + folder_.write("machine.dump", machine) + " --steps " + folder + " " +
        kDescriptions);
    EXPECT_TRUE(says(made, 0, "step-002.dump"));
    const std::string told = "1 function ";
    const auto first = made.output.find(told);
    EXPECT_NE(first, std::string::npos) << made.output;
    EXPECT_EQ(made.output.find(told, first + 1), std::string::npos) << made.output;
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

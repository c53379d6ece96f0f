// What tavctl mock refuses, and in which words.
#include "tests/tavctl/mock/mockTest.h"

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;

class MockRefusal : public MockTest {};

TEST_F(MockRefusal, SaysAtWhichStepTheBoxesAreNotListed) {
    const std::string plan =
        folder_.write("bad.plan", "[Box A]\nModel = TAV-B3 Switch Box\n[Step 1 A]\nMissing = 2\n");
    EXPECT_TRUE(
        says(runTavctl("mock --plan " + plan + " " + kDescriptions + "--steps " + folder_.file("")),
             1, "tavctl: plan the bus, step 1 (" + plan + ":1:2): 4 labels cannot come"));
    EXPECT_FALSE(folder_.has("step-000.dump"));
}

TEST_F(MockRefusal, RefusesStepsOutOfOrder) {
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

TEST_F(MockRefusal, SaysWhatQemuDoesNotHave) {
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

TEST_F(MockRefusal, RefusesWordsThatMeanNothing) {
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

TEST_F(MockRefusal, RefusesWhatARecordedMachineDoesNotAllow) {
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

TEST_F(MockRefusal, RefusesMoreThanARootBusHolds) {
    EXPECT_TRUE(says(runTavctl("mock --card $(yes root | head -256) " + kDescriptions), 1,
                     "root bus 00 has no room for another port"));
    EXPECT_TRUE(
        says(runTavctl("mock --qemu --card $(yes root | head -31) 'root 40' " + kDescriptions), 1,
             "root bus 00 has no room for another root bus"));
}

TEST_F(MockRefusal, RefusesDescriptionsThatThePluginDoesNotLoad) {
    const std::string own = "mock Box --descriptions " + folder_.file("") + " ";
    fs::create_directories(folder_.file("PCI Hardware Descriptions"));
    EXPECT_TRUE(says(runTavctl(own), 1, "tavctl: there are no description files in "));
    folder_.write("PCI Hardware Descriptions/bad.ini", "[UpstreamTAV]\nModel = Box\n");
    EXPECT_TRUE(says(runTavctl(own), 1, "tavctl: load description ("));
    folder_.write("huge.plan", std::string(1U << 21, ';'));
    EXPECT_TRUE(says(runTavctl("mock --plan " + folder_.file("huge.plan") + " " + kDescriptions), 1,
                     "huge.plan): it has more than a megabyte"));
}

TEST_F(MockRefusal, RefusesPlansThatMeanNothing) {
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

TEST_F(MockRefusal, SaysWhyThePluginWouldNotListABox) {
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

TEST_F(MockRefusal, SaysWhichRuleForbidsABox) {
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

} // namespace

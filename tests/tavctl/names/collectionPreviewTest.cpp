// tavctl names preview for many recorded machines.
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testing::HasSubstr;

// Two machines with names stored beside their recordings, a third without, and descriptions in
// which the box has another name.
class CollectionPreview : public testing::Test {
protected:
    CollectionPreview() {
        fs::create_directories(folder_.file("lab"));
        for (const char* sample : {"one-switch", "renumbering-first", "conventional-bridges"})
            fs::copy_file(kProject / "samples" / (std::string(sample) + ".dump"),
                          folder_.file("lab/" + std::string(sample) + ".dump"));
        for (const char* sample : {"one-switch", "renumbering-first"})
            storeNames(sample);
        const fs::path changed = folder_.file("changed/PCI Hardware Descriptions");
        fs::create_directories(changed);
        const fs::path source = kProject / "descriptions" / "PCI Hardware Descriptions";
        fs::copy_file(source / "tav-c1-adapter-card.ini", changed / "card.ini");
        std::string box = testsupport::fileText(source / "tav-b3-switch-box.ini");
        const std::string name = "Model = TAV-B3";
        box.replace(box.find(name), name.size(), "Model = TAV-B4");
        folder_.write("changed/PCI Hardware Descriptions/box.ini", box);
    }

    void storeNames(const std::string& sample) const {
        const std::string state = folder_.file("state-" + sample);
        fs::create_directory(state);
        EXPECT_EQ(runTavctl("list " + kDescriptions + "--state " + state + " --dump " +
                            folder_.file("lab/" + sample + ".dump"))
                      .exitStatus,
                  0);
        fs::copy_file(fs::path(state) / "zotavpci.ini", folder_.file("lab/" + sample + ".ini"));
    }

    [[nodiscard]] std::string lab() const { return folder_.file("lab"); }
    [[nodiscard]] testsupport::CommandResult preview(const std::string& more) const {
        return runTavctl("names preview " + kDescriptions + "--dump " + lab() + " " + more);
    }

    testsupport::FileFolder folder_;
};

TEST_F(CollectionPreview, TellsEachMachineWhatBecomesOfItsNames) {
    const auto result = preview("--new-descriptions " + folder_.file("changed"));
    EXPECT_TRUE(says(result, 1,
                     lab() + "/one-switch.dump\n"
                             "NAME  CHANGE             MODEL"));
    EXPECT_THAT(result.output, HasSubstr("TAV2  changes, was TAV1  TAV-B4 Switch Box"));
    EXPECT_THAT(result.output, HasSubstr("TAVCard1  stays"));
    EXPECT_THAT(result.output,
                HasSubstr(lab() + "/conventional-bridges.dump\nhas no described device\n"));
}

TEST_F(CollectionPreview, WithoutAChangeEveryStoredNameStays) {
    const auto result = preview("");
    EXPECT_TRUE(says(result, 0, "TAV1  stays   TAV-B3 Switch Box"));
    EXPECT_EQ(result.output.find("changes"), std::string::npos);
}

TEST_F(CollectionPreview, IsOneDocument) {
    folder_.write("lab/notes.txt", "This is no bus.\n");
    const auto result = testsupport::runCommand(TAVCTL_FILE " names preview " + kDescriptions +
                                                "--dump " + lab() + " --new-descriptions " +
                                                folder_.file("changed") + " --json 2>/dev/null");
    EXPECT_EQ(result.exitStatus, 3);
    const auto machines = nlohmann::json::parse(result.output).at("machines");
    ASSERT_EQ(machines.size(), 4U);
    EXPECT_EQ(machines[1].at("machine"), "notes");
    EXPECT_EQ(machines[1].at("failure").at("operation"), "read the bus");
    EXPECT_EQ(machines[2].at("machine"), "one-switch");
    EXPECT_EQ(machines[2].at("names").at(0).at("before"), "TAV1");
    EXPECT_EQ(machines[2].at("names").at(0).at("change"), "changes");
    EXPECT_EQ(machines[2].at("leftOut").at("dead"), 0);
}

TEST_F(CollectionPreview, WhatADescriptionLosesIsGone) {
    fs::remove(folder_.file("changed/PCI Hardware Descriptions/card.ini"));
    const auto result = preview("--new-descriptions " + folder_.file("changed"));
    EXPECT_TRUE(says(result, 1, "TAVCard1  gone"));
}

TEST_F(CollectionPreview, RefusesWhatOneMachineHasAlone) {
    EXPECT_TRUE(says(preview("--state " + lab()), 2, "tavctl: preview names (--state): "));
    EXPECT_TRUE(says(preview("--new-dump " + kSample), 2,
                     "tavctl: preview names (--new-dump): it is one machine's"));
}

} // namespace

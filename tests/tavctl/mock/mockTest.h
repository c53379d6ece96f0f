// What tests of tavctl mock share: the command as a person runs it, and what list says of the bus
// that it makes.
#pragma once

#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <filesystem>
#include <string>

namespace tavctltest {

inline constexpr const char* kB3 = "'TAV-B3 Switch Box' ";
inline constexpr const char* kC1 = "'TAV-C1 Adapter Card' ";
inline constexpr const char* kW7 = "'TAV-W7 Wide Switch Box' ";
inline const std::string kMachine = TAV_SOURCE_DIR "/samples/switchboxes.dump ";

class MockTest : public testing::Test {
protected:
    // What list says of the bus that mock makes by these words.
    std::string listed(const std::string& words) {
        const std::string dump = folder_.file("made.dump");
        const auto made = runTavctl("mock " + words + " " + kDescriptions + "--force -o " + dump);
        if (made.exitStatus != 0)
            return made.output;
        const std::string state = folder_.file("state");
        std::filesystem::remove_all(state);
        std::filesystem::create_directory(state);
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

    testsupport::FileFolder folder_;
};

} // namespace tavctltest

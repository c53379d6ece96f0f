// The state folder of the sample machine, with the names that a first start gives.
#pragma once

#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <filesystem>
#include <string>

namespace tavctltest {

struct NamesOfSample {
    testsupport::FileFolder folder;
    std::string options;

    explicit NamesOfSample(bool started = true) {
        std::filesystem::create_directory(folder.file("state"));
        options = kDump + kDescriptions + "--state " + folder.file("state") + " ";
        if (started) {
            EXPECT_EQ(runTavctl("list " + options).exitStatus, 0);
        }
    }

    [[nodiscard]] std::string stored() const { return folder.read("state/zotavpci.ini"); }

    void store(const std::string& text) const { folder.write("state/zotavpci.ini", text); }
};

} // namespace tavctltest

// What the commands say when there is nothing that they could tell of, and of a device of the rarer
// category.
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using tavctltest::kDescriptions;
using tavctltest::kDump;
using tavctltest::outputOf;
using tavctltest::runTavctl;
using tavctltest::says;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

// A folder of descriptions and one of names, both without files, and a bus without functions.
class EmptyInput : public testing::Test {
protected:
    EmptyInput() {
        fs::create_directories(descriptionFolder());
        fs::create_directory(folder_.path() / "state");
        std::ofstream(folder_.path() / "empty.dump");
    }

    [[nodiscard]] fs::path descriptionFolder() const {
        return folder_.path() / "PCI Hardware Descriptions";
    }
    // The sample's adapter card as one for the other kind of slot.
    void describeExpresscard() const {
        std::string text = testsupport::fileText(
            TAV_SOURCE_DIR "/descriptions/PCI Hardware Descriptions/tav-c1-adapter-card.ini");
        const std::string category = "DeviceCategory = PCI";
        const std::size_t at = text.find(category);
        ASSERT_NE(at, std::string::npos);
        text.replace(at, category.size(), "DeviceCategory = Expresscard");
        std::ofstream(descriptionFolder() / "card.ini") << text;
    }
    [[nodiscard]] std::string descriptions() const {
        return "--descriptions " + folder_.path().string() + " ";
    }
    [[nodiscard]] std::string state() const {
        return "--state " + (folder_.path() / "state").string() + " ";
    }
    [[nodiscard]] std::string emptyDump() const {
        return "--dump " + (folder_.path() / "empty.dump").string() + " ";
    }

    const testsupport::TemporaryFolder folder_;
};

TEST_F(EmptyInput, ExplainTellsThatThereAreNoDescriptionFiles) {
    EXPECT_TRUE(says(runTavctl("explain " + kDump + descriptions()), 0,
                     "tavctl: there are no description files in "));
}

TEST_F(EmptyInput, TreeTellsThatThereIsNoFunction) {
    EXPECT_TRUE(says(runTavctl("tree " + emptyDump() + kDescriptions + state()), 0,
                     "tavctl: there is no function on this bus\n"));
}

TEST_F(EmptyInput, PreviewTellsThatNoDeviceIsPresent) {
    EXPECT_TRUE(says(runTavctl("names preview " + emptyDump() + kDescriptions + state()), 0,
                     "tavctl: no described device is present on this bus\n"));
}

TEST_F(EmptyInput, DrawingOfNoFunctionIsWhole) {
    const std::string drawing = outputOf("draw " + emptyDump() + kDescriptions + state());
    EXPECT_THAT(drawing, HasSubstr("<svg"));
    EXPECT_THAT(drawing, HasSubstr("</svg>"));
}

TEST_F(EmptyInput, ExpresscardsAreListedByTheirCategory) {
    ASSERT_NO_FATAL_FAILURE(describeExpresscard());
    EXPECT_TRUE(says(runTavctl("list " + kDump + descriptions() + state()), 0,
                     "TAVCard1  TAV-C1 Adapter Card  04:00.0  Expresscard  LEFT,RIGHT\n"));
}

TEST_F(EmptyInput, ExpresscardsAreDrawnInAColourOfTheirOwn) {
    const std::string command = "draw " + kDump;
    EXPECT_THAT(outputOf(command + kDescriptions + state()), Not(HasSubstr("#fef3c7")));
    ASSERT_NO_FATAL_FAILURE(describeExpresscard());
    EXPECT_THAT(outputOf(command + descriptions() + state()), HasSubstr("#fef3c7"));
}

} // namespace

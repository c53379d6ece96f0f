// What is left in a host that initialises the plug-in, or loads and unloads it, for months:
// nothing. Of the system's slots for thread-local storage a process has 1,088, so losing one at a
// time ends a host after a thousand cycles.
#include "tests/support/configuredMachine.h"
#include "tests/support/effort.h"
#include "tests/support/temporaryFolder.h"
#include "tests/windows/hosting/nothingLeft.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using testwindows::expectNothingLeft;

// One switch box and its description, and a state folder: what a cycle takes is mostly loading.
class Machine {
public:
    Machine() {
        fs::create_directories(folder_.path() / kDescriptions);
        fs::copy_file(fs::path(TAV_SOURCE_DIR) / "descriptions" / kDescriptions / kModel,
                      folder_.path() / kDescriptions / kModel);
    }

private:
    static constexpr const char* kDescriptions = "PCI Hardware Descriptions";
    static constexpr const char* kModel = "tav-b3-switch-box.ini";

    testsupport::TemporaryFolder folder_;
    const std::string path_ = folder_.path().string() + "\\";
    testsupport::ConfiguredMachine machine_{
        fs::path(TAV_SOURCE_DIR) / "samples" / "one-switch.dump", {path_, path_}};
};

// Emulated 32-bit programs take 22 ms of the processor for a cycle, so there every run has as many
// as ended a host, and the long form all.
constexpr bool kIs64 = sizeof(void*) == 8;
int cycles(int all, int inEveryRunOf32) {
    const auto count = static_cast<std::uint64_t>(all);
    return static_cast<int>(
        testsupport::effort(kIs64 ? count : static_cast<std::uint64_t>(inEveryRunOf32), count));
}

TEST(Hosting, InitialisingLeavesNothing) {
    const Machine machine;
    expectNothingLeft("initialize", cycles(5000, 1200));
}

TEST(Hosting, LoadingAndUnloadingLeavesNothing) {
    expectNothingLeft("load", cycles(2000, 300));
}

TEST(Hosting, LivesThatAreNotFinalisedLeaveNothing) {
    const Machine machine;
    expectNothingLeft("live", cycles(200, 20));
}

TEST(Hosting, ThreadsThatCallAndEndOrLiveOnLeaveNothing) {
    expectNothingLeft("threads", cycles(200, 30));
}

TEST(Hosting, ThreadsThatEndLeaveNothingInAPluginThatStays) {
    expectNothingLeft("visitors", cycles(500, 100));
}

} // namespace

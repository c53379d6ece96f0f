// A function whose files cannot be had just when they are read: one that is unplugged meanwhile,
// one that is at fault itself, and one that only the process has no room for.
#include "pcibus/busError.h"
#include "pcibus/sysfs.h"
#include "tests/faults/tracedRun.h"
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string_view>

namespace {

namespace fs = std::filesystem;
using testfaults::SystemCall;
using testfaults::Verdict;

struct Seen {
    std::size_t functions = 0;
    pcibus::LeftOut leftOut;
    bool refused = false;
    bool namesConfig = false;
};

class VanishingFunction : public testing::Test {
protected:
    VanishingFunction() { testsupport::machines::Switch().bus.writeSysfs(root()); }

    [[nodiscard]] fs::path root() const { return folder_.path() / "sys"; }
    [[nodiscard]] fs::path devices() const { return root() / "bus/pci/devices"; }

    // Reads the bus, with this verdict on the first file that is opened once the folder is listed.
    Seen readWith(const std::function<Verdict()>& onFirstFile) const {
        const testfaults::SharedValue<Seen> seen;
        bool listed = false;
        bool decided = false;
        const auto end = testfaults::runTraced(
            [&] {
                const testfaults::WatchedPart watched;
                try {
                    seen->functions = pcibus::readSysfs(root(), &seen->leftOut).functions().size();
                } catch (const pcibus::BusError& error) {
                    seen->refused = true;
                    seen->namesConfig =
                        std::string_view(error.what()).find("/config: ") != std::string_view::npos;
                }
                return 0;
            },
            [&](const SystemCall& call) {
                listed = listed || call.number == SYS_getdents64;
                if (!listed || decided || call.number != SYS_openat)
                    return Verdict{};
                decided = true;
                return onFirstFile();
            });
        EXPECT_EQ(end.exitStatus, 0);
        EXPECT_TRUE(decided);
        return *seen;
    }

private:
    testsupport::TemporaryFolder folder_;
};

TEST_F(VanishingFunction, IsLeftOutAndNotCounted) {
    const Seen seen = readWith([&] {
        for (const fs::directory_entry& entry : fs::directory_iterator(devices()))
            fs::remove(entry);
        return Verdict{};
    });
    EXPECT_FALSE(seen.refused);
    EXPECT_EQ(seen.functions, 0U);
    EXPECT_EQ(seen.leftOut.unreadable, 0U);
}

TEST_F(VanishingFunction, OneWhoseFileCannotBeReadIsCounted) {
    for (const int error : {EIO, EACCES, ENXIO, ENODEV}) {
        const Seen seen = readWith([error] { return Verdict{Verdict::Kind::fail, error, 0}; });
        EXPECT_FALSE(seen.refused) << error;
        EXPECT_EQ(seen.functions, 9U) << error;
        EXPECT_EQ(seen.leftOut.unreadable, 1U) << error;
    }
}

// A list without it would be a wrong answer, since nothing is known against the function.
TEST_F(VanishingFunction, OneThatTheProcessHasNoRoomForIsRefused) {
    for (const int error : {EMFILE, ENFILE, ENOMEM}) {
        const Seen seen = readWith([error] { return Verdict{Verdict::Kind::fail, error, 0}; });
        EXPECT_TRUE(seen.refused && seen.namesConfig) << error;
    }
}

} // namespace

// The builder of test machines writes a tree as the kernel shows it.
#include "tests/support/machines.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(BusBuilder, SysfsNestsDevicesBelowTheirBridges) {
    const testsupport::machines::Switch machine;
    const testsupport::TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path());
    namespace fs = std::filesystem;
    EXPECT_EQ(fs::canonical(folder.path() / "bus/pci/devices/0000:02:01.0"),
              fs::canonical(folder.path()) /
                  "devices/pci0000:00/0000:00:1c.0/0000:01:00.0/0000:02:01.0");
    EXPECT_TRUE(fs::is_regular_file(folder.path() / "devices/pci0000:40/firmware_node/hid"));
    EXPECT_EQ(fs::file_size(folder.path() / "bus/pci/devices/0000:02:01.0/config"), 64U);
}

} // namespace

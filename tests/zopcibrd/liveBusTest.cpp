// Sessions on the bus that the system publishes as files, its own or a copy.
#include "pcibus/busError.h"
#include "pcibus/readBus.h"
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using zopcibrdtest::kUntouched;

class LiveBus : public zopcibrdtest::WithLibrary {
protected:
    std::uint32_t bridgesOn(std::uint32_t session, std::uint8_t bus) const {
        std::uint32_t count = 0;
        (void)library.GetBusChildren(session, bus, nullptr, &count);
        return count;
    }
};

TEST_F(LiveBus, OpensAFolderThatStandsForSys) {
    const testsupport::machines::Switch machine;
    machine.bus.writeSysfs(folder.path());
    std::uint32_t session = kUntouched;
    ASSERT_EQ(open(folder.path().string(), session), 0);
    EXPECT_EQ(bridgesOn(session, 2), 2U);
    std::uint32_t width = kUntouched;
    EXPECT_EQ(library.GetAttributeU32(session, machine.bus.handle(machine.port),
                                      kPciBrdAttrLinkWidth, &width),
              0);
    EXPECT_EQ(width, 16U);
}

TEST_F(LiveBus, OpensTheLiveBusWithoutAVariable) {
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>("")}) {
        const testsupport::EnvironmentValue variable("TAV_PCI_DUMP", value);
        std::int32_t expected = 0;
        std::size_t roots = 0;
        try {
            roots = pcibus::readBus("/sys").rootBuses().size();
        } catch (const pcibus::BusError&) {
            expected = kPciBrdErrNoBus; // a machine that publishes no PCI bus
        }
        std::uint32_t session = kUntouched;
        ASSERT_EQ(library.OpenSession(0, &session), expected);
        if (expected != 0)
            continue;
        std::uint32_t count = kUntouched;
        std::vector<std::uint8_t> buses(256);
        count = 256;
        EXPECT_EQ(library.GetRootBuses(session, buses.data(), &count), 0);
        EXPECT_EQ(count, roots);
    }
}

} // namespace

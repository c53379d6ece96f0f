// Memory that runs out inside the library. Where a library takes its memory from the program that
// loads it, so that the program can refuse it.
#include "tests/support/allocationFaults.h"
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using zopcibrdtest::kUntouched;

class SessionsOutOfMemory : public zopcibrdtest::WithLibrary {
protected:
    std::uint32_t bridgesOn(std::uint32_t session, std::uint8_t bus) const {
        std::uint32_t count = 0;
        (void)library.GetBusChildren(session, bus, nullptr, &count);
        return count;
    }
};

TEST_F(SessionsOutOfMemory, AreRefused) {
    const testsupport::machines::Switch machine;
    const testsupport::EnvironmentValue variable(
        "TAV_PCI_DUMP", folder.file("bus.txt", machine.bus.dump()).string());
    std::size_t nth = 1;
    for (;; ++nth) {
        std::uint32_t session = kUntouched;
        std::int32_t status = 0;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            status = library.OpenSession(0, &session);
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(status, 0);
            EXPECT_EQ(bridgesOn(session, 2), 2U);
            break;
        }
        ASSERT_EQ(status, kPciBrdErrNoBus) << "allocation " << nth;
        ASSERT_EQ(session, kUntouched) << "allocation " << nth;
    }
    EXPECT_GT(nth, 10U);
}

// Every allocation of a call fails once.
class SlotPathsOutOfMemory : public zopcibrdtest::WithSession {
protected:
    static void failEach(const std::function<std::int32_t()>& call) {
        std::size_t nth = 1;
        for (;; ++nth) {
            const testsupport::AllocationFault fault(nth);
            const std::int32_t status = call();
            if (!fault.happened()) {
                EXPECT_EQ(status, 0);
                break;
            }
            ASSERT_EQ(status, kPciBrdErrOutOfMemory) << "allocation " << nth;
        }
        EXPECT_GT(nth, 2U);
    }
};

TEST_F(SlotPathsOutOfMemory, AreNotRead) {
    std::uint32_t bridge = 0;
    failEach([&] { return library.FindBridgeBySlotPath(session, "MR00:08,00,E0", &bridge); });
    EXPECT_EQ(bridge, 0x0208U);
}

TEST_F(SlotPathsOutOfMemory, AreNotWritten) {
    char text[100] = "";
    std::uint32_t size = 0;
    failEach([&] {
        size = sizeof text;
        return library.GetBridgeSlotPath(session, handle(machine.downA), text, &size);
    });
    EXPECT_STREQ(text, "MR00:08,00,E0");
}

} // namespace

// Every function of the library on a thread with 32 kB of stack.
#include "tests/support/guardedStack.h"
#include "tests/zopcibrd/bridgeLibrary.h"

#include <array>
#include <vector>

namespace {

using testsupport::GuardedStack;
using zopcibrdtest::BridgeLibrary;

// Asks for everything there is; answers how many bridges there were, or the status of a failure.
std::int32_t askEverything(const BridgeLibrary& library) {
    std::uint32_t session = 0;
    if (const std::int32_t status = library.OpenSession(0, &session); status != 0)
        return status;
    std::array<std::uint8_t, 256> roots{};
    std::uint32_t count = roots.size();
    library.GetRootBuses(session, roots.data(), &count);
    std::int32_t bridges = 0;
    for (unsigned bus = 0; bus < 256; ++bus) {
        std::vector<std::uint32_t> handles(256);
        std::uint32_t found = 256;
        library.GetBusChildren(session, static_cast<std::uint8_t>(bus), handles.data(), &found);
        handles.resize(found);
        for (const std::uint32_t bridge : handles) {
            ++bridges;
            std::uint8_t place[3] = {};
            std::uint16_t ids[4] = {};
            std::uint32_t other = 0;
            std::array<char, 1024> path{};
            std::uint32_t size = path.size();
            std::array<std::uint32_t, 256> list{};
            std::uint32_t room = list.size();
            library.OpenBridge(session, bridge);
            library.GetBridgeAddress(session, bridge, &place[0], &place[1], &place[2]);
            library.GetBridgeIds(session, bridge, &ids[0], &ids[1], &ids[2], &ids[3]);
            library.FindBridgesByPciIds(session, ids[0], ids[1], ids[2], ids[3], list.data(),
                                        &room);
            library.GetBridgeChildren(session, bridge, list.data(), &(room = 256));
            library.GetBridgeSlotPath(session, bridge, path.data(), &size);
            library.FindBridgeBySlotPath(session, path.data(), &other);
            EXPECT_EQ(other, bridge);
            library.FindBridgeByAddress(session, place[0], place[1], place[2], &other);
            EXPECT_EQ(other, bridge);
            library.GetBridgeParent(session, bridge, &other);
            library.FindParentBridgeForBus(session, place[0], &other);
            library.GetAttributeU32(session, bridge, 0x20000300, &other);
            library.SetAttributeU32(session, bridge, 0x20000300, 1);
            library.EepromUpdate(session, bridge, 0, 0, 0, 0, 0, nullptr);
            library.CloseBridge(session, bridge);
        }
    }
    library.CloseSession(session);
    return bridges;
}

TEST(SmallStack, HoldsEveryFunctionOnADumpAndOnSysfs) {
    const BridgeLibrary library;
    const testsupport::TemporaryFolder folder;
    const testsupport::BusBuilder bus = testsupport::bigBus();
    bus.writeSysfs(folder.path() / "sys");
    const auto check = [&](const std::filesystem::path& path, std::int32_t expected) {
        const testsupport::EnvironmentValue location("TAV_PCI_DUMP", path.string());
        GuardedStack stack(32 * std::size_t{1024});
        std::int32_t answer = 0;
        stack.runThread([&] { answer = askEverything(library); });
        EXPECT_EQ(answer, expected) << path;
        EXPECT_EQ(stack.changedBehindGuard(), 0U);
    };
    check(folder.path() / "sys", 250);
    check(folder.file("bus.dump", bus.dump()), 250);
    check(folder.file("bad.dump", "00: zz\n"), -313004);
    check(folder.path() / "missing", -313004);
}

} // namespace

// The list of a bus's functions, from a library that may have none, or say what cannot be.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;

class SessionFunctions : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
        wrapper.OpenSession(0);
    }

    // How many functions the wrapper has of a library that announces so many and gives so many.
    std::optional<std::size_t> taken(std::uint32_t announced, std::size_t given) {
        library->functions = scripted::FunctionList{announced, {}, 0};
        library->functions->given.resize(given);
        const auto functions = wrapper.SessionFunctions();
        return functions ? std::optional(functions->size()) : std::nullopt;
    }

    nZOQUIL000::tErrorStatus loading;
    cPciBrdWrapper_ex wrapper{loading};
};

TEST_F(SessionFunctions, AreThoseThatTheLibraryLists) {
    library->functions = scripted::FunctionList{2, {}, 0};
    tZoPciBrdFunction bridge = {};
    bridge.handle = 0x02FB; // 02:1f.3
    bridge.vendor = 0x10B5;
    bridge.device = 0x8609;
    bridge.subsystemVendor = 0x1234;
    bridge.subsystem = 0x0002;
    bridge.headerType = 1;
    bridge.secondaryBus = 3;
    bridge.subordinateBus = 5;
    bridge.linkWidth = 8;
    bridge.linkSpeed = 2;
    library->functions->given = {bridge, {}};
    const auto functions = wrapper.SessionFunctions();
    ASSERT_TRUE(functions);
    ASSERT_EQ(functions->size(), 2U);
    const pcibus::PciFunction& first = functions->front();
    EXPECT_EQ(first.handle(), bridge.handle);
    EXPECT_EQ(first.ids().packed(), 0x10B5'8609'1234'0002U);
    EXPECT_EQ(first.headerType, 1);
    EXPECT_EQ(first.secondaryBus, 3);
    EXPECT_EQ(first.subordinateBus, 5);
    EXPECT_EQ(first.linkWidth, 8);
    EXPECT_EQ(first.linkSpeed, 2);
}

TEST_F(SessionFunctions, AreNotKnownWithoutASessionOrAList) {
    EXPECT_FALSE(wrapper.SessionFunctions());
    EXPECT_EQ(taken(1, 1), 1U);
    wrapper.CloseSession();
    EXPECT_FALSE(wrapper.SessionFunctions());
}

TEST_F(SessionFunctions, AreNotTakenFromAListWhoseLengthChanges) {
    EXPECT_EQ(taken(3, 3), 3U);
    EXPECT_FALSE(taken(3, 2));
    EXPECT_FALSE(taken(3, 4));
}

// Room for four billion would end the host.
TEST_F(SessionFunctions, AreNotAskedForWhereThereAreMoreThanABusCanHave) {
    for (const std::uint32_t count : {0x10001U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(taken(count, 1));
        EXPECT_EQ(library->functions->fetched, 0U);
    }
    EXPECT_EQ(taken(0x10000, 0x10000), 0x10000U);
}

} // namespace

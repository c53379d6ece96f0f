// What the wrapper makes of a bridge library that announces lists of four billion elements.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "tests/pciBrdWrapper/residentMemory.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using scripted::BridgeFunction;
using testing::ElementsAre;

// A count that no list can have: either there is room for it, then only what the library writes
// takes memory, or there is none.
class AbsurdLists : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
    }

    template <typename List, typename Run>
    void expectServedOrOutOfMemory(BridgeFunction function, const Run& run) {
        library->prepare(function, {kPciBrdErrBufferTooSmall, {}, 0xFFFFFFFF, {}});
        library->prepare(function, {0, {11, 12}, 2, {}});
        List list(1);
        list[0] = 9;
        const std::size_t before = residentBytes();
        try {
            EXPECT_EQ(run(list), 0);
            EXPECT_EQ(list.size(), 0xFFFFFFFF);
            EXPECT_EQ(list[0], 11);
            EXPECT_EQ(list[1], 12);
            EXPECT_EQ(list[2], 0);
            EXPECT_EQ(list.back(), 0);
            EXPECT_LT(residentBytes(), before + kMegabytes64);
        } catch (const std::bad_alloc&) {
            EXPECT_THAT(list, ElementsAre(9));
            EXPECT_EQ(library->calls.size(), 1U);
        }
    }

    nZOQUIL000::tErrorStatus loading;
    cPciBrdWrapper_ex wrapper{loading};

private:
    static constexpr std::size_t kMegabytes64 = std::size_t{64} << 20;
};

TEST_F(AbsurdLists, OfBridgesCostNoMemory) {
    expectServedOrOutOfMemory<tBridgeList>(
        BridgeFunction::GetBridgeChildren,
        [&](tBridgeList& list) { return wrapper.GetBridgeChildren(1, list); });
}

TEST_F(AbsurdLists, OfBusesCostNoMemory) {
    expectServedOrOutOfMemory<tBusList>(BridgeFunction::GetRootBuses,
                                        [&](tBusList& list) { return wrapper.GetRootBuses(list); });
}

} // namespace

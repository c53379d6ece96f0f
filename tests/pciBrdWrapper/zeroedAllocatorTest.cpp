// The allocator of the wrapper's lists.
#include "pciBrdWrapper/zeroedAllocator.h"

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using testing::Each;
using testing::ElementsAre;

// As the compiler refuses such requests when it sees them, the number hides from it.
std::size_t greatestSize() {
    volatile std::size_t size = std::numeric_limits<std::size_t>::max();
    return size;
}

TEST(ZeroedAllocator, ListOfALengthIsZeroAlsoInMemoryThatWasUsedBefore) {
    for (std::size_t length = 1; length < 3000; length += 7) {
        tBusList(length, 0xAA).swap(*std::make_unique<tBusList>());
        ASSERT_THAT(tBusList(length), Each(0)) << length;
    }
}

TEST(ZeroedAllocator, ListsAreFilledAndGrowAsOthersDo) {
    tBridgeList list{1, 2};
    for (std::uint32_t i = 3; i < 1000; ++i)
        list.push_back(i);
    for (std::uint32_t i = 0; i < 999; ++i)
        ASSERT_EQ(list[i], i + 1);
    list = {7, 8};
    EXPECT_THAT(list, ElementsAre(7, 8));
    const tBridgeList copy(list);
    EXPECT_EQ(copy, list);
}

TEST(ZeroedAllocator, MovedListKeepsItsMemory) {
    tBridgeList list(5);
    const std::uint32_t* const memory = list.data();
    tBridgeList other(2);
    other = std::move(list);
    EXPECT_EQ(other.data(), memory);
}

TEST(ZeroedAllocator, MemoryThatThereIsNotIsOutOfMemory) {
    ZeroedAllocator<std::uint32_t> allocator;
    for (const std::size_t count : {greatestSize(), greatestSize() / sizeof(std::uint32_t)})
        EXPECT_THROW(allocator.deallocate(allocator.allocate(count), count), std::bad_alloc);
}

TEST(ZeroedAllocator, NoElementsAtAllCanBeHad) {
    ZeroedAllocator<std::uint32_t> allocator;
    std::uint32_t* memory = nullptr;
    EXPECT_NO_THROW(memory = allocator.allocate(0));
    allocator.deallocate(memory, 0);
}

TEST(ZeroedList, LongerThanAListCanBeIsOutOfMemory) {
    const volatile std::size_t limit = tBridgeList().max_size();
    EXPECT_THROW(zeroedList<tBridgeList>(limit + 1), std::bad_alloc);
    EXPECT_THROW(zeroedList<tBridgeList>(limit), std::bad_alloc);
    EXPECT_THROW(zeroedList<tBusList>(greatestSize()), std::bad_alloc);
    EXPECT_THAT(zeroedList<tBusList>(3), ElementsAre(0, 0, 0));
}

} // namespace

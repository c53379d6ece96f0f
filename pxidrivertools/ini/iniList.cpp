#include "pxidrivertools/ini/iniList.h"

#include <cstring>
#include <limits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::size_t kElementSize = sizeof(void*);
static_assert(alignof(IniNamed*) == alignof(void*));
static_assert(sizeof(IniList) % alignof(IniNamed*) == 0);

constexpr std::size_t kMostElements =
    (std::numeric_limits<std::int32_t>::max() - sizeof(IniList)) / kElementSize;

bool resize(const IniMemory& memory, IniList*& list, std::uint32_t capacity) noexcept {
    void* const block = memory.grow(list, sizeof(IniList) + capacity * kElementSize);
    if (block == nullptr)
        return false;
    IniList* const resized = static_cast<IniList*>(block);
    if (list == nullptr) {
        std::memcpy(resized->magic, kIniListMagic, sizeof kIniListMagic);
        resized->elementSize = kElementSize;
        resized->count = 0;
    }
    resized->capacity = capacity;
    list = resized;
    return true;
}

} // namespace

bool reserveElement(const IniMemory& memory, IniList*& list, IniGrowth growth) noexcept {
    const std::uint32_t capacity = list == nullptr ? 0 : list->capacity;
    if (list != nullptr && list->count < capacity)
        return true;
    if (capacity >= kMostElements)
        return false;
    std::uint32_t wanted = capacity + 1;
    if (growth == IniGrowth::proportional) {
        // 3, 7, 15 ... elements and the header fill what common allocators hand out anyway.
        wanted = capacity < 3 ? 3 : capacity * 2 + 1;
        if (wanted > kMostElements)
            wanted = kMostElements;
    }
    return resize(memory, list, wanted);
}

void appendElement(IniList& list, IniNamed* record) noexcept {
    const std::uint32_t position = list.count++;
    elementsOf(&list)[position] = record;
}

void removeElement(IniList& list, std::uint32_t index) noexcept {
    const std::span<IniNamed*> elements = elementsOf(&list);
    std::memmove(&elements[index - 1], elements.data() + index,
                 (elements.size() - index) * kElementSize);
    --list.count;
}

void truncateList(IniList& list, std::uint32_t count) noexcept {
    list.count = count;
}

void trimList(const IniMemory& memory, IniList*& list) noexcept {
    if (list == nullptr || list->capacity == list->count)
        return;
    if (list->count == 0)
        releaseList(memory, list);
    else
        resize(memory, list, list->count); // a failure to shrink does no harm
}

void releaseList(const IniMemory& memory, IniList*& list) noexcept {
    memory.release(list);
    list = nullptr;
}

IniNamed* elementAt(const IniList* list, std::int32_t index) noexcept {
    if (index == 0 || index == -1)
        index = 1;
    if (index < 1 || static_cast<std::uint32_t>(index) > countOf(list))
        return nullptr;
    return elementsOf(list)[static_cast<std::uint32_t>(index) - 1];
}

std::uint32_t countOf(const IniList* list) noexcept {
    return list == nullptr ? 0 : list->count;
}

std::span<IniNamed*> elementsOf(IniList* list) noexcept {
    if (list == nullptr)
        return {};
    return {reinterpret_cast<IniNamed**>(list + 1), list->count};
}

std::span<IniNamed* const> elementsOf(const IniList* list) noexcept {
    if (list == nullptr)
        return {};
    return {reinterpret_cast<IniNamed* const*>(list + 1), list->count};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

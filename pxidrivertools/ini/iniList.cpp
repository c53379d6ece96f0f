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
    void* const block = memory.grow(list, listSize(capacity));
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

std::size_t listSize(std::uint32_t count) noexcept {
    return sizeof(IniList) + count * kElementSize;
}

IniList* copyList(const IniList& list, void* place) noexcept {
    IniList* const copy = static_cast<IniList*>(std::memcpy(place, &list, listSize(list.count)));
    copy->capacity = copy->count;
    return copy;
}

IniList* copyWithRoom(const IniMemory& memory, const IniList& list) noexcept {
    if (list.count >= kMostElements)
        return nullptr;
    void* const place = memory.allocate(listSize(list.count + 1));
    if (place == nullptr)
        return nullptr;
    IniList* const copy = copyList(list, place);
    copy->capacity = copy->count + 1;
    return copy;
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

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

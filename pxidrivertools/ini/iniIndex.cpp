#include "pxidrivertools/ini/iniIndex.h"

#include "pxidrivertools/ini/iniNames.h"

#include <cstring>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// A slot holds an element's 1-based index.
using Slot = std::uint32_t;
constexpr Slot kEmpty = 0;
constexpr std::uint32_t kFirstSlots = 16;

Slot* slotsOf(IniIndex* index) noexcept {
    return reinterpret_cast<Slot*>(index + 1);
}

std::string_view nameAt(std::span<IniNamed* const> elements, Slot slot) noexcept {
    return elements[slot - 1]->name.view();
}

IniIndex* makeIndex(const IniMemory& memory, std::uint32_t slots) noexcept {
    void* const block = memory.allocate(sizeof(IniIndex) + std::size_t{slots} * sizeof(Slot));
    if (block == nullptr)
        return nullptr;
    IniIndex* const index = static_cast<IniIndex*>(block);
    *index = {slots - 1, 0, 0, 0};
    std::memset(slotsOf(index), 0, std::size_t{slots} * sizeof(Slot));
    return index;
}

// Twice the slots. Elements of one hash keep their order, because the copy goes along the probe
// sequence: it starts behind an empty slot, of which there is always one.
bool widen(const IniMemory& memory, IniIndex*& index, std::span<IniNamed* const> elements,
           bool caseSensitive) noexcept {
    if (index->mask >= 0x7FFFFFFFU)
        return false;
    IniIndex* const wider = makeIndex(memory, (index->mask + 1) * 2);
    if (wider == nullptr)
        return false;
    wider->used = index->used;
    wider->covered = index->covered;
    const Slot* const from = slotsOf(index);
    Slot* const to = slotsOf(wider);
    std::uint32_t start = 0;
    while (from[start] != kEmpty)
        ++start;
    for (std::uint32_t step = 1; step <= index->mask; ++step) {
        const Slot slot = from[(start + step) & index->mask];
        if (slot == kEmpty)
            continue;
        std::uint32_t place = hashName(caseSensitive, nameAt(elements, slot)) & wider->mask;
        while (to[place] != kEmpty)
            place = (place + 1) & wider->mask;
        to[place] = slot;
    }
    memory.release(index);
    index = wider;
    return true;
}

// An element that an earlier one hides is left out, so that a file full of one name stays cheap.
void insert(IniIndex& index, std::span<IniNamed* const> elements, bool caseSensitive,
            Slot slot) noexcept {
    Slot* const slots = slotsOf(&index);
    const std::string_view name = nameAt(elements, slot);
    std::uint32_t place = hashName(caseSensitive, name) & index.mask;
    for (; slots[place] != kEmpty; place = (place + 1) & index.mask)
        if (hidesName(caseSensitive, nameAt(elements, slots[place]), name))
            return;
    slots[place] = slot;
    ++index.used;
}

// Makes the index cover the list. At most three quarters of the slots are used.
bool cover(const IniMemory& memory, IniIndex*& index, std::span<IniNamed* const> elements,
           bool caseSensitive) noexcept {
    if (index == nullptr) {
        index = makeIndex(memory, kFirstSlots);
        if (index == nullptr)
            return false;
    }
    while (index->covered < elements.size()) {
        if (index->used >= (index->mask + 1) / 4 * 3 &&
            !widen(memory, index, elements, caseSensitive))
            return false;
        insert(*index, elements, caseSensitive, index->covered + 1);
        ++index->covered;
    }
    return true;
}

} // namespace

std::uint32_t walkByName(const IniList* list, bool caseSensitive, std::string_view name) noexcept {
    std::uint32_t position = 0;
    for (const IniNamed* element : elementsOf(list)) {
        ++position;
        if (equalNames(caseSensitive, element->name.view(), name))
            return position;
    }
    return 0;
}

std::uint32_t findByName(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, std::string_view name) noexcept {
    const std::span<IniNamed* const> elements = elementsOf(list);
    if (elements.size() <= kLongestWalk)
        return walkByName(list, caseSensitive, name);
    // Making the index again after each of many removals would cost more than walking: it is made
    // once the walks have cost as much as making it.
    if (index != nullptr && index->covered == 0 && index->walked < elements.size()) {
        const std::uint32_t found = walkByName(list, caseSensitive, name);
        index->walked += found != 0 ? found : static_cast<std::uint32_t>(elements.size());
        return found;
    }
    if (!cover(memory, index, elements, caseSensitive))
        return walkByName(list, caseSensitive, name);
    const Slot* const slots = slotsOf(index);
    std::uint32_t place = hashName(caseSensitive, name) & index->mask;
    for (; slots[place] != kEmpty; place = (place + 1) & index->mask)
        if (equalNames(caseSensitive, nameAt(elements, slots[place]), name))
            return slots[place];
    return 0;
}

void invalidateIndex(IniIndex* index) noexcept {
    if (index == nullptr || index->covered == 0)
        return;
    std::memset(slotsOf(index), 0, (std::size_t{index->mask} + 1) * sizeof(Slot));
    index->used = 0;
    index->covered = 0;
    index->walked = 0;
}

void releaseIndex(const IniMemory& memory, IniIndex*& index) noexcept {
    memory.release(index);
    index = nullptr;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

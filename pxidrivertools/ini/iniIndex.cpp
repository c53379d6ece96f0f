#include "pxidrivertools/ini/iniIndex.h"

#include "platform/prefetch.h"
#include "pxidrivertools/ini/iniNames.h"

#include <cstring>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// The hash stands beside the element, so that probing touches no names but those that will be
// equal. Elements of one hash stand in list order along the probe sequence.
struct Slot {
    std::uint32_t hash;
    std::uint32_t element; // 1-based index in the list, plus IniIndex::gone; 0: the slot is empty
};
constexpr std::uint32_t kFirstSlots = 64;
constexpr std::uint32_t kMostSlots = 0x80000000U;
constexpr std::uint32_t kMostGone = 0x40000000U;
// Looking up one slot by its hash costs as much as going past this many.
constexpr std::uint32_t kLookUpCost = 16;

Slot* slotsOf(IniIndex* index) noexcept {
    return reinterpret_cast<Slot*>(index + 1);
}

std::size_t slotBytes(std::uint32_t mask) noexcept {
    return (std::size_t{mask} + 1) * sizeof(Slot);
}

std::string_view nameAt(std::span<IniNamed* const> elements, std::uint32_t element) noexcept {
    return elements[element - 1]->name.view();
}

IniIndex* makeIndex(const IniMemory& memory, std::uint32_t slots) noexcept {
    void* const block = memory.allocate(sizeof(IniIndex) + slotBytes(slots - 1));
    if (block == nullptr)
        return nullptr;
    IniIndex* const index = static_cast<IniIndex*>(block);
    *index = {slots - 1, 0, 0, 0, 0, 0};
    std::memset(slotsOf(index), 0, slotBytes(index->mask));
    return index;
}

void place(IniIndex& index, Slot slot) noexcept {
    Slot* const slots = slotsOf(&index);
    std::uint32_t at = slot.hash & index.mask;
    while (slots[at].element != 0)
        at = (at + 1) & index.mask;
    slots[at] = slot;
}

// Four times the slots, so that a long list is not copied often. The copy goes along the probe
// sequence, starting behind an empty slot (there is always one), and so keeps the order of equal
// hashes.
bool widen(const IniMemory& memory, IniIndex*& index) noexcept {
    if (index->mask >= kMostSlots / 2 - 1)
        return false;
    IniIndex* const wider = makeIndex(memory, (index->mask + 1) * 4);
    if (wider == nullptr)
        return false;
    wider->used = index->used;
    wider->covered = index->covered;
    wider->hidden = index->hidden;
    wider->gone = index->gone;
    const Slot* const from = slotsOf(index);
    std::uint32_t start = 0;
    while (from[start].element != 0)
        ++start;
    for (std::uint32_t step = 1; step <= index->mask; ++step) {
        const Slot slot = from[(start + step) & index->mask];
        if (slot.element != 0)
            place(*wider, slot);
    }
    memory.release(index);
    index = wider;
    return true;
}

// Adds the next element. One that an earlier one hides gets no slot, so that a file full of one
// name stays cheap.
void coverNext(IniIndex& index, std::span<IniNamed* const> elements, bool caseSensitive) noexcept {
    const std::uint32_t element = ++index.covered;
    const std::string_view name = nameAt(elements, element);
    const std::uint32_t hash = hashName(caseSensitive, name);
    Slot* const slots = slotsOf(&index);
    std::uint32_t at = hash & index.mask;
    for (; slots[at].element != 0; at = (at + 1) & index.mask) {
        if (slots[at].hash == hash &&
            hidesName(caseSensitive, nameAt(elements, slots[at].element - index.gone), name)) {
            ++index.hidden;
            return;
        }
    }
    slots[at] = {hash, element + index.gone};
    ++index.used;
}

bool isFull(const IniIndex& index) noexcept {
    return index.used >= (index.mask + 1) / 4 * 3;
}

// Makes the index cover the list.
bool cover(const IniMemory& memory, IniIndex*& index, std::span<IniNamed* const> elements,
           bool caseSensitive) noexcept {
    if (index == nullptr) {
        index = makeIndex(memory, kFirstSlots);
        if (index == nullptr)
            return false;
    }
    while (index->covered < elements.size()) {
        if (isFull(*index) && !widen(memory, index))
            return false;
        coverNext(*index, elements, caseSensitive);
    }
    return true;
}

// Empties a slot and moves those behind it up, as far as their hashes let them.
void vacate(IniIndex& index, std::uint32_t at) noexcept {
    Slot* const slots = slotsOf(&index);
    for (std::uint32_t next = (at + 1) & index.mask; slots[next].element != 0;
         next = (next + 1) & index.mask) {
        const std::uint32_t distance = (next - slots[next].hash) & index.mask;
        if (distance < ((next - at) & index.mask))
            continue; // it would come to stand before its first place
        slots[at] = slots[next];
        at = next;
    }
    slots[at] = {};
    --index.used;
}

// The slot of an element that has one.
std::uint32_t slotOf(IniIndex& index, const IniList* list, bool caseSensitive,
                     std::uint32_t element) noexcept {
    const Slot* const slots = slotsOf(&index);
    std::uint32_t at = hashName(caseSensitive, nameAt(elementsOf(list), element)) & index.mask;
    while (slots[at].element != element + index.gone)
        at = (at + 1) & index.mask;
    return at;
}

// Takes the element's slot away. False when the index cannot go on after that and was invalidated:
// then other elements would have to come to light.
bool takeOut(IniIndex* index, const IniList* list, bool caseSensitive,
             std::uint32_t element) noexcept {
    if (index->hidden != 0 || index->gone >= kMostGone) {
        invalidateIndex(index);
        return false;
    }
    vacate(*index, slotOf(*index, list, caseSensitive, element));
    return true;
}

// Closes the gap that an element leaves in the numbers: those before it count up, and all count as
// one less, or those behind it count down.
void closeGap(IniIndex& index, const IniList* list, bool caseSensitive,
              std::uint32_t element) noexcept {
    Slot* const slots = slotsOf(&index);
    if (element - 1 <= index.mask / kLookUpCost) {
        for (std::uint32_t before = element - 1; before != 0; --before)
            ++slots[slotOf(index, list, caseSensitive, before)].element;
        ++index.gone;
    } else if (index.covered - element <= index.mask / kLookUpCost) {
        for (std::uint32_t behind = element + 1; behind <= index.covered; ++behind)
            --slots[slotOf(index, list, caseSensitive, behind)].element;
    } else {
        const std::uint32_t left = element + index.gone;
        for (std::size_t at = 0; at <= index.mask; ++at)
            slots[at].element -= slots[at].element > left ? 1 : 0;
    }
    --index.covered;
}

bool isCovered(const IniIndex* index, std::uint32_t element) noexcept {
    return index != nullptr && element <= index->covered;
}

// Keys that were loaded one after the other lie so in memory. Where that puts this element is
// fetched while the list is asked where it is, which is a wait less for a list too long for the
// processor's cache; a wrong guess does no harm. The list has two elements at least.
void prefetchRecord(std::span<IniNamed* const> elements, std::uint32_t element) noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(elements[0]);
    const auto second = reinterpret_cast<std::uintptr_t>(elements[1]);
    if (second - first == sizeof(IniKey))
        platform::prefetch(reinterpret_cast<const void*>(first + (element - 1) * sizeof(IniKey)));
}

} // namespace

std::uint32_t walkByName(const IniList* list, bool caseSensitive, std::string_view name) noexcept {
    return walkByTag(list, caseSensitive, name, tagName(name));
}

std::uint32_t walkByTag(const IniList* list, bool caseSensitive, std::string_view name,
                        std::uint16_t tag) noexcept {
    std::uint32_t position = 0;
    for (const IniNamed* element : elementsOf(list)) {
        ++position;
        const bool mayBeEqual = element->name.tag == tag || element->name.tag == 0;
        if (mayBeEqual && equalNames(caseSensitive, element->name.view(), name))
            return position;
    }
    return 0;
}

std::uint32_t findByName(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, std::string_view name) noexcept {
    if (countOf(list) <= kLongestWalk)
        return walkByName(list, caseSensitive, name);
    return findByHash(memory, index, list, caseSensitive, name, hashName(caseSensitive, name));
}

std::uint32_t findByHash(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, std::string_view name, std::uint32_t hash) noexcept {
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
    std::uint32_t at = hash & index->mask;
    for (; slots[at].element != 0; at = (at + 1) & index->mask) {
        if (slots[at].hash != hash)
            continue;
        const std::uint32_t element = slots[at].element - index->gone;
        prefetchRecord(elements, element);
        if (equalNames(caseSensitive, nameAt(elements, element), name))
            return element;
    }
    return 0;
}

void prefetchSlot(const IniIndex& index, std::uint32_t hash) noexcept {
    const Slot* const slots = reinterpret_cast<const Slot*>(&index + 1);
    platform::prefetch(slots + (hash & index.mask));
}

void elementArrives(IniIndex* index, const IniList* list, std::uint32_t hash) noexcept {
    const std::uint32_t element = countOf(list);
    if (index == nullptr || index->covered == 0 || index->covered + 1 != element || isFull(*index))
        return;
    place(*index, {hash, element + index->gone});
    ++index->used;
    ++index->covered;
}

void elementLeaves(IniIndex* index, const IniList* list, bool caseSensitive,
                   std::uint32_t element) noexcept {
    if (isCovered(index, element) && takeOut(index, list, caseSensitive, element))
        closeGap(*index, list, caseSensitive, element);
}

void nameLeaves(IniIndex* index, const IniList* list, bool caseSensitive,
                std::uint32_t element) noexcept {
    if (isCovered(index, element))
        takeOut(index, list, caseSensitive, element);
}

void nameArrives(IniIndex* index, const IniList* list, bool caseSensitive,
                 std::uint32_t element) noexcept {
    if (!isCovered(index, element))
        return;
    const std::uint32_t hash = hashName(caseSensitive, nameAt(elementsOf(list), element));
    const Slot* const slots = slotsOf(index);
    // Where names may be equal, their order counts.
    for (std::uint32_t at = hash & index->mask; slots[at].element != 0; at = (at + 1) & index->mask)
        if (slots[at].hash == hash)
            return invalidateIndex(index);
    place(*index, {hash, element + index->gone});
    ++index->used;
}

void invalidateIndex(IniIndex* index) noexcept {
    if (index == nullptr || index->covered == 0)
        return;
    std::memset(slotsOf(index), 0, slotBytes(index->mask));
    *index = {index->mask, 0, 0, 0, 0, 0};
}

void releaseIndex(const IniMemory& memory, IniIndex*& index) noexcept {
    memory.release(index);
    index = nullptr;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

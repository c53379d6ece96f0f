// A hash index over the names of a list, which gives the answers of a walk from the front of the
// list. It is made by the first look-up that finds the list long, follows the elements appended
// since at each further look-up, and must be told of every other change.
#pragma once

#include "pxidrivertools/ini/iniList.h"

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Header; the slots follow in the same memory.
struct IniIndex {
    std::uint32_t mask;    // number of slots (a power of two) less one
    std::uint32_t used;    // slots in use
    std::uint32_t covered; // elements at the front of the list that the index knows
    std::uint32_t hidden;  // those of them without a slot, because an earlier one hides them
    std::uint32_t walked;  // elements looked at one by one since the index was invalidated
    std::uint32_t gone;    // what slots say of an element is its place in the list plus this
};

// Up to this many elements are walked.
inline constexpr std::uint32_t kLongestWalk = 32;

// The 1-based index of the first element whose name is equal to `name`, or 0. `index` belongs to
// `list`; without memory for it the list is walked.
std::uint32_t findByName(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, std::string_view name) noexcept;

// The same for a caller that knows hashName(caseSensitive, name).
std::uint32_t findByHash(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, std::string_view name, std::uint32_t hash) noexcept;

// Brings what findByHash() will look at first into the processor's cache.
void prefetchSlot(const IniIndex& index, std::uint32_t hash) noexcept;

// After the last element has been appended, whose name has this hash and was not found just before.
// Without this call the next look-up would have to take the hash again.
void elementArrives(IniIndex* index, const IniList* list, std::uint32_t hash) noexcept;

// Before the element at this 1-based index leaves the list.
void elementLeaves(IniIndex* index, const IniList* list, bool caseSensitive,
                   std::uint32_t element) noexcept;

// Before and after the element gets another name.
void nameLeaves(IniIndex* index, const IniList* list, bool caseSensitive,
                std::uint32_t element) noexcept;
void nameArrives(IniIndex* index, const IniList* list, bool caseSensitive,
                 std::uint32_t element) noexcept;

// After any other change.
void invalidateIndex(IniIndex* index) noexcept;

void releaseIndex(const IniMemory& memory, IniIndex*& index) noexcept;

// The same as findByName() by walking, whatever the length: most elements are passed over by the
// tags of their names.
std::uint32_t walkByName(const IniList* list, bool caseSensitive, std::string_view name) noexcept;

// The same for a caller that knows tagName(name).
std::uint32_t walkByTag(const IniList* list, bool caseSensitive, std::string_view name,
                        std::uint16_t tag) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// The growable list of the INI engine: a header, followed in the same memory by pointers to the
// records of a section or a file. The empty list is the null pointer.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"
#include "pxidrivertools/ini/iniRecords.h"

#include <cstdint>
#include <span>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

inline constexpr char kIniListMagic[4] = {'T', 'S', 'I', 'L'};

struct IniList {
    char magic[4];
    std::uint32_t capacity; // in elements
    std::uint32_t elementSize;
    std::uint32_t count;
};

// Outside a load a full list grows by one slot, which keeps it tight; during a load it grows in
// proportion to its size, which keeps the time of the load proportional to the file's.
enum class IniGrowth { oneSlot, proportional };

// Makes sure that one more element fits. False when there is no memory; the list is then as it was.
bool reserveElement(const IniMemory& memory, IniList*& list, IniGrowth growth) noexcept;

// The bytes of a list of this many elements.
std::size_t listSize(std::uint32_t count) noexcept;

// A copy at a place of listSize(list.count) bytes, with no room for more.
IniList* copyList(const IniList& list, void* place) noexcept;

// A copy with room for one more element, or null when there is no memory.
IniList* copyWithRoom(const IniMemory& memory, const IniList& list) noexcept;

// The element must fit.
inline void appendElement(IniList& list, IniNamed* record) noexcept {
    reinterpret_cast<IniNamed**>(&list + 1)[list.count++] = record;
}

// By 1-based index, which must be within the list; what follows moves up.
void removeElement(IniList& list, std::uint32_t index) noexcept;

// Drops the elements behind the first `count`.
void truncateList(IniList& list, std::uint32_t count) noexcept;

// Gives back the room for elements that are not there.
void trimList(const IniMemory& memory, IniList*& list) noexcept;

void releaseList(const IniMemory& memory, IniList*& list) noexcept;

// By 1-based index; 0 and -1 mean the first element. Null when there is no such element.
IniNamed* elementAt(const IniList* list, std::int32_t index) noexcept;

inline std::uint32_t countOf(const IniList* list) noexcept {
    return list == nullptr ? 0 : list->count;
}

// All elements in order. Invalid once the list changes.
inline std::span<IniNamed*> elementsOf(IniList* list) noexcept {
    if (list == nullptr)
        return {};
    return {reinterpret_cast<IniNamed**>(list + 1), list->count};
}
inline std::span<IniNamed* const> elementsOf(const IniList* list) noexcept {
    if (list == nullptr)
        return {};
    return {reinterpret_cast<IniNamed* const*>(list + 1), list->count};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

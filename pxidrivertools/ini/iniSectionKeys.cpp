#include "pxidrivertools/ini/iniSectionKeys.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

bool reserveKey(IniFileObject& file, IniSection& section, IniGrowth growth) noexcept {
    if (!section.keysInArena)
        return reserveElement(file.memory, section.keys, growth);
    if (section.keys->count < section.keys->capacity)
        return true;
    IniList* const copy = copyWithRoom(file.memory, *section.keys);
    if (copy == nullptr)
        return false;
    section.keys = copy;
    section.keysInArena = false;
    return true;
}

void trimKeys(IniFileObject& file, IniSection& section) noexcept {
    if (!section.keysInArena)
        trimList(file.memory, section.keys);
    else
        section.keys->capacity = section.keys->count;
}

bool placeKeys(IniFileObject& file, IniSection& section, const IniList& list) noexcept {
    void* const place = file.arena.take(file.memory, listSize(list.count));
    if (place == nullptr)
        return false;
    section.keys = copyList(list, place);
    section.keysInArena = true;
    return true;
}

void releaseKeys(const IniMemory& memory, IniSection& section) noexcept {
    if (!section.keysInArena)
        memory.release(section.keys);
    section.keys = nullptr;
    section.keysInArena = false;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

#include "pxidrivertools/ini/iniFileObject.h"

#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniList.h"

#include <new>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// Everything a section owns but its records' places in the pools.
void releaseContent(const IniMemory& memory, IniSection& section) noexcept {
    if (section.keysOwnText)
        for (IniNamed* element : elementsOf(section.keys)) {
            IniKey* const key = static_cast<IniKey*>(element);
            releaseText(memory, key->name);
            releaseText(memory, key->value);
        }
    releaseText(memory, section.name);
    releaseIndex(memory, section.index);
}

} // namespace

IniFileObject* createIniFile(const IniMemory& memory) noexcept {
    void* const block = memory.allocate(sizeof(IniFileObject));
    if (block == nullptr)
        return nullptr;
    IniFileObject* const file = ::new (block) IniFileObject{};
    file->memory = memory;
    return file;
}

void destroyIniFile(IniFileObject* file) noexcept {
    if (file == nullptr)
        return;
    discardSections(*file);
    const IniMemory memory = file->memory;
    releaseText(memory, file->path);
    file->~IniFileObject();
    memory.release(file);
}

void discardSections(IniFileObject& file) noexcept {
    for (IniNamed* element : elementsOf(file.sections)) {
        IniSection* const section = static_cast<IniSection*>(element);
        releaseContent(file.memory, *section);
        releaseKeys(file.memory, *section);
    }
    releaseList(file.memory, file.sections);
    releaseIndex(file.memory, file.sectionIndex);
    file.sectionPool.forget();
    file.keyPool.forget();
    file.arena.release(file.memory);
    file.memory.release(file.block);
    file.block = nullptr;
    file.current = nullptr;
}

void discardSection(IniFileObject& file, IniSection* section) noexcept {
    releaseContent(file.memory, *section);
    for (IniNamed* element : elementsOf(section->keys))
        file.keyPool.giveBack(static_cast<IniKey*>(element));
    releaseKeys(file.memory, *section);
    if (file.current == section)
        file.current = nullptr;
    file.sectionPool.giveBack(section);
}

void discardKey(IniFileObject& file, IniKey* key) noexcept {
    releaseText(file.memory, key->name);
    releaseText(file.memory, key->value);
    file.keyPool.giveBack(key);
}

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

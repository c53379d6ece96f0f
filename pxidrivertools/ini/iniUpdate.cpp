#include "pxidrivertools/ini/iniUpdate.h"

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniNames.h"

#include <algorithm>
#include <span>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

IniStatus replaceValue(IniFileObject& file, IniSection& section, IniKey& key,
                       std::string_view value, char quote) noexcept {
    IniText copy;
    if (!copyText(file.memory, value, copy))
        return kIniOutOfMemory;
    releaseText(file.memory, key.value);
    key.value = copy;
    key.quote = quote;
    section.keysOwnText = true;
    return kIniStored;
}

// A key that is in no list yet, or null.
IniKey* makeKey(IniFileObject& file, std::string_view name, std::string_view value,
                char quote) noexcept {
    IniKey* const key = file.keyPool.take(file.arena, file.memory);
    if (key == nullptr)
        return nullptr;
    if (!copyText(file.memory, name, key->name) || !copyText(file.memory, value, key->value)) {
        discardKey(file, key);
        return nullptr;
    }
    key->name.tag = tagName(name);
    key->quote = quote;
    return key;
}

IniSection* makeSection(IniFileObject& file, std::string_view name) noexcept {
    IniSection* const section = file.sectionPool.take(file.arena, file.memory);
    if (section == nullptr)
        return nullptr;
    if (!copyText(file.memory, name, section->name)) {
        discardSection(file, section);
        return nullptr;
    }
    section->caseSensitive = file.caseSensitive;
    return section;
}

IniStatus appendKey(IniFileObject& file, IniSection& section, std::string_view name,
                    std::string_view value, char quote) noexcept {
    IniKey* const key = makeKey(file, name, value, quote);
    if (key == nullptr)
        return kIniOutOfMemory;
    if (!reserveKey(file, section, IniGrowth::oneSlot)) {
        discardKey(file, key);
        return kIniNotStored;
    }
    appendElement(*section.keys, key);
    section.keysOwnText = true;
    return kIniStored;
}

// The 1-based index of a record in its list. The first one of its name is found by the index.
std::uint32_t positionOf(const IniMemory& memory, IniIndex*& index, const IniList* list,
                         bool caseSensitive, const IniNamed& record) noexcept {
    const std::span<IniNamed* const> elements = elementsOf(list);
    const std::uint32_t first = findByName(memory, index, list, caseSensitive, record.name.view());
    if (first != 0 && elements[first - 1] == &record)
        return first;
    const auto found = std::find(elements.begin(), elements.end(), &record);
    return static_cast<std::uint32_t>(found - elements.begin()) + 1;
}

// Takes a record out of its list and the list's index.
void removeRecord(const IniMemory& memory, IniIndex*& index, IniList* list, bool caseSensitive,
                  const IniNamed& record) noexcept {
    const std::uint32_t position = positionOf(memory, index, list, caseSensitive, record);
    elementLeaves(index, list, caseSensitive, position);
    removeElement(*list, position);
}

} // namespace

IniStatus setValue(IniFileObject& file, std::string_view section, std::string_view key,
                   std::string_view value, char quote) noexcept {
    if (section.empty() || key.empty())
        return kIniEmptyName;
    if (IniSection* const existing = findSection(file, section)) {
        IniKey* const same = file.mergeDuplicates ? findKey(file, *existing, key) : nullptr;
        return same != nullptr ? replaceValue(file, *existing, *same, value, quote)
                               : appendKey(file, *existing, key, value, quote);
    }
    IniSection* const created = makeSection(file, section);
    if (created == nullptr)
        return kIniOutOfMemory;
    IniStatus status = appendKey(file, *created, key, value, quote);
    if (status == kIniStored && !reserveElement(file.memory, file.sections, IniGrowth::oneSlot))
        status = kIniOutOfMemory;
    if (status == kIniStored)
        appendElement(*file.sections, created);
    else
        discardSection(file, created);
    return status;
}

void removeSection(IniFileObject& file, IniSection& section) noexcept {
    removeRecord(file.memory, file.sectionIndex, file.sections, file.caseSensitive, section);
    discardSection(file, &section);
}

void removeKey(IniFileObject& file, IniSection& section, IniKey& key) noexcept {
    removeRecord(file.memory, section.index, section.keys, section.caseSensitive, key);
    discardKey(file, &key);
}

IniStatus renameSection(IniFileObject& file, IniSection& section, std::string_view name) noexcept {
    if (name.empty())
        return kIniEmptyName;
    IniText copy;
    if (!copyText(file.memory, name, copy))
        return kIniOutOfMemory;
    const std::uint32_t position =
        positionOf(file.memory, file.sectionIndex, file.sections, file.caseSensitive, section);
    nameLeaves(file.sectionIndex, file.sections, file.caseSensitive, position);
    releaseText(file.memory, section.name);
    section.name = copy;
    nameArrives(file.sectionIndex, file.sections, file.caseSensitive, position);
    return kIniDone;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

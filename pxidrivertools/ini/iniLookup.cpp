#include "pxidrivertools/ini/iniLookup.h"

#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniNames.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

IniSection* findSection(IniFileObject& file, std::string_view name) noexcept {
    if (file.current != nullptr && equalNames(file.caseSensitive, file.current->name.view(), name))
        return file.current;
    const std::uint32_t found =
        findByName(file.memory, file.sectionIndex, file.sections, file.caseSensitive, name);
    if (found == 0)
        return nullptr;
    file.current = static_cast<IniSection*>(elementsOf(file.sections)[found - 1]);
    return file.current;
}

IniKey* findKey(IniFileObject& file, IniSection& section, bool caseSensitive,
                std::string_view name) noexcept {
    // The index knows one way of comparing only.
    const std::uint32_t found =
        caseSensitive == section.caseSensitive
            ? findByName(file.memory, section.index, section.keys, caseSensitive, name)
            : walkByName(section.keys, caseSensitive, name);
    return found == 0 ? nullptr : static_cast<IniKey*>(elementsOf(section.keys)[found - 1]);
}

IniKey* findKey(IniFileObject& file, IniSection& section, std::string_view name) noexcept {
    return findKey(file, section, section.caseSensitive, name);
}

IniSection* sectionAt(const IniFileObject& file, std::int32_t index) noexcept {
    return static_cast<IniSection*>(elementAt(file.sections, index));
}

IniKey* keyAt(const IniSection& section, std::int32_t index) noexcept {
    return static_cast<IniKey*>(elementAt(section.keys, index));
}

std::uint32_t sectionCount(const IniFileObject& file) noexcept {
    return countOf(file.sections);
}

std::uint32_t keyCount(const IniSection& section) noexcept {
    return countOf(section.keys);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

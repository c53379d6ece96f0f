#include "pxidrivertools/ini/iniRecords.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Files are large when they are large in keys and sections: their records stay small.
static_assert(sizeof(void*) != 8 || (sizeof(IniSection) == 40 && sizeof(IniKey) == 40));

bool isUnnamed(const IniSection& section) noexcept {
    return section.line == kNotFromFile && section.name.view() == kUnnamedSection;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// Names a place in the source that raises an error. A site is constant data, shared by all threads.
#pragma once

#include <cstdint>

namespace nZOQUIL000 {

// The component that every record of this plug-in names.
inline constexpr const char* kComponent = "zotavpci";

struct tErrorSite {
    const char* file;           // source path with backslashes, without extension
    std::int32_t line;          // counted from 1
    const char* component;      // null: the record has no such member
    const char* error_constant; // name of the code, or of the variable that holds it
};

// The site of the calling line in `file`. The built-in line stands in for std::source_location,
// which one of the compilers does not have.
constexpr tErrorSite siteHere(const char* file, const char* errorConstant,
                              std::int32_t line = __builtin_LINE()) noexcept {
    return {file, line, kComponent, errorConstant};
}

} // namespace nZOQUIL000

// Names a place in the source that raises an error. A site is constant data, shared by all threads.
#pragma once

#include <cstdint>
#include <source_location>

namespace nZOQUIL000 {

// The component that every record of this plug-in names.
inline constexpr const char* kComponent = "zotavpci";

struct tErrorSite {
    const char* file;           // source path with backslashes, without extension
    std::int32_t line;          // counted from 1
    const char* component;      // null: the record has no such member
    const char* error_constant; // name of the code, or of the variable that holds it
};

// The site of the calling line in `file`.
constexpr tErrorSite
siteHere(const char* file, const char* errorConstant,
         std::source_location where = std::source_location::current()) noexcept {
    return {file, static_cast<std::int32_t>(where.line()), kComponent, errorConstant};
}

} // namespace nZOQUIL000

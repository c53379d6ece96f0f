// The status form of the INI file class: a plain structure of fixed size, without a text to grow.
#pragma once

#include "platform/systemCode.h"
#include "quil/tErrorStatus.h"

#include <cstddef>
#include <cstdint>

namespace nZOQUIL000 {

struct tFixedStatus {
    // Size of the structure in bytes, filled by the caller. From kFixedStatusDetailSize on the
    // detail fields below exist; a smaller structure carries a code alone.
    std::uint32_t size = sizeof(tFixedStatus);
    std::int32_t code = 0;
    char component[10] = {};
    char file[102] = {};
    std::int32_t line = 0;
    // The system's code behind the failure, where there is one. Every set clears it.
    std::uint64_t systemCode = 0;
    std::uint8_t reserved[72] = {};

    [[nodiscard]] bool failed() const noexcept { return code < 0; }
};

inline constexpr std::uint32_t kFixedStatusDetailSize = 208;
static_assert(sizeof(tFixedStatus) == kFixedStatusDetailSize);
static_assert(offsetof(tFixedStatus, line) == 120);

// Sets the code by the merge rule; true when it was taken. The component is cut to 9 characters. A
// file path of more than 100 characters keeps its first and its last 49, with ".." between.
bool setFixedStatus(tFixedStatus& status, std::int32_t code, const char* component,
                    const char* file, std::int32_t line) noexcept;

// Adds why the system failed to a status just set; for a structure without detail fields nothing.
void noteSystemCode(tFixedStatus& status, platform::SystemCode code) noexcept;

// Merges a fixed-layout status into an error status; what it says of file, line and component
// becomes the record. False only when growing the text failed.
bool convertFixedStatus(const tFixedStatus& source, tErrorStatus& destination) noexcept;

} // namespace nZOQUIL000

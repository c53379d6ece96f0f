// The error status: the one value that carries a failure through the plug-in, and the rule by which
// one failure yields to another. Owned by one thread at a time; nothing here locks or raises.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nZOQUIL000 {

// The largest capacity that a status's text may have, in bytes.
inline constexpr std::uint32_t kMaxTextCapacity = 0x7FFFFFFF;

// Status codes of the foundation itself.
inline constexpr std::int32_t zoquilerr_memoryFull = -52000;
inline constexpr std::int32_t zoquilerr_invalidParameter = -52005;

struct tErrorStatus {
    // Gives the status a text buffer of at least the requested capacity, keeping its text; capacity
    // 0 releases the buffer. False leaves everything as it was.
    using Reallocate = bool (*)(tErrorStatus& status, std::uint32_t requested);

    // 0 success, negative an error, positive a warning.
    std::int32_t code = 0;

    // Size of the text buffer in bytes; 0 when there is none.
    std::uint32_t capacity = 0;

    // Owns the buffer's memory policy. May be null in a status from elsewhere: its buffer is then
    // released with std::free and cannot grow.
    Reallocate reallocate = nullptr;

    // A NUL-terminated JSON object that says where and why the error arose; null when there is no
    // buffer. The last byte of the buffer is the marker "J", and every byte between the text's NUL
    // and the marker is zero.
    char* text = nullptr;

    tErrorStatus() noexcept;
    ~tErrorStatus(); // releases the text
    tErrorStatus(const tErrorStatus&) = delete;
    tErrorStatus& operator=(const tErrorStatus&) = delete;

    [[nodiscard]] bool failed() const noexcept { return code < 0; }

    // The text, or an empty string when there is none.
    [[nodiscard]] const char* textOrEmpty() const noexcept { return text ? text : ""; }

    // Frees the text buffer through `reallocate`.
    void releaseText() noexcept;

    // Takes code and text of `source` into this status, which must be fresh. A source with the
    // default reallocator gives its buffer away (capacity 0 and no text remain); the text of any
    // other source is copied.
    void takeFrom(tErrorStatus& source) noexcept;
};

// The default memory policy: 512 bytes first, then the smallest power of two that is enough.
bool reallocateDefault(tErrorStatus& status, std::uint32_t requested) noexcept;

// The merge rule, for every status there is: the first error wins, a warning yields only to an
// error, success yields to anything that is not success.
[[nodiscard]] constexpr bool incomingWins(std::int32_t current, std::int32_t incoming) noexcept {
    if (current == 0)
        return incoming != 0;
    return current > 0 && incoming < 0;
}

// Applies the merge rule. When the source wins, the destination takes over its buffer if both have
// the same reallocator (the source keeps its code, but no text) and a copy of its text otherwise.
// True when the destination changed.
bool mergeStatus(tErrorStatus& destination, tErrorStatus&& source) noexcept;

// The same, always with a copy of the text; the source is left as it is.
bool mergeStatus(tErrorStatus& destination, const tErrorStatus& source) noexcept;

} // namespace nZOQUIL000

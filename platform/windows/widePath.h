// Which of the system's two functions serves a path. Private to this folder.
#pragma once

#include "platform/windows/systemHeaders.h"

#include <array>

namespace platform {

// The product's paths are UTF-8, or come from the registry in the program's code page. In ASCII the
// two are one and the narrow functions serve; beyond it a path that is valid UTF-8 is taken for
// that and needs the wide ones. Takes no memory from the heap, so that running out of it is never
// mistaken for a missing file.
class WidePath {
public:
    // With `other`, which goes into the same call, both are wide or none.
    explicit WidePath(const char* path, const char* other = "") noexcept {
        needed_ = beyondAscii(path) || beyondAscii(other);
        needed_ = needed_ && MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1,
                                                 text_.data(), static_cast<int>(text_.size())) != 0;
    }

    [[nodiscard]] bool needed() const noexcept { return needed_; }
    [[nodiscard]] const wchar_t* text() const noexcept { return text_.data(); }

private:
    static bool beyondAscii(const char* text) noexcept {
        while (*text != '\0' && static_cast<unsigned char>(*text) <= 0x7F)
            ++text;
        return *text != '\0';
    }

    static constexpr std::size_t kLongestPath = 32768; // of the wide functions

    bool needed_ = false;
    std::array<wchar_t, kLongestPath> text_; // filled when needed
};

} // namespace platform

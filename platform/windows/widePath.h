// Which of the system's two functions serves a path, and in which form the path goes into it.
// Private to this folder.
#pragma once

#include "platform/windows/longPath.h"
#include "platform/windows/systemHeaders.h"

#include <array>
#include <cstddef>
#include <memory>
#include <new>

namespace platform {

// The product's paths are UTF-8, or come from the registry in the program's code page. In ASCII the
// two are one and the narrow functions serve; beyond it a path that is valid UTF-8 is taken for
// that and needs the wide ones, and so does one that is too long for the narrow ones. Only a long
// one takes memory from the heap; without it the text is a name that no file can have, so that
// running out of memory is never mistaken for a missing file.
class WidePath {
public:
    WidePath(const WidePath&) = delete;
    WidePath& operator=(const WidePath&) = delete;

    // With `other`, which goes into the same call, both are wide or none.
    explicit WidePath(const char* path, const char* other = "") noexcept {
        needed_ = needsWide(path) || (*other != '\0' && needsWide(other));
        if (!needed_)
            return;
        if (convert(path, usual_.data(), static_cast<int>(usual_.size())) == 0)
            convertLong(path);
        if (needed_ && isLongPath(text_)) {
            long_ = longForm(text_);
            text_ = textOf(long_);
        }
    }

    [[nodiscard]] bool needed() const noexcept { return needed_; }
    [[nodiscard]] const wchar_t* text() const noexcept { return text_; }

private:
    void convertLong(const char* path) noexcept {
        const int length =
            GetLastError() == ERROR_INSUFFICIENT_BUFFER ? convert(path, nullptr, 0) : 0;
        needed_ = length != 0 && static_cast<std::size_t>(length) <= kLongestPath;
        if (!needed_)
            return;
        long_.reset(new (std::nothrow) wchar_t[static_cast<std::size_t>(length)]);
        text_ = textOf(long_);
        if (long_ != nullptr)
            convert(path, long_.get(), length);
    }

    static const wchar_t* textOf(const std::unique_ptr<wchar_t[]>& text) noexcept {
        return text == nullptr ? L"|" : text.get();
    }

    // 0 for what is no UTF-8, or too long.
    static int convert(const char* path, wchar_t* text, int size) noexcept {
        return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, text, size);
    }

    static bool needsWide(const char* path) noexcept {
        return beyondAscii(path) || isLongPath(path);
    }

    static bool beyondAscii(const char* text) noexcept {
        while (*text != '\0' && static_cast<unsigned char>(*text) <= 0x7F)
            ++text;
        return *text != '\0';
    }

    bool needed_ = false;
    std::array<wchar_t, 512> usual_; // filled when needed
    std::unique_ptr<wchar_t[]> long_;
    const wchar_t* text_ = usual_.data();
};

} // namespace platform

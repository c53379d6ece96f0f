// Paths that are longer than the system's functions take them in their usual form. Private to this
// folder.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

// A path's text in the system's form; for a text that is no UTF-8 a name that no file can have.
// Raises std::bad_alloc.
std::wstring wideText(std::string_view utf8);

// The same back; what is no UTF-16 is replaced. Raises std::bad_alloc.
std::string utf8Text(std::wstring_view text);

// The longest text that the system takes for a path in any form, its terminating zero included.
inline constexpr std::size_t kLongestPath = 32767;
// The longest name of a file or folder.
inline constexpr std::size_t kLongestName = 255;

// Whether the path, seen from the root, is too long for the usual form, or nearly so: a folder must
// leave room for names in it. One that is in the longer form already never is.
bool isLongPath(const wchar_t* path) noexcept;
bool isLongPath(const char* path) noexcept; // of UTF-8, which may be counted as longer than it is

// The path in the form that knows no such limit: from the root, behind "\\?\", with backslashes
// only and without "." and "..". Null when it cannot be made, for want of memory or since it is
// longer than any.
std::unique_ptr<wchar_t[]> longForm(const wchar_t* path) noexcept;

// The path itself, or its longer form where that is needed. Raises std::bad_alloc.
std::wstring withLongPrefix(std::wstring path);

// Whether no form will do: the path is longer than any, or a name in it is.
bool isTooLong(const std::wstring& path);

} // namespace platform

#include "platform/windows/longPath.h"

#include "platform/windows/systemHeaders.h"

#include <algorithm>
#include <cwchar>
#include <new>
#include <string_view>

namespace platform {

namespace {

// A folder's path must leave room for a name of the oldest form, with its dot and separator.
constexpr std::size_t kUsualLimit = MAX_PATH - 12;

// Of one of the text's own characters.
template <typename Character>
constexpr bool isSeparator(Character c) noexcept {
    return c == Character('\\') || c == Character('/');
}

template <typename Character>
bool isFromRoot(std::basic_string_view<Character> path) noexcept {
    const bool hasDrive = path.size() > 2 && path[1] == Character(':') && isSeparator(path[2]);
    return hasDrive || (path.size() > 1 && isSeparator(path[0]) && isSeparator(path[1]));
}

// "\\?\" or "\\.\", which are handed on as they are.
template <typename Character>
bool isInSystemsForm(std::basic_string_view<Character> path) noexcept {
    constexpr Character kBackslash = '\\';
    return path.size() > 3 && path[0] == kBackslash && path[1] == kBackslash &&
           (path[2] == Character('?') || path[2] == Character('.')) && path[3] == kBackslash;
}

template <typename Character>
bool isLong(std::basic_string_view<Character> path) noexcept {
    if (isInSystemsForm(path))
        return false;
    if (path.size() >= kUsualLimit || isFromRoot(path))
        return path.size() >= kUsualLimit;
    // The current folder comes before it.
    return path.size() + GetCurrentDirectoryW(0, nullptr) >= kUsualLimit;
}

constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr std::wstring_view kLongSharePrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view kSharePrefix = L"\\\\";

} // namespace

std::wstring wideText(std::string_view utf8) {
    const auto size = static_cast<int>(utf8.size());
    if (utf8.empty())
        return {};
    const int needed =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, nullptr, 0);
    if (needed <= 0)
        return L"|";
    std::wstring text(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, text.data(), needed);
    return text;
}

std::string utf8Text(std::wstring_view text) {
    const auto size = static_cast<int>(text.size());
    if (text.empty())
        return {};
    const int needed =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

bool isLongPath(const wchar_t* path) noexcept {
    return isLong(std::wstring_view(path));
}

bool isLongPath(const char* path) noexcept {
    return isLong(std::string_view(path));
}

std::unique_ptr<wchar_t[]> longForm(const wchar_t* path) noexcept {
    const DWORD needed = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (needed == 0 || needed > kLongestPath)
        return nullptr;
    // In front of what is found there is room for the longest prefix.
    const std::size_t room = kLongSharePrefix.size();
    std::unique_ptr<wchar_t[]> text(new (std::nothrow) wchar_t[room + needed]);
    if (text == nullptr)
        return nullptr;
    wchar_t* const full = text.get() + room;
    const DWORD length = GetFullPathNameW(path, needed, full, nullptr);
    if (length == 0 || length >= needed)
        return nullptr;
    std::wstring_view rest(full, length);
    std::wstring_view prefix;
    if (!isInSystemsForm(rest)) {
        const bool isShare = rest.starts_with(kSharePrefix);
        prefix = isShare ? kLongSharePrefix : kLongPrefix;
        rest.remove_prefix(isShare ? kSharePrefix.size() : 0);
    }
    if (prefix.size() + rest.size() >= kLongestPath)
        return nullptr;
    std::copy(prefix.begin(), prefix.end(), text.get());
    std::wmemmove(text.get() + prefix.size(), rest.data(), rest.size() + 1);
    return text;
}

std::wstring withLongPrefix(std::wstring path) {
    if (!isLongPath(path.c_str()))
        return path;
    const auto text = longForm(path.c_str());
    return text == nullptr ? path : std::wstring(text.get());
}

bool isTooLong(const std::wstring& path) {
    if (isLongPath(path.c_str()) && longForm(path.c_str()) == nullptr)
        return true;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find_first_of(L"\\/", start), path.size());
        if (end - start > kLongestName)
            return true;
        start = end + 1;
    }
    return false;
}

} // namespace platform

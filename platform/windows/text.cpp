#include "platform/text.h"

#include "platform/utf8.h"
#include "platform/windows/systemHeaders.h"

#include <limits>

namespace platform {

namespace {

Conversion failedConversion() noexcept {
    return GetLastError() == ERROR_NO_UNICODE_TRANSLATION ? Conversion::invalidText
                                                          : Conversion::failed;
}

// The functions count in int, and take a length of 0 for a mistake.
bool isConvertible(std::size_t length) noexcept {
    return length <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

} // namespace

Conversion toWide(const std::string& utf8, std::wstring& result) {
    std::wstring wide;
    if (!utf8.empty()) {
        if (!isConvertible(utf8.size()))
            return Conversion::failed;
        const int length = static_cast<int>(utf8.size());
        const int needed =
            MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), length, nullptr, 0);
        if (needed <= 0)
            return failedConversion();
        wide.resize(static_cast<std::size_t>(needed));
        if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), length, wide.data(),
                                needed) != needed)
            return failedConversion();
    }
    result.swap(wide);
    return Conversion::done;
}

Conversion toUtf8(const std::wstring& wide, std::string& result) {
    std::string utf8;
    if (!wide.empty()) {
        if (!isConvertible(wide.size()))
            return Conversion::failed;
        const int length = static_cast<int>(wide.size());
        const int needed = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), length,
                                               nullptr, 0, nullptr, nullptr);
        if (needed <= 0)
            return failedConversion();
        utf8.resize(static_cast<std::size_t>(needed));
        if (WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), length, utf8.data(),
                                needed, nullptr, nullptr) != needed)
            return failedConversion();
    }
    result.swap(utf8);
    return Conversion::done;
}

std::string readableText(const std::string& text) {
    if (isValidUtf8(text) || !isConvertible(text.size()))
        return text;
    const int length = static_cast<int>(text.size());
    const int needed =
        MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (needed <= 0)
        return text;
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    std::string utf8;
    if (MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(),
                            needed) != needed ||
        toUtf8(wide, utf8) != Conversion::done)
        return text;
    return utf8;
}

std::string narrowCharacterSet() {
    const UINT page = GetACP();
    return page == CP_UTF8 ? std::string() : "code page " + std::to_string(page);
}

} // namespace platform

#include "platform/dynamicLibrary.h"

#include "platform/utf8.h"
#include "platform/windows/systemMessage.h"

#include <new>
#include <optional>
#include <string_view>

namespace platform {

namespace {

constexpr char32_t kFirstPair = 0x10000;

// False for a text that is no UTF-8.
bool decode(std::string_view utf8, std::wstring& wide) {
    while (!utf8.empty()) {
        const std::optional<char32_t> value = takeCodePoint(utf8);
        if (!value)
            return false;
        if (*value < kFirstPair) {
            wide.push_back(static_cast<wchar_t>(*value));
        } else {
            const char32_t rest = *value - kFirstPair;
            wide.push_back(static_cast<wchar_t>(0xD800 + (rest >> 10)));
            wide.push_back(static_cast<wchar_t>(0xDC00 + (rest & 0x3FF)));
        }
    }
    return true;
}

} // namespace

std::string libraryFileName(const char* baseName) {
    return std::string(baseName) + ".dll";
}

DynamicLibrary::~DynamicLibrary() {
    unload();
}

bool DynamicLibrary::load(const char* utf8Name) {
    unload();
    std::wstring name;
    const bool isUtf8 = decode(utf8Name, name);
    if (isUtf8)
        handle_ = LoadLibraryExW(name.c_str(), nullptr, 0);
    if (handle_ != nullptr)
        return true;
    keepFailure(isUtf8 ? GetLastError() : ERROR_NO_UNICODE_TRANSLATION);
    return false;
}

void* DynamicLibrary::symbol(const char* name) {
    const FARPROC address = GetProcAddress(static_cast<HMODULE>(handle_), name);
    if (address != nullptr)
        return reinterpret_cast<void*>(address);
    keepFailure(GetLastError());
    return nullptr;
}

void DynamicLibrary::keepFailure(SystemCode code, const char* /*name*/) noexcept {
    failure_ = code;
    try {
        failureText_ = rawSystemMessage(code);
    } catch (const std::bad_alloc&) {
        failureText_.clear();
    }
}

void DynamicLibrary::unload() noexcept {
    if (handle_ != nullptr)
        FreeLibrary(static_cast<HMODULE>(handle_));
    handle_ = nullptr;
}

} // namespace platform

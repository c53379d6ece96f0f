#include "platform/programPath.h"

#include "platform/directorySearch.h"
#include "platform/text.h"
#include "platform/windows/systemHeaders.h"

namespace platform {

std::string programFolder() {
    constexpr std::size_t kLongestPath = 32768;
    std::wstring wide(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, wide.data(), static_cast<DWORD>(wide.size()));
        if (length == 0)
            return {};
        if (length < wide.size()) {
            wide.resize(length);
            break;
        }
        if (wide.size() >= kLongestPath)
            return {};
        wide.resize(wide.size() * 2);
    }
    std::string whole;
    if (toUtf8(wide, whole) != Conversion::done)
        return {};
    return whole.substr(0, lastSeparator(whole) + 1);
}

} // namespace platform

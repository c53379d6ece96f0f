#include "quil/systemStatus.h"

#include "quil/memberWriter.h"

#include <new>
#include <string>

namespace nZOQUIL000 {

namespace {

// The platform's own convention for carrying a system error in a signed status.
constexpr std::uint32_t kSystemErrorBase = 0x80070000U;
constexpr std::uint32_t kInstallationErrorBase = 0x800F0000U;
constexpr std::uint32_t kSystemErrorMask = 0xFFFFU;

} // namespace

std::int32_t statusFromSystemCode(platform::SystemCode code) noexcept {
    if (code == platform::kNoSystemError)
        return 0;
    if (platform::isOutOfMemory(code))
        return zoquilerr_memoryFull;
    const std::uint32_t base =
        platform::isInstallationCode(code) ? kInstallationErrorBase : kSystemErrorBase;
    return static_cast<std::int32_t>(base | (code & kSystemErrorMask));
}

bool setSystemError(tErrorStatus& status, platform::SystemCode code,
                    const tErrorSite& site) noexcept {
    return setError(status, statusFromSystemCode(code), site);
}

void appendSystemReason(tErrorStatus& status, platform::SystemCode code) noexcept {
    if (code == platform::kNoSystemError)
        return;
    std::string words;
    try {
        words = platform::systemMessage(code);
    } catch (const std::bad_alloc&) {
        words.clear();
    }
    const JsonMember api{"api", platform::systemCodeOrigin()};
    const JsonMember number{"code", code};
    MemberWriter writer(status);
    if (words.empty())
        writer.append({"internal_error", {api, number}});
    else
        writer.append({"internal_error", {api, number, {"string", words.c_str()}}});
}

} // namespace nZOQUIL000

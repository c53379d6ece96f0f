#include "quil/tFixedStatus.h"

#include "quil/errorRecord.h"
#include "quil/memberWriter.h"

#include <algorithm>
#include <cstring>

namespace nZOQUIL000 {

namespace {

constexpr std::size_t kMaxComponent = 9;
constexpr std::size_t kMaxFile = 100;
constexpr std::size_t kFileEnd = 49; // characters kept at either end of a longer path

bool hasDetail(const tFixedStatus& status) noexcept {
    return status.size >= kFixedStatusDetailSize;
}

void copyFile(char* out, const char* file) noexcept {
    const std::size_t length = std::strlen(file);
    if (length <= kMaxFile) {
        std::memcpy(out, file, length + 1);
        return;
    }
    std::memcpy(out, file, kFileEnd);
    std::memcpy(out + kFileEnd, "..", 2);
    std::memcpy(out + kFileEnd + 2, file + length - kFileEnd, kFileEnd + 1);
}

} // namespace

bool setFixedStatus(tFixedStatus& status, std::int32_t code, const char* component,
                    const char* file, std::int32_t line) noexcept {
    if (!incomingWins(status.code, code))
        return false;
    status.code = code;
    if (!hasDetail(status))
        return true;
    const std::size_t length = std::min(std::strlen(component), kMaxComponent);
    std::memcpy(status.component, component, length);
    status.component[length] = 0;
    copyFile(status.file, file);
    status.line = line;
    status.systemCode = 0;
    return true;
}

void noteSystemCode(tFixedStatus& status, platform::SystemCode code) noexcept {
    if (hasDetail(status))
        status.systemCode = code;
}

bool convertFixedStatus(const tFixedStatus& source, tErrorStatus& destination) noexcept {
    if (!incomingWins(destination.code, source.code))
        return true;
    destination.code = source.code;
    MemberWriter writer(destination, replaceText(destination, nullptr));
    if (hasDetail(source) && source.file[0])
        writer.append({"file", source.file}).append({"line", source.line});
    if (hasDetail(source) && source.component[0])
        writer.append({"component", source.component});
    return writer.good();
}

} // namespace nZOQUIL000

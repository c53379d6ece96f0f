#include "quil/tErrorStatus.h"

#include "quil/errorRecord.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace nZOQUIL000 {

namespace {

constexpr std::uint32_t kFirstCapacity = 512;

// A copy that cannot be made leaves the code without a record, never with half of one.
void copyText(tErrorStatus& destination, const tErrorStatus& source) noexcept {
    if (!source.text || !replaceText(destination, source.text))
        destination.releaseText();
}

} // namespace

tErrorStatus::tErrorStatus() noexcept : reallocate(&reallocateDefault) {}

tErrorStatus::~tErrorStatus() {
    releaseText();
}

void tErrorStatus::releaseText() noexcept {
    if (!text)
        return;
    if (reallocate) {
        reallocate(*this, 0);
        return;
    }
    std::free(text);
    text = nullptr;
    capacity = 0;
}

void tErrorStatus::takeFrom(tErrorStatus& source) noexcept {
    code = source.code;
    if (source.reallocate != &reallocateDefault) {
        copyText(*this, source);
        return;
    }
    releaseText();
    reallocate = source.reallocate;
    text = source.text;
    capacity = source.capacity;
    source.text = nullptr;
    source.capacity = 0;
}

bool reallocateDefault(tErrorStatus& status, std::uint32_t requested) noexcept {
    if (requested == 0) {
        std::free(status.text);
        status.text = nullptr;
        status.capacity = 0;
        return true;
    }
    if (requested <= status.capacity)
        return true;
    if (requested > kMaxTextCapacity)
        return false;
    const std::uint32_t size =
        requested <= kFirstCapacity ? kFirstCapacity : std::bit_ceil(requested);
    auto* buffer = static_cast<char*>(std::malloc(size));
    if (!buffer)
        return false;
    const char* old = status.text ? status.text : "{}";
    const std::size_t length = std::strlen(old);
    std::memcpy(buffer, old, length);
    std::memset(buffer + length, 0, size - length - 1);
    buffer[size - 1] = kTextMarker;
    std::free(status.text);
    status.text = buffer;
    status.capacity = size;
    return true;
}

bool mergeStatus(tErrorStatus& destination, tErrorStatus&& source) noexcept {
    if (destination.reallocate != source.reallocate)
        return mergeStatus(destination, static_cast<const tErrorStatus&>(source));
    if (!incomingWins(destination.code, source.code))
        return false;
    destination.code = source.code;
    destination.releaseText();
    destination.text = source.text;
    destination.capacity = source.capacity;
    source.text = nullptr;
    source.capacity = 0;
    return true;
}

bool mergeStatus(tErrorStatus& destination, const tErrorStatus& source) noexcept {
    if (!incomingWins(destination.code, source.code))
        return false;
    destination.code = source.code;
    copyText(destination, source);
    return true;
}

} // namespace nZOQUIL000

#include "quil/errorRecord.h"

#include "quil/jsonText.h"

#include <cstring>

namespace nZOQUIL000 {

namespace {

bool ensureCapacity(tErrorStatus& status, std::uint32_t needed) noexcept {
    return status.capacity >= needed || (status.reallocate && status.reallocate(status, needed));
}

bool isOpening(char c) noexcept {
    return c == '{' || c == '[';
}

// The last byte before `position` that is not white space. A container's opening bracket stands
// somewhere before every insertion place, so the walk ends.
const char* skipWhitespaceBack(const char* position) noexcept {
    do {
        --position;
    } while (*position == ' ' || *position == '\t' || *position == '\n' || *position == '\r');
    return position;
}

} // namespace

char* replaceText(tErrorStatus& status, const char* newText) noexcept {
    const char* source = newText ? newText : "{}";
    const std::size_t length = std::strlen(source);
    if (length == 0 || length > kMaxTextLength ||
        !ensureCapacity(status, static_cast<std::uint32_t>(length) + 2))
        return nullptr;
    std::memcpy(status.text, source, length);
    std::memset(status.text + length, 0, status.capacity - length - 1);
    status.text[status.capacity - 1] = kTextMarker;
    return status.text + length - 1;
}

char* reserveAndLocate(tErrorStatus& status, std::uint32_t extra) noexcept {
    if (extra > kMaxTextLength || !ensureCapacity(status, extra + 2))
        return nullptr;
    const char* closing = findClosingBracket(status.text);
    return closing ? status.text + (closing - status.text) : nullptr;
}

char* insertSpace(char* position, std::size_t needed) noexcept {
    const char* before = skipWhitespaceBack(position);
    const char* after = skipWhitespace(position);
    const bool isEmpty = isOpening(*before) && (*after == '}' || *after == ']');
    const bool atStart = isOpening(*before);
    const std::size_t gap = needed + (isEmpty ? 0 : 1);

    char* end = position + std::strlen(position);
    std::size_t room = 0;
    while (room < gap && end[room + 1] == 0)
        ++room;
    if (room < gap)
        return nullptr;

    std::memmove(position + gap, position, static_cast<std::size_t>(end - position));
    if (isEmpty)
        return position;
    if (atStart) {
        position[needed] = ',';
        return position;
    }
    *position = ',';
    return position + 1;
}

} // namespace nZOQUIL000

#include "quil/jsonText.h"

#include <cstring>

namespace nZOQUIL000 {

namespace {

constexpr int kMaxDepth = 64;

// The letter of a byte's two-character escape; 0 when it has none.
char shortEscape(unsigned char byte) noexcept {
    switch (byte) {
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    case '"':
        return '"';
    case '\\':
        return '\\';
    default:
        return 0;
    }
}

bool needsCodeEscape(unsigned char byte) noexcept {
    return byte < 32 || byte == 127;
}

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

const char* skipDigits(const char* position) noexcept {
    while (isDigit(*position))
        ++position;
    return position;
}

// Each skip function returns the position after what it skips, or null.

const char* skipString(const char* position) noexcept {
    if (*position != '"')
        return nullptr;
    for (++position; *position; ++position) {
        if (*position == '"')
            return position + 1;
        if (*position == '\\' && !*++position)
            return nullptr;
    }
    return nullptr;
}

const char* skipNumber(const char* position) noexcept {
    if (*position == '-')
        ++position;
    if (!isDigit(*position))
        return nullptr;
    position = skipDigits(position);
    if (*position == '.') {
        if (!isDigit(*++position))
            return nullptr;
        position = skipDigits(position);
    }
    if (*position == 'e' || *position == 'E') {
        ++position;
        if (*position == '+' || *position == '-')
            ++position;
        if (!isDigit(*position))
            return nullptr;
        position = skipDigits(position);
    }
    return position;
}

const char* skipWord(const char* position, const char* word) noexcept {
    const std::size_t length = std::strlen(word);
    return std::strncmp(position, word, length) == 0 ? position + length : nullptr;
}

const char* closingBracket(const char* position, int depth) noexcept;

const char* skipValue(const char* position, int depth) noexcept {
    switch (*position) {
    case '{':
    case '[': {
        const char* closing = closingBracket(position, depth + 1);
        return closing ? closing + 1 : nullptr;
    }
    case '"':
        return skipString(position);
    case 't':
        return skipWord(position, "true");
    case 'f':
        return skipWord(position, "false");
    case 'n':
        return skipWord(position, "null");
    default:
        return skipNumber(position);
    }
}

const char* skipKeyAndColon(const char* position) noexcept {
    position = skipString(position);
    if (!position)
        return nullptr;
    position = skipWhitespace(position);
    return *position == ':' ? skipWhitespace(position + 1) : nullptr;
}

const char* closingBracket(const char* position, int depth) noexcept {
    if (depth > kMaxDepth)
        return nullptr;
    const bool isObject = *position == '{';
    if (!isObject && *position != '[')
        return nullptr;
    const char closing = isObject ? '}' : ']';
    position = skipWhitespace(position + 1);
    if (*position == closing)
        return position;
    for (;;) {
        if (isObject && !(position = skipKeyAndColon(position)))
            return nullptr;
        position = skipValue(position, depth);
        if (!position)
            return nullptr;
        position = skipWhitespace(position);
        if (*position == closing)
            return position;
        if (*position != ',')
            return nullptr;
        position = skipWhitespace(position + 1);
    }
}

} // namespace

std::size_t escapedLength(const char* text) noexcept {
    std::size_t length = 0;
    for (; *text; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        length += shortEscape(byte) ? 2 : needsCodeEscape(byte) ? 6 : 1;
    }
    return length;
}

char* writeEscaped(char* out, const char* text) noexcept {
    constexpr char kHexDigits[] = "0123456789abcdef";
    for (; *text; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (const char letter = shortEscape(byte)) {
            *out++ = '\\';
            *out++ = letter;
        } else if (needsCodeEscape(byte)) {
            std::memcpy(out, "\\u00", 4);
            out[4] = kHexDigits[byte >> 4];
            out[5] = kHexDigits[byte & 15];
            out += 6;
        } else {
            *out++ = *text;
        }
    }
    return out;
}

const char* skipWhitespace(const char* position) noexcept {
    while (*position == ' ' || *position == '\t' || *position == '\n' || *position == '\r')
        ++position;
    return position;
}

const char* findClosingBracket(const char* position) noexcept {
    return closingBracket(skipWhitespace(position), 0);
}

} // namespace nZOQUIL000

#include "quil/memberWriter.h"

#include "quil/errorRecord.h"
#include "quil/jsonText.h"

#include <charconv>
#include <cstring>

namespace nZOQUIL000 {

namespace {

// Longest text of a 64-bit integer, with its sign.
constexpr std::size_t kIntegerDigits = 20;

std::size_t integerLength(std::int64_t number) noexcept {
    char digits[kIntegerDigits];
    return static_cast<std::size_t>(std::to_chars(digits, digits + kIntegerDigits, number).ptr -
                                    digits);
}

std::size_t quotedLength(const char* text) noexcept {
    return escapedLength(text) + 2;
}

char* writeQuoted(char* out, const char* text) noexcept {
    *out++ = '"';
    out = writeEscaped(out, text);
    *out++ = '"';
    return out;
}

} // namespace

JsonValue::JsonValue(std::initializer_list<JsonMember> members) noexcept
    : kind_(Kind::object), members_(members) {}

std::size_t JsonValue::length() const noexcept {
    switch (kind_) {
    case Kind::text:
        return quotedLength(text_);
    case Kind::integer:
        return integerLength(number_);
    case Kind::object:
        break;
    }
    std::size_t total = 2 + (members_.size() ? members_.size() - 1 : 0);
    for (const JsonMember& member : members_)
        total += member.length();
    return total;
}

char* JsonValue::write(char* out) const noexcept {
    switch (kind_) {
    case Kind::text:
        return writeQuoted(out, text_);
    case Kind::integer:
        return std::to_chars(out, out + kIntegerDigits, number_).ptr;
    case Kind::object:
        break;
    }
    *out++ = '{';
    const JsonMember* first = members_.begin();
    for (const JsonMember& member : members_) {
        if (&member != first)
            *out++ = ',';
        out = member.write(out);
    }
    *out++ = '}';
    return out;
}

std::size_t JsonMember::length() const noexcept {
    return (key ? quotedLength(key) + 1 : 0) + value.length();
}

char* JsonMember::write(char* out) const noexcept {
    if (key) {
        out = writeQuoted(out, key);
        *out++ = ':';
    }
    return value.write(out);
}

MemberWriter::MemberWriter(tErrorStatus& status) noexcept
    : MemberWriter(status, reserveAndLocate(status, 2)) {}

MemberWriter::MemberWriter(tErrorStatus& status, char* position) noexcept
    : status_(status), position_(position) {}

MemberWriter& MemberWriter::append(const JsonMember& member) noexcept {
    const std::size_t needed = member.length();
    while (position_) {
        if (char* space = insertSpace(position_, needed)) {
            position_ = member.write(space);
            break;
        }
        grow();
    }
    return *this;
}

void MemberWriter::grow() noexcept {
    // Four bytes less than twice the capacity: with the two that reserving adds, the default
    // reallocator rounds up to exactly the double.
    const std::uint64_t request = std::uint64_t{status_.capacity} * 2 - 4;
    position_ = request > kMaxTextLength
                    ? nullptr
                    : reserveAndLocate(status_, static_cast<std::uint32_t>(request));
}

} // namespace nZOQUIL000

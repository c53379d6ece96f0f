// Appends members to the JSON object of an error status, growing its buffer as needed.
#pragma once

#include "quil/tErrorStatus.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace nZOQUIL000 {

struct JsonMember;

// A value to be written; refers to its text and members, which must outlive the writing.
class JsonValue {
public:
    // NOLINTBEGIN(google-explicit-constructor): a value stands for itself in a member list
    JsonValue(const char* text) noexcept : kind_(Kind::text), text_(text) {}
    JsonValue(std::int32_t number) noexcept : kind_(Kind::integer), number_(number) {}
    JsonValue(std::uint32_t number) noexcept : kind_(Kind::integer), number_(number) {}
    JsonValue(std::initializer_list<JsonMember> members) noexcept;
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] std::size_t length() const noexcept;
    char* write(char* out) const noexcept;

private:
    enum class Kind { text, integer, object };
    Kind kind_;
    const char* text_ = nullptr;
    std::int64_t number_ = 0;
    std::initializer_list<JsonMember> members_;
};

struct JsonMember {
    const char* key = nullptr; // null: only the value is written, as an array needs it
    JsonValue value;

    [[nodiscard]] std::size_t length() const noexcept;
    char* write(char* out) const noexcept;
};

// A cursor before the closing brace of a status's text; the status must outlive it. A member that
// no room can be made for is left out whole, and every later append on the same cursor then does
// nothing.
class MemberWriter {
public:
    explicit MemberWriter(tErrorStatus& status) noexcept;

    // Continues at a place that replaceText() or reserveAndLocate() has returned; null gives a
    // cursor that writes nothing.
    MemberWriter(tErrorStatus& status, char* position) noexcept;

    MemberWriter& append(const JsonMember& member) noexcept;

    [[nodiscard]] bool good() const noexcept { return position_ != nullptr; }

private:
    void grow() noexcept;

    tErrorStatus& status_;
    char* position_;
};

} // namespace nZOQUIL000

// What commands answer with --json. The library behind it is all headers, which take seconds to
// compile: only this room's json.cpp includes it.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavctl {

// A JSON value. The members of an object keep the order in which they were given. One that was
// moved from may only be assigned to or destroyed.
class Json {
public:
    struct Member;

    Json(std::nullptr_t value = nullptr);
    Json(bool value);
    template <std::signed_integral Number>
    Json(Number value) : Json(Signed{value}) {}
    template <std::unsigned_integral Number>
    Json(Number value) : Json(Unsigned{value}) {}
    Json(const char* text);
    Json(std::string_view text);
    Json(const std::string& text);
    Json(const std::vector<std::string>& texts); // an array
    Json(std::initializer_list<Member> members); // an object
    static Json array();                         // empty ones
    static Json object();

    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(const Json& other);
    Json& operator=(Json&& other) noexcept;
    ~Json();

    void push_back(Json value);                    // of an array
    void add(const std::string& name, Json value); // of an object

    [[nodiscard]] bool empty() const; // an array or object without elements, or null

    // The value without any blanks or line feeds. Bytes that are not UTF-8 are replaced.
    [[nodiscard]] std::string text() const;
    // The same, with a line feed behind it.
    [[nodiscard]] std::string line() const { return text() + "\n"; }

    // The object that a text holds; nothing for any other text.
    static std::optional<Json> parsedObject(const std::string& text);

    // The member of an object, when it is a text.
    [[nodiscard]] std::optional<std::string> textOf(const std::string& name) const;

    // The members of an object that are no objects, and those of its objects, with their names
    // ("name", "name.name") and their values as text.
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> leaves() const;

private:
    struct Signed {
        std::int64_t value;
    };
    struct Unsigned {
        std::uint64_t value;
    };
    explicit Json(Signed number);
    explicit Json(Unsigned number);
    explicit Json(nlohmann::ordered_json value);

    std::unique_ptr<nlohmann::ordered_json> value_;
};

struct Json::Member {
    const char* name;
    mutable Json value; // a list hands its elements out as constants, and this one is taken
};

} // namespace tavctl

#include "tavctl/words/json.h"

#include "platform/utf8.h"
#include "tavctl/words/printable.h"

#include <fmt/core.h>

#include <iterator>
#include <nlohmann/json.hpp>

namespace tavctl {

namespace {

using Value = nlohmann::ordered_json;
using Leaves = std::vector<std::pair<std::string, std::string>>;

void addLeaves(const Value& object, const std::string& prefix, Leaves& leaves) {
    for (const auto& [name, value] : object.items()) {
        if (value.is_object())
            addLeaves(value, prefix + name + ".", leaves);
        else
            leaves.emplace_back(prefix + name,
                                value.is_string() ? value.get<std::string>() : value.dump());
    }
}

std::string dumped(const Value& value) {
    return value.dump(-1, ' ', false, Value::error_handler_t::replace);
}

// The library's own way with a value takes stack for each level, of which a bus has hundreds.
std::string compactText(const Value& whole) {
    struct Begun {
        const Value* value;
        Value::const_iterator next;
    };
    std::vector<Begun> begun;
    std::string text;
    const auto begin = [&](const Value& value) {
        if (!value.is_structured() || value.empty()) {
            text += dumped(value);
            return;
        }
        text += value.is_object() ? '{' : '[';
        begun.push_back({&value, value.begin()});
    };
    begin(whole);
    while (!begun.empty()) {
        auto& [value, next] = begun.back();
        if (next == value->end()) {
            text += value->is_object() ? '}' : ']';
            begun.pop_back();
            continue;
        }
        if (next != value->begin())
            text += ',';
        if (value->is_object())
            text += dumped(next.key()) + ":";
        begin(*next++);
    }
    return text;
}

// Characters that a terminal would take for commands, or hide, stand in texts alone: there a number
// says the same.
std::string withNumbers(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    const auto out = std::back_inserter(result);
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t character = platform::takeCodePoint(text).value_or(U'?');
        if (!isUnprintable(character))
            result += before.substr(0, before.size() - text.size());
        else if (constexpr char32_t kFirstPair = 0x10000; character < kFirstPair)
            fmt::format_to(out, "\\u{:04x}", static_cast<unsigned>(character));
        else
            fmt::format_to(out, "\\u{:04x}\\u{:04x}",
                           0xD800U + static_cast<unsigned>((character - kFirstPair) >> 10U),
                           0xDC00U + static_cast<unsigned>(character & 0x3FFU));
    }
    return result;
}

} // namespace

Json::Json(Value value) : value_(std::make_unique<Value>(std::move(value))) {}

Json::Json(std::nullptr_t) : Json(Value(nullptr)) {}
Json::Json(bool value) : Json(Value(value)) {}
Json::Json(Signed number) : Json(Value(number.value)) {}
Json::Json(Unsigned number) : Json(Value(number.value)) {}
Json::Json(const char* text) : Json(Value(text)) {}
Json::Json(std::string_view text) : Json(Value(text)) {}
Json::Json(const std::string& text) : Json(Value(text)) {}
Json::Json(const std::vector<std::string>& texts) : Json(Value(texts)) {}

Json::Json(std::initializer_list<Member> members) : Json(Value::object()) {
    for (const Member& member : members)
        add(member.name, std::move(member.value));
}

Json Json::array() {
    return Json(Value::array());
}

Json Json::object() {
    return Json(Value::object());
}

Json::Json(const Json& other) : Json(Value(*other.value_)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) {
    *this = Json(other);
    return *this;
}
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

void Json::push_back(Json value) {
    value_->push_back(std::move(*value.value_));
}

void Json::add(const std::string& name, Json value) {
    (*value_)[name] = std::move(*value.value_);
}

bool Json::empty() const {
    return value_->empty();
}

std::string Json::text() const {
    return withNumbers(compactText(*value_));
}

std::optional<Json> Json::parsedObject(const std::string& text) {
    Value value = Value::parse(text, nullptr, false);
    if (!value.is_object())
        return std::nullopt;
    return Json(std::move(value));
}

std::optional<std::string> Json::textOf(const std::string& name) const {
    const auto found = value_->find(name);
    if (found == value_->end() || !found->is_string())
        return std::nullopt;
    return found->get<std::string>();
}

Leaves Json::leaves() const {
    Leaves leaves;
    addLeaves(*value_, {}, leaves);
    return leaves;
}

} // namespace tavctl

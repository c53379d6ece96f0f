// Any texts as the parts of an error record: the place of the error, and the members appended
// behind it. Whatever they are, the record is JSON that names just these members with just these
// values; bytes above 127 pass through as they are, so they are made plain before a JSON reader,
// which wants UTF-8, looks at it.
//
// The first byte of the input chooses the way, NUL bytes part the texts: file, name of the code,
// component, then a key and a value for each member. A value that begins with "#" is a number, one
// that begins with "{" an object with one member. With the first byte "T" the rest is the whole
// text of a record, to which a member is appended if it is an object at all.
#include "quil/errorRecord.h"

#include "fuzz/expect.h"
#include "fuzz/jsonListing.h"
#include "quil/memberWriter.h"
#include "quil/setError.h"
#include "quil/tFixedStatus.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::expect;
using fuzz::plain;
using namespace nZOQUIL000;

// As fuzz::listJson writes it.
std::string item(char kind, const std::string& text) {
    return std::string(1, kind).append(text);
}

// The texts between the NUL bytes, one after the other; empty ones behind the last.
class Texts {
public:
    explicit Texts(std::string_view input) : rest_(input) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    std::string next() {
        const std::string text(rest_.substr(0, rest_.find('\0')));
        rest_.remove_prefix(std::min(text.size() + 1, rest_.size()));
        return text;
    }

private:
    std::string_view rest_;
};

// The rules of the buffer that hold between any two operations.
void expectBuffer(const tErrorStatus& status) {
    expect((status.text == nullptr) == (status.capacity == 0), "a text has a buffer");
    if (status.text == nullptr)
        return;
    const std::size_t length = std::strlen(status.text);
    expect(length + 2 <= status.capacity, "the text ends within its buffer");
    expect(status.text[status.capacity - 1] == kTextMarker, "the buffer ends with its marker");
    for (std::size_t at = length; at + 1 < status.capacity; ++at)
        expect(status.text[at] == 0, "the room behind the text is zero");
}

std::uint32_t numberOf(const std::string& text) {
    std::uint32_t number = 0;
    std::memcpy(&number, text.data(), std::min(text.size(), sizeof number));
    return number;
}

void append(MemberWriter& writer, Texts& texts, std::vector<std::string>& expected) {
    const std::string key = texts.next();
    const std::string value = texts.next();
    expected.push_back(item('k', plain(key)));
    if (value.starts_with('#')) {
        const std::uint32_t number = numberOf(value.substr(1));
        if (value.size() > 4) {
            writer.append({key.c_str(), static_cast<std::int32_t>(number)});
            expected.push_back(item('n', std::to_string(static_cast<std::int32_t>(number))));
        } else {
            writer.append({key.c_str(), number});
            expected.push_back(item('n', std::to_string(number)));
        }
    } else if (value.starts_with('{')) {
        const std::string inner = texts.next();
        writer.append({key.c_str(), {{inner.c_str(), value.c_str() + 1}, {"code", 5}}});
        expected.insert(expected.end(), {"{", item('k', plain(inner)),
                                         item('s', plain(value.substr(1))), "kcode", "n5", "}"});
    } else {
        writer.append({key.c_str(), value.c_str()});
        expected.push_back(item('s', plain(value)));
    }
}

void expectRecord(const tErrorStatus& status, const std::vector<std::string>& expected) {
    expectBuffer(status);
    const auto items = fuzz::listJson(plain(status.textOrEmpty()));
    expect(items.has_value(), "a JSON reader takes the record");
    expect(*items == expected, "the record has these members");
}

// What a fixed-layout status keeps of a file's path.
std::string shortened(const std::string& file) {
    constexpr std::size_t kMost = 100;
    constexpr std::size_t kEnd = 49;
    return file.size() <= kMost ? file
                                : file.substr(0, kEnd) + ".." + file.substr(file.size() - kEnd);
}

void record(unsigned char way, std::string_view input) {
    Texts texts(input);
    const std::string file = texts.next();
    const std::string constant = texts.next();
    const std::string component = texts.next();
    const std::int32_t code = (way & 4) != 0 ? 300 : -300;
    const bool hasComponent = (way & 8) == 0;
    const auto line = static_cast<std::int32_t>(way) - 128;
    const tErrorSite site{file.c_str(), line, hasComponent ? component.c_str() : nullptr,
                          constant.c_str()};
    tErrorStatus status;
    std::vector<std::string> expected{"{"};
    const auto expectMember = [&](const char* key, const std::string& value) {
        expected.insert(expected.end(), {key, value});
    };
    switch (way & 3) {
    case 0:
        expect(setError(status, code, site), "an error is taken");
        expect(!setError(status, code, site), "a second one like it is not");
        expectMember("kerror_constant", item('s', plain(constant)));
        break;
    case 1:
        expect(setSiteOnlyError(status, site), "an error is taken");
        break;
    case 2: {
        tFixedStatus fixed;
        expect(setFixedStatus(fixed, code, component.c_str(), file.c_str(), line),
               "an error is taken");
        expect(convertFixedStatus(fixed, status), "an error is converted");
        if (!file.empty()) {
            expectMember("kfile", item('s', plain(shortened(file))));
            expectMember("kline", item('n', std::to_string(line)));
        }
        if (!component.empty())
            expectMember("kcomponent", item('s', plain(component.substr(0, 9))));
        break;
    }
    default: {
        tErrorStatus source;
        expect(setSiteOnlyError(source, site), "an error is taken");
        const auto& kept = source;
        expect((way & 16) != 0 ? mergeStatus(status, std::move(source)) : mergeStatus(status, kept),
               "an error is handed on");
        expect(status.code == kSiteOnlyError, "an error is handed on as it is");
        expectBuffer(source);
        break;
    }
    }
    if ((way & 3) != 2) {
        expectMember("kfile", item('s', plain(file)));
        expectMember("kline", item('n', std::to_string(line)));
        if (hasComponent)
            expectMember("kcomponent", item('s', plain(component)));
    }
    MemberWriter writer(status);
    while (!texts.atEnd()) {
        append(writer, texts, expected);
        expectBuffer(status);
    }
    expected.emplace_back("}");
    expect(writer.good(), "there is room for every member");
    expectRecord(status, expected);
}

// The depth of brackets that are no text, which the record's own reader follows to 64.
std::size_t depthOf(std::string_view text) {
    std::size_t depth = 0;
    std::size_t most = 0;
    for (const char c : text) {
        depth += c == '{' || c == '[' ? 1 : 0;
        most = std::max(most, depth);
        if ((c == '}' || c == ']') && depth != 0)
            --depth;
    }
    return most;
}

void wholeText(std::string_view input) {
    const std::string text(input.substr(0, input.find('\0')));
    tErrorStatus status;
    expect(replaceText(status, text.c_str()) != nullptr || text.empty(), "a text is taken");
    expectBuffer(status);
    const bool accepted = fuzz::isJson(plain(text));
    const char* const closing = reserveAndLocate(status, 2);
    constexpr std::size_t kDeepest = 60;
    const bool isContainer = text.find_first_of("{[") == text.find_first_not_of(" \t\n\r") &&
                             text.find_first_of("{[") != text.npos;
    if (accepted && isContainer && depthOf(text) < kDeepest)
        expect(closing != nullptr, "the end of an object or an array is found");
    if (closing == nullptr)
        return;
    expect(*closing == '}' || *closing == ']', "the place is a closing bracket");
    const bool isObject = *closing == '}';
    MemberWriter writer(status);
    writer.append({isObject ? "appended" : nullptr, "value"});
    expectBuffer(status);
    expect(writer.good(), "there is room for a member");
    if (accepted)
        expect(fuzz::isJson(plain(status.text)), "a JSON reader takes the longer text");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] == 'T')
        wholeText(input);
    else
        record(data[0], input);
    return 0;
}

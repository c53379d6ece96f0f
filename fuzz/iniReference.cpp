#include "fuzz/iniReference.h"

#include "pxidrivertools/ini/iniLookup.h"

#include <algorithm>
#include <limits>

namespace fuzz {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kContinuation = " Line";

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isWhite(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isWhite(text.back()))
        text.remove_suffix(1);
    return text;
}

// A key name that the writer gives to a piece of a long value.
struct Piece {
    std::string base;
    std::int64_t number;
};

std::optional<Piece> pieceOf(const std::string& name) {
    if (name.empty() || !isDigit(name.back()))
        return std::nullopt;
    const std::size_t word = name.rfind(kContinuation);
    if (word == std::string::npos)
        return std::nullopt;
    const std::string digits = name.substr(word + kContinuation.size());
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit))
        return std::nullopt;
    std::int64_t number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
        if (number > std::numeric_limits<std::int32_t>::max())
            return std::nullopt;
    }
    return Piece{name.substr(0, word), number};
}

class Reader {
public:
    explicit Reader(const ini::IniFileObject& settings) : settings_(settings) {}

    Reference read(std::string_view text) {
        std::int32_t number = 0;
        for (std::size_t at = 0; at < text.size();) {
            std::size_t end = at;
            while (end < text.size() && !ends(text[end]))
                ++end;
            take(text.substr(at, end - at), ++number);
            at = end + 1;
            if (at < text.size() && ends(text[at]) && text[at] != text[end])
                ++at;
        }
        for (ReferenceSection& section : result_.sections)
            join(section);
        return result_;
    }

private:
    static bool ends(char c) { return c == '\r' || c == '\n' || c == '\0'; }

    void odd(std::int32_t number) {
        if (result_.firstOddLine == -1)
            result_.firstOddLine = number;
    }

    void take(std::string_view whole, std::int32_t number) {
        const std::string_view line = trimmed(whole);
        if (line.starts_with(';'))
            return;
        if (line.starts_with('[')) {
            const std::size_t end = line.find(']');
            const std::string name(end == line.npos ? ""sv : trimmed(line.substr(1, end - 1)));
            return name.empty() ? odd(number) : takeHeader(name, number);
        }
        const bool colon = settings_.parse.colonAndUnnamedSection;
        const std::size_t separator = line.find_first_of(colon ? ":="sv : "="sv);
        if (separator == line.npos)
            return odd(number);
        const bool isTwo = line[separator] == ':' && line.substr(separator + 1).starts_with('=');
        const std::string_view name = trimmed(line.substr(0, separator));
        const std::string_view value = trimmed(line.substr(separator + (isTwo ? 2 : 1)));
        if (name.empty() || (value.empty() && !settings_.parse.emptyValues))
            return odd(number);
        takeKey(name, value, number);
    }

    void takeHeader(const std::string& name, std::int32_t number) {
        for (std::size_t i = 0; i < result_.sections.size() && settings_.mergeDuplicates; ++i) {
            if (sameName(settings_.caseSensitive, result_.sections[i].name, name)) {
                result_.sections[i].line = number;
                current_ = i;
                return;
            }
        }
        current_ = result_.sections.size();
        result_.sections.push_back({name, number, {}});
    }

    void takeKey(std::string_view name, std::string_view value, std::int32_t number) {
        if (!current_) {
            if (!settings_.parse.colonAndUnnamedSection)
                return;
            current_ = 0;
            result_.sections.push_back({"(null)", -1, {}});
        }
        char quote = 0;
        for (const auto& [on, character] : {std::pair{settings_.parse.doubleQuotes, '"'},
                                            std::pair{settings_.parse.singleQuotes, '\''}}) {
            if (on && value.size() >= 2 && value.front() == character &&
                value.back() == character) {
                quote = character;
                value = value.substr(1, value.size() - 2);
                break;
            }
        }
        std::vector<ReferenceKey>& keys = result_.sections[*current_].keys;
        for (ReferenceKey& key : keys) {
            if (settings_.mergeDuplicates && sameName(settings_.caseSensitive, key.name, name)) {
                key.value = value;
                key.quote = quote;
                return;
            }
        }
        keys.push_back({std::string(name), std::string(value), quote, number});
    }

    static void join(ReferenceSection& section) {
        std::vector<ReferenceKey> joined;
        bool inRun = false;
        for (const ReferenceKey& key : section.keys) {
            const auto piece = pieceOf(key.name);
            if (piece && piece->number != 1 && inRun) {
                joined.back().value += key.value;
                continue;
            }
            inRun = piece && piece->number == 1;
            joined.push_back(key);
            if (inRun)
                joined.back().name = piece->base;
        }
        section.keys = joined;
    }

    const ini::IniFileObject& settings_;
    Reference result_;
    std::optional<std::size_t> current_;
};

} // namespace

bool isWhite(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool sameName(bool caseSensitive, std::string_view left, std::string_view right) {
    if (caseSensitive) {
        // From the back, where names in a row differ; and without memcmp, whose every call a fuzzer
        // would look at.
        std::size_t equal = left.size() == right.size() ? left.size() : left.npos;
        while (equal != left.npos && equal != 0 && left[equal - 1] == right[equal - 1])
            --equal;
        return equal == 0;
    }
    while (!left.empty() && isWhite(left.front()))
        left.remove_prefix(1);
    while (!right.empty() && isWhite(right.front()))
        right.remove_prefix(1);
    // Only what one name has more than the other may be white space, so "k\t" and "k\f" differ
    // though each equals "k".
    const std::size_t both = std::min(left.size(), right.size());
    const auto isWhiteFrom = [both](std::string_view name) {
        return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(both), name.end(), isWhite);
    };
    return std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(both), right.begin(),
                      [](char a, char b) { return upper(a) == upper(b); }) &&
           isWhiteFrom(left) && isWhiteFrom(right);
}

std::optional<Reference> readReference(std::string_view bytes, const ini::IniFileObject& settings) {
    for (const std::string_view wide : {"\xFF\xFE"sv, "\xFE\xFF"sv, "\0\0\xFE\xFF"sv})
        if (bytes.starts_with(wide))
            return std::nullopt;
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kUtf8Mark))
        bytes.remove_prefix(kUtf8Mark.size());
    return Reader(settings).read(bytes);
}

Reference referenceOf(const ini::IniFileObject& file) {
    Reference result;
    result.firstOddLine = file.firstOddLine;
    for (std::uint32_t s = 1; s <= ini::sectionCount(file); ++s) {
        const ini::IniSection& section = *ini::sectionAt(file, static_cast<std::int32_t>(s));
        ReferenceSection copy{std::string(section.name.view()), section.line, {}};
        for (std::uint32_t k = 1; k <= ini::keyCount(section); ++k) {
            const ini::IniKey& key = *ini::keyAt(section, static_cast<std::int32_t>(k));
            copy.keys.push_back(
                {std::string(key.name.view()), std::string(key.value.view()), key.quote, key.line});
        }
        result.sections.push_back(std::move(copy));
    }
    return result;
}

bool same(const Reference& left, const Reference& right, bool withLines) {
    const auto sameKeys = [&](const ReferenceKey& a, const ReferenceKey& b) {
        return a.name == b.name && a.value == b.value && a.quote == b.quote &&
               (!withLines || a.line == b.line);
    };
    const auto sameSections = [&](const ReferenceSection& a, const ReferenceSection& b) {
        return a.name == b.name && (!withLines || a.line == b.line) &&
               std::equal(a.keys.begin(), a.keys.end(), b.keys.begin(), b.keys.end(), sameKeys);
    };
    return (!withLines || left.firstOddLine == right.firstOddLine) &&
           std::equal(left.sections.begin(), left.sections.end(), right.sections.begin(),
                      right.sections.end(), sameSections);
}

void takeParseOptions(std::string_view& input, ini::IniFileObject& settings) {
    if (input.empty() || (static_cast<unsigned char>(input.front()) & 0xC0) != 0x80)
        return;
    const auto bits = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    settings.parse.colonAndUnnamedSection = (bits & 1) != 0;
    settings.parse.emptyValues = (bits & 2) != 0;
    settings.parse.singleQuotes = (bits & 4) != 0;
    settings.parse.doubleQuotes = (bits & 8) == 0;
    settings.mergeDuplicates = (bits & 16) == 0;
    settings.caseSensitive = (bits & 32) == 0;
}

} // namespace fuzz

#include "tavctl/description/positionedIni.h"

#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniContinuation.h"
#include "pxidrivertools/ini/iniRecords.h"
#include "tavctl/words/characters.h"

#include <algorithm>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The name that a key has once its pieces are joined; only the first piece gives it.
std::string joinedName(std::string_view name) {
    const auto continuation = readContinuationName(name);
    return std::string(continuation && continuation->number == 1 ? continuation->base : name);
}

int width(std::string_view text) {
    return static_cast<int>(characterCount(text));
}

bool isPiece(std::string_view name) {
    return readContinuationName(name).has_value();
}

} // namespace

PositionedIni::PositionedIni(std::string bytes) : bytes_(std::move(bytes)) {
    if (bytes_.starts_with(kUtf8Mark))
        bytes_.erase(0, kUtf8Mark.size());
    const IniBlock block{bytes_.data(), bytes_.size()};
    IniLineCursor cursor(block, false);
    const IniParseOptions options;
    static const std::string kNoSection;
    const std::string* section = nullptr; // none yet
    for (std::string_view text; cursor.next(text);) {
        if (trim(text).empty())
            continue;
        const IniLine line = classifyLine(options, text);
        const int number = cursor.number();
        PositionedLine positioned{number, text, line.kind, nullptr, line.name, line.value, 0};
        if (line.kind == IniLineKind::header) {
            const auto [header, isFirst] = headers_.emplace(line.name, number);
            section = &header->first;
            if (isFirst)
                sections_.push_back(*section);
        } else if (line.kind == IniLineKind::key) {
            positioned.quote = stripQuotes(options, positioned.value);
            if (section != nullptr)
                keys_[{*section, joinedName(line.name)}].push_back(number);
        }
        positioned.inSection = section != nullptr ? section : &kNoSection;
        lines_.push_back(positioned);
    }
}

const PositionedLine* PositionedIni::line(int number) const {
    const auto found = std::lower_bound(
        lines_.begin(), lines_.end(), number,
        [](const PositionedLine& each, int sought) { return each.number < sought; });
    return found != lines_.end() && found->number == number ? &*found : nullptr;
}

bool PositionedIni::hasSection(const std::string& section) const {
    return headers_.contains(section);
}

const std::vector<int>& PositionedIni::linesOf(const std::string& section,
                                               const std::string& key) const {
    static const std::vector<int> kNone;
    const auto found = keys_.find({section, key});
    return found == keys_.end() ? kNone : found->second;
}

Place PositionedIni::placeOf(int number, std::string_view stretch) const {
    const std::string_view text = line(number)->text;
    const auto offset = static_cast<std::size_t>(stretch.data() - text.data());
    return {number, width(text.substr(0, offset)) + 1, width(stretch)};
}

Place PositionedIni::header(const std::string& section) const {
    const auto found = headers_.find(section);
    return found == headers_.end() ? Place() : placeOf(found->second, line(found->second)->name);
}

Place PositionedIni::name(const std::string& section, const std::string& key) const {
    const auto& numbers = linesOf(section, key);
    return numbers.empty() ? header(section) : placeOf(numbers.back(), line(numbers.back())->name);
}

Place PositionedIni::value(const std::string& section, const std::string& key) const {
    const auto& numbers = linesOf(section, key);
    if (numbers.empty())
        return header(section);
    return placeOf(numbers.back(), line(numbers.back())->value);
}

Place PositionedIni::part(const std::string& section, const std::string& key, std::size_t offset,
                          std::size_t length) const {
    const auto& numbers = linesOf(section, key);
    if (numbers.empty())
        return header(section);
    const PositionedLine& on = *line(numbers.back());
    if (isPiece(on.name) || offset + length > on.value.size())
        return value(section, key);
    return placeOf(numbers.back(), on.value.substr(offset, length));
}

Place PositionedIni::item(const std::string& section, const std::string& key,
                          std::size_t index) const {
    const auto& numbers = linesOf(section, key);
    if (numbers.empty())
        return header(section);
    const std::string_view list = line(numbers.back())->value;
    std::size_t start = 0;
    for (; index > 0; --index) {
        const std::size_t comma = list.find(',', start);
        if (comma == std::string_view::npos)
            return value(section, key);
        start = comma + 1;
    }
    const std::size_t end = std::min(list.find(',', start), list.size());
    return part(section, key, start, end - start);
}

std::string PositionedIni::textAt(const Place& place) const {
    const PositionedLine* const on = line(place.line);
    return on == nullptr ? std::string() : std::string(on->text);
}

} // namespace tavctl::lint

#include "pxidrivertools/ini/iniLines.h"

#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniRecords.h"

#include <limits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr bool endsLine(char c) noexcept {
    return c == '\r' || c == '\n' || c == '\0';
}

bool enclosedIn(std::string_view value, char quote) noexcept {
    return value.size() >= 2 && value.front() == quote && value.back() == quote;
}

IniLine classifyHeader(std::string_view line) noexcept {
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos)
        return {};
    const std::string_view name = trim(line.substr(1, end - 1));
    if (name.empty())
        return {};
    return {IniLineKind::header, name, {}};
}

} // namespace

IniLineCursor::IniLineCursor(const IniBlock& block, bool completeOnly) noexcept
    : position_(block.data), end_(block.data + block.size), completeOnly_(completeOnly) {}

bool IniLineCursor::next(std::string_view& line) noexcept {
    if (position_ == end_)
        return false;
    const char* end = position_;
    while (!endsLine(*end)) // the block's closing NUL byte is a bound too
        ++end;
    if (end == end_ && completeOnly_) {
        position_ = end_;
        return false;
    }
    line = {position_, static_cast<std::size_t>(end - position_)};
    position_ = end;
    if (end != end_) {
        ++position_;
        if (position_ != end_ && endsLine(*position_) && *position_ != *end)
            ++position_;
    }
    if (number_ < std::numeric_limits<std::int32_t>::max())
        ++number_;
    return true;
}

IniLine classifyLine(const IniParseOptions& options, std::string_view line) noexcept {
    line = trimLeft(line);
    if (line.empty())
        return {};
    if (line.front() == ';')
        return {IniLineKind::comment, {}, {}};
    if (line.front() == '[')
        return classifyHeader(line);

    const std::size_t separator =
        options.colonAndUnnamedSection ? line.find_first_of(":=") : line.find('=');
    if (separator == std::string_view::npos)
        return {};
    std::size_t behind = separator + 1;
    if (line[separator] == ':' && behind < line.size() && line[behind] == '=')
        ++behind;
    const std::string_view name = trimRight(line.substr(0, separator));
    const std::string_view value = trim(line.substr(behind));
    if (name.empty() || (value.empty() && !options.emptyValues))
        return {};
    return {IniLineKind::key, name, value};
}

char stripQuotes(const IniParseOptions& options, std::string_view& value) noexcept {
    char quote = kNoQuote;
    if (options.doubleQuotes && enclosedIn(value, kDoubleQuote))
        quote = kDoubleQuote;
    else if (options.singleQuotes && enclosedIn(value, kSingleQuote))
        quote = kSingleQuote;
    if (quote != kNoQuote)
        value = value.substr(1, value.size() - 2);
    return quote;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

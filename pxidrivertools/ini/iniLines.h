// The lines of an INI file: where they end, and what each of them is. All of it is inline, because
// a load is little else.
#pragma once

#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniOptions.h"
#include "pxidrivertools/ini/iniRecords.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// The search that every byte of a file goes through: for the end of a line and the first "=" in it,
// sixteen bytes at a time where the processor can.

constexpr bool endsLine(char c) noexcept {
    return c == '\r' || c == '\n' || c == '\0';
}

struct IniLineScan {
    const char* end = nullptr;    // the byte that ends the line
    const char* equals = nullptr; // the first "=" before it, or null
};

// From `position` on. A NUL byte must stand at `bound`, which ends the last line.
inline IniLineScan scanLine(const char* position, const char* bound) noexcept {
    IniLineScan scan;
#if defined(__SSE2__)
    constexpr std::ptrdiff_t kStep = 16;
    for (; bound - position >= kStep; position += kStep) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
        // All that end a line are control characters, and so are few others.
        const __m128i controls = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8('\r')), bytes);
        const __m128i signs = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('='));
        auto ends = static_cast<unsigned>(_mm_movemask_epi8(controls));
        const auto equals = static_cast<unsigned>(_mm_movemask_epi8(signs));
        if (equals != 0 && scan.equals == nullptr)
            scan.equals = position + std::countr_zero(equals);
        for (; ends != 0; ends &= ends - 1) {
            scan.end = position + std::countr_zero(ends);
            if (!endsLine(*scan.end))
                continue;
            if (scan.equals > scan.end)
                scan.equals = nullptr;
            return scan;
        }
    }
#else
    static_cast<void>(bound);
#endif
    for (; !endsLine(*position); ++position)
        if (*position == '=' && scan.equals == nullptr)
            scan.equals = position;
    scan.end = position;
    return scan;
}

// Goes through a block line by line. A carriage return, a line feed or a NUL byte ends a line; the
// next byte belongs to the same line end when it is another one of these (so CR LF is one line end
// and LF LF are two). Nothing after the last line end is no line.
class IniLineCursor {
public:
    // With `completeOnly`, text that no line end follows is not a line.
    IniLineCursor(const IniBlock& block, bool completeOnly) noexcept
        : position_(block.data), end_(block.data + block.size), completeOnly_(completeOnly) {}

    // Gives the next line without its end. False after the last one.
    bool next(std::string_view& line) noexcept {
        if (position_ == end_)
            return false;
        const IniLineScan scan = scanLine(position_, end_);
        if (scan.end == end_ && completeOnly_) {
            position_ = end_;
            return false;
        }
        line = {position_, static_cast<std::size_t>(scan.end - position_)};
        separator_ = scan.equals == nullptr ? std::string_view::npos
                                            : static_cast<std::size_t>(scan.equals - position_);
        position_ = scan.end;
        if (position_ != end_) {
            ++position_;
            if (position_ != end_ && endsLine(*position_) && *position_ != *scan.end)
                ++position_;
        }
        if (number_ < std::numeric_limits<std::int32_t>::max())
            ++number_;
        return true;
    }

    // Of the line given last: where its first "=" is, or npos.
    std::size_t separator() const noexcept { return separator_; }
    // Of the line given last, counted from 1.
    std::int32_t number() const noexcept { return number_; }

private:
    const char* position_;
    const char* end_;
    std::size_t separator_ = std::string_view::npos;
    std::int32_t number_ = 0;
    bool completeOnly_;
};

enum class IniLineKind { comment, header, key, odd };

struct IniLine {
    IniLineKind kind = IniLineKind::odd;
    std::string_view name;  // of a header or key; trimmed
    std::string_view value; // of a key; trimmed, with its quotes
};

inline IniLine classifyHeader(std::string_view line) noexcept {
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos)
        return {};
    const std::string_view name = trim(line.substr(1, end - 1));
    if (name.empty())
        return {};
    return {IniLineKind::header, name, {}};
}

// `separator` is where the line's first "=" is, or npos.
inline IniLine classifyLine(const IniParseOptions& options, std::string_view line,
                            std::size_t separator) noexcept {
    const std::string_view start = trimLeft(line);
    if (start.empty())
        return {};
    if (start.front() == ';')
        return {IniLineKind::comment, {}, {}};
    if (start.front() == '[')
        return classifyHeader(start);

    if (options.colonAndUnnamedSection)
        separator = line.find_first_of(":=");
    if (separator == std::string_view::npos)
        return {};
    const char* const lineEnd = line.data() + line.size();
    const char* const nameEnd = line.data() + separator;
    const char* valueStart = nameEnd + 1;
    if (*nameEnd == ':' && valueStart != lineEnd && *valueStart == '=')
        ++valueStart;
    const std::string_view name =
        trimRight({start.data(), static_cast<std::size_t>(nameEnd - start.data())});
    const std::string_view value =
        trim({valueStart, static_cast<std::size_t>(lineEnd - valueStart)});
    if (name.empty() || (value.empty() && !options.emptyValues))
        return {};
    return {IniLineKind::key, name, value};
}

inline IniLine classifyLine(const IniParseOptions& options, std::string_view line) noexcept {
    return classifyLine(options, line, line.find('='));
}

constexpr bool enclosedIn(std::string_view value, char quote) noexcept {
    return value.size() >= 2 && value.front() == quote && value.back() == quote;
}

// Takes the quotes off a value that is enclosed in quotes of a kind that is on. Returns the quote
// character, or kNoQuote.
inline char stripQuotes(const IniParseOptions& options, std::string_view& value) noexcept {
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

// The lines of an INI file: where they end, and what each of them is.
#pragma once

#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniOptions.h"

#include <cstdint>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Goes through a block line by line. A carriage return, a line feed or a NUL byte ends a line; the
// next byte belongs to the same line end when it is another one of these (so CR LF is one line end
// and LF LF are two). Nothing after the last line end is no line.
class IniLineCursor {
public:
    // With `completeOnly`, text that no line end follows is not a line.
    IniLineCursor(const IniBlock& block, bool completeOnly) noexcept;

    // Gives the next line without its end. False after the last one.
    bool next(std::string_view& line) noexcept;

    // Of the line given last, counted from 1.
    std::int32_t number() const noexcept { return number_; }

private:
    const char* position_;
    const char* end_;
    bool completeOnly_;
    std::int32_t number_ = 0;
};

enum class IniLineKind { comment, header, key, odd };

struct IniLine {
    IniLineKind kind = IniLineKind::odd;
    std::string_view name;  // of a header or key; trimmed
    std::string_view value; // of a key; trimmed, with its quotes
};

IniLine classifyLine(const IniParseOptions& options, std::string_view line) noexcept;

// Takes the quotes off a value that is enclosed in quotes of a kind that is on. Returns the quote
// character, or kNoQuote.
char stripQuotes(const IniParseOptions& options, std::string_view& value) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// The records of a loaded file: sections, the keys in them, and the texts of both. They live in the
// pools of their file object and belong to it.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniList;
struct IniIndex;

// The text of a name or value: a view into the loaded file's block, or a copy of its own once it
// has been set or joined. 16 bytes, because there are two of them in every key.
struct IniText {
    const char* data = "";
    std::uint32_t length = 0;
    // Of a name: what tagName() says of it, so that a search need not look at other names' text;
    // 0 when that is not known.
    std::uint16_t tag = 0;
    // Whether `data` is this text's own and ends with a NUL byte after its length.
    bool owned = false;

    std::string_view view() const noexcept { return {data, length}; }
};

// Whether a text may be as long as this: one below the largest length, so that length and closing
// NUL byte fit 32 bits too.
constexpr bool fitsText(std::string_view text) noexcept {
    return text.size() < std::numeric_limits<std::uint32_t>::max();
}

// A text that looks at memory that outlives it. The text must fit.
constexpr IniText viewText(std::string_view text) noexcept {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

// Makes `result`, whose old content is not released, an own copy. False, with `result` as it was,
// when there is no memory or the text does not fit.
bool copyText(const IniMemory& memory, std::string_view text, IniText& result) noexcept;

// Frees an own copy; the text is empty afterwards.
void releaseText(const IniMemory& memory, IniText& text) noexcept;

// The line of what was created in memory, and of the unnamed section.
inline constexpr std::int32_t kNotFromFile = -1;

inline constexpr char kNoQuote = 0;
inline constexpr char kDoubleQuote = 34;
inline constexpr char kSingleQuote = 39;

// The section of the keys before the first header.
inline constexpr std::string_view kUnnamedSection = "(null)";

// What lists and indexes know of a record.
struct IniNamed {
    IniText name;
};

struct IniSection : IniNamed {
    // Key records in file order; null while there is none. To be changed through the functions of
    // iniFileObject.h.
    IniList* keys = nullptr;
    // Over `keys`; null until a look-up needs it.
    IniIndex* index = nullptr;
    // Of the names of the keys; the file object's setting when the section was made.
    bool caseSensitive = false;
    // Whether `keys` lives in the file object's arena.
    bool keysInArena = false;
    // Whether a name or value of a key may be a copy of its own.
    bool keysOwnText = false;
    // Of the header, counted from 1; or kNotFromFile.
    std::int32_t line = kNotFromFile;
};

struct IniKey : IniNamed {
    // Without the quotes around it.
    IniText value;
    // Counted from 1; or kNotFromFile.
    std::int32_t line = kNotFromFile;
    // The quote character that was around the value and is written around it again, or kNoQuote.
    char quote = kNoQuote;
};

// Whether the section is the one that is written without a header. A header "[(null)]" in a file
// makes an ordinary section, which has a line.
bool isUnnamed(const IniSection& section) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

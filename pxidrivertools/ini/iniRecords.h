// The records of a loaded file: sections, and the keys in them. They live in the pools of their
// file object and belong to it.
#pragma once

#include "pxidrivertools/ini/iniText.h"

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniList;
struct IniIndex;

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
    // Key records in file order; null while there is none. To be changed through iniSectionKeys.h.
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

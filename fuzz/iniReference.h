// INI files as their format is described, read in the plainest way there is: no index, no shared
// memory, linear walks. What the engine makes of a file is held against it.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

struct ReferenceKey {
    std::string name;
    std::string value;
    char quote = 0;
    std::int32_t line = -1;
};

struct ReferenceSection {
    std::string name;
    std::int32_t line = -1;
    std::vector<ReferenceKey> keys;
};

struct Reference {
    std::vector<ReferenceSection> sections;
    std::int32_t firstOddLine = -1;
};

// The file by the options of `settings`, whose content counts for nothing. Nothing for a file in
// UTF-16 or UTF-32.
std::optional<Reference> readReference(std::string_view bytes, const ini::IniFileObject& settings);

// What was loaded, in the same shape.
Reference referenceOf(const ini::IniFileObject& file);

// With lines: also where each section and key was met, and the first odd line.
bool same(const Reference& left, const Reference& right, bool withLines);

// The names by the setting: to the byte, or without regard to case, white space in front, and white
// space that the longer one has at its end.
bool sameName(bool caseSensitive, std::string_view left, std::string_view right);

bool isWhite(char c);

// How files are read and written from here on, when the input begins with a byte from 0x80 to 0xBF,
// with which no text begins; the byte is taken off. Otherwise the settings stay.
void takeParseOptions(std::string_view& input, ini::IniFileObject& settings);

} // namespace fuzz

// Reads one configuration value of the machine: from the 32-bit view of the registry on Windows,
// from a text file on systems without a registry.
#pragma once

#include "platform/systemCode.h"

#include <cstdio>
#include <string>

namespace platform {

enum class ConfigurationOutcome {
    found,
    keyMissing,  // the registry key, the configuration file, or the section of that name
    valueFailed, // the key is there; the value is missing or unreadable (the code says why)
    outOfMemory,
};

struct ConfigurationValue {
    ConfigurationOutcome outcome = ConfigurationOutcome::keyMissing;
    SystemCode code = kNoSystemError; // with keyMissing and valueFailed
    std::string text;                 // with found: up to the first zero byte, as stored
};

// What a reader of configuration text found. The rules of the text belong to a layer above this
// one, which therefore hands its reader down.
enum class ConfigurationLookup { found, sectionMissing, valueMissing, unreadable, outOfMemory };
using ConfigurationTextReader = ConfigurationLookup (*)(std::FILE* stream, const char* section,
                                                        const char* name, std::string& text);

// Reads value `name` of key `key` (written with backslashes). `readText` serves systems that keep
// the configuration in a text file; there the section is the key and the key is the value's name.
// Does not raise.
ConfigurationValue readConfigurationValue(const char* key, const char* name,
                                          ConfigurationTextReader readText) noexcept;

// Where the values come from, for messages to people: a registry path or a file name.
std::string configurationOrigin(const char* key);

} // namespace platform

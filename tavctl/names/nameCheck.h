// What can be wrong with stored terminal names, and what has become of them.
#pragma once

#include "tavctl/host/nameFile.h"
#include "tavctl/match/deviceSurvey.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavctl {

// Whether a stored name is in use.
enum class NamePresence : std::uint8_t {
    unknown,  // the bus was not looked at
    present,  // its model is in its slot
    replaced, // another model is in its slot, or its model now has another base
    absent,   // no device is in its slot
};
NamePresence presenceOf(const NameEntry& entry, const Survey& survey);

struct NameProblem {
    enum class Kind : std::uint8_t { malformed, duplicate, stale };
    Kind kind = Kind::malformed;
    std::string slotPath;
    std::string terminalName;
    std::int32_t line = 0;
    std::string message;
};
const char* kindName(NameProblem::Kind kind);

// Whether it is a base and a number from 1 upwards without leading zeros, as names are made.
bool isMadeName(const std::string& name);

// Without a survey (null) nothing is stale. In the order of the lines.
std::vector<NameProblem> checkNames(const NameFile& file, const Survey* survey);

// What would become of the names when the survey's devices were found for the first time.
struct NameForecast {
    enum class Change : std::uint8_t {
        stays,   // as stored for its slot
        changes, // another model or base is stored for its slot
        fresh,   // nothing is stored for its slot
        gone,    // a device that is found now would not be found; its stored name stays reserved
    };
    Change change = Change::stays;
    std::string terminalName;
    std::string before; // the stored name, where it changes; else empty
    std::string model;
    std::string slotPath;
};
const char* changeName(NameForecast::Change change);

// `now` is what is found today, to tell what would be gone; null: unknown. `then` was surveyed with
// the same stored names.
std::vector<NameForecast> forecastNames(const NameFile& file, const Survey* now,
                                        const Survey& then);

} // namespace tavctl

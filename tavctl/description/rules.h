// The rules that description files are checked by. Identifiers are stable: scripts and people's
// notes refer to them.
#pragma once

#include "tavctl/description/finding.h"

#include <span>
#include <string_view>

namespace tavctl::lint {

struct Rule {
    std::string_view id;
    Severity severity;
    std::string_view summary; // what is wrong when the rule fires
};

// All of them, errors first.
std::span<const Rule> rules();

// Raises std::logic_error for an identifier that no rule has.
const Rule& rule(std::string_view id);

} // namespace tavctl::lint

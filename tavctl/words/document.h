// The documents that commands print with --json.
#pragma once

#include "tavctl/words/json.h"

namespace tavctl {

// Within a version members are added; none goes, and none changes its meaning.
inline constexpr int kDocumentVersion = 1;

// An object with the version as its first member.
Json newDocument();

// The text, or null for an empty one: for what may be unknown.
Json textOrNull(const std::string& text);

} // namespace tavctl

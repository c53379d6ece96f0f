// The identifiers that a section gives, or the one that its IDsSameAs names; of a model with
// alternate anchors those are not what its bridges are looked for by.
#pragma once

#include "quil/tPciIds.h"
#include "tavctl/description/description.h"

#include <optional>
#include <string>

namespace tavctl::lint {

// Nothing when one of them was not read.
std::optional<nZoTavManagerPciPlugin_15_0::tPciIds> ownIdsOf(const Description& description,
                                                             const std::string& section);

} // namespace tavctl::lint

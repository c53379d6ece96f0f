// Which of a description's bridges a plan means: it names them by section or by label.
#pragma once

#include "tavctl/mock/boxShape.h"
#include "tavctl/mock/labelWidths.h"
#include "tavctl/mock/plan.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tavctl::mock {

// What is wished for of the described bridges, in the order of BoxModel::bridges(); null for those
// of which nothing is.
struct BoxWishes {
    std::vector<const PlannedPort*> bridges;
    const PlannedPort* wayUp = nullptr; // without an upstream port
    std::set<std::string> missing;      // sections
};

// Raises FailureException for what the model does not have.
BoxWishes wishesOf(const PlannedBox& plan, const BoxModel& model, std::size_t anchor);

// The widths by which the labels come out even; nothing when there are none. Ports that stand in
// one place have one width.
std::optional<LabelWidths> widthsOf(const BoxModel& model, const BoxShape& shape,
                                    const BoxWishes& wishes);

} // namespace tavctl::mock

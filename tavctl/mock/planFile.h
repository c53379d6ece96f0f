// Plan files: what is to stand on a made-up bus, in the form of description files.
//
//     [Box Rack]
//     Model = TAV-B3 Switch Box
//     In = root 40
//     Link 2 = x1 of x4
//     Reserve 2 = 8
//
//     [Endpoint Net]
//     In = Rack:1
//
//     [Step 1 Net]
//     Gone = 1
//
// What a step says holds from there on, beside what was said before.
//
// Unlike in a description nothing is passed over: a key or section that means nothing is refused.
#pragma once

#include "tavctl/mock/plan.h"

#include <string>
#include <vector>

namespace tavctl::mock {

// The plan before the first step, and as it is after each. Raises FailureException, with
// "file:line:column" for what the file says.
std::vector<Plan> readPlanFile(const std::string& file);

// The same for a text that is at hand.
std::vector<Plan> readPlan(std::string text, const std::string& name);

} // namespace tavctl::mock

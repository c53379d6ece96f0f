#include "tavctl/explain/explanation.h"

#include "pcibus/pciFunction.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::explain {

std::size_t Candidate::conditionsMet() const {
    std::size_t met = 0;
    for (const Step& step : steps) {
        if (step.result == Step::Result::failed)
            break;
        met += step.result == Step::Result::met ? 1U : 0U;
    }
    return met;
}

const Step* Candidate::firstFailure() const {
    const auto failed = std::find_if(steps.begin(), steps.end(), [](const Step& step) {
        return step.result == Step::Result::failed;
    });
    return failed == steps.end() ? nullptr : &*failed;
}

std::size_t Explanation::listed() const {
    return static_cast<std::size_t>(
        std::count_if(candidates.begin(), candidates.end(),
                      [](const Candidate& each) { return each.outcome == Outcome::listed; }));
}

std::string addressText(const nZoTavManagerPciPlugin_15_0::tBusAddress& address) {
    return pcibus::addressTextOf(address.bus, address.device, address.function);
}

std::string idsText(const nZoTavManagerPciPlugin_15_0::tPciIds& ids) {
    return fmt::format("{:04X}:{:04X} subsystem {:04X}:{:04X}", ids.vendor, ids.device,
                       ids.subsystemVendor, ids.subsystem);
}

} // namespace tavctl::explain

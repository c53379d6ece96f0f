#include "tavctl/names/namedDevices.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

namespace tavctl {

Look lookAtBus(const HostSetup& setup) {
    Look seen{surveyDevices(setup), leftOutOfChosenBus()};
    tellLeftOut(seen.leftOut);
    return seen;
}

std::string NamedDevices::caveat() const {
    return obstacle.empty() ? std::string() : obstacle + ", so every stored name counts: ";
}

NamedDevices namedDevices(const NamesOptions& options, const HostSetup& setup) {
    if (options.stored)
        return {{}, "the bus is not looked at"};
    try {
        return {lookAtBus(setup).survey, {}};
    } catch (const FailureException& exception) {
        return {{}, fmt::format("the devices cannot be looked for ({})", exception.what())};
    }
}

} // namespace tavctl

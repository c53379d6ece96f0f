// The devices that the stored names belong to, as far as they can be found.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/match/deviceSurvey.h"
#include "tavctl/names/namesOptions.h"

#include <optional>
#include <string>

namespace tavctl {

// The devices, when the bus is looked at, with what was passed over in that.
struct Look {
    std::optional<Survey> survey;
    std::optional<pcibus::LeftOut> leftOut;
};

// Tells what is passed over. Raises FailureException.
Look lookAtBus(const HostSetup& setup);

// The devices whose names must not be taken by accident.
struct NamedDevices {
    std::optional<Survey> survey;
    std::string obstacle; // why every stored name counts; empty with a survey

    [[nodiscard]] const Survey* known() const { return survey ? &*survey : nullptr; }

    // "the bus is not looked at, so every stored name counts: "; empty with a survey.
    [[nodiscard]] std::string caveat() const;
};

// Does not raise for a bus that cannot be looked at: then every stored name counts.
NamedDevices namedDevices(const NamesOptions& options, const HostSetup& setup);

} // namespace tavctl

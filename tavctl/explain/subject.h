// What explain is asked about: every model, one, or the function at one address.
#pragma once

#include "tavctl/bus/wholeBus.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/host/hostSetup.h"

#include <optional>
#include <string>
#include <vector>

namespace tavctl::explain {

struct Subject {
    std::string word;                                                // empty: everything
    std::string model;                                               // empty: every one
    std::optional<nZoTavManagerPciPlugin_15_0::tBusAddress> address; // nothing: any

    // Leaves of an explanation what is about the address. False when nothing is.
    [[nodiscard]] bool keep(Explanation& explanation) const;
};

// A word stands for the function at an address, for a model that is described, or for a device that
// the plug-in lists by that terminal name: its model at its address. Says on standard error which.
// Raises FailureException with ExitStatus::problemFound for anything else.
Subject subjectOf(const std::string& word, const std::vector<std::string>& models,
                  const CommonOptions& options, const HostSetup& setup);

// Raises such an exception: no model has to do with the function at the address, which the bus has
// or has not.
[[noreturn]] void failWithoutModel(const Subject& subject, const WholeBus& bus);

} // namespace tavctl::explain

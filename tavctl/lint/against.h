// Which models recorded buses have, and what another folder of descriptions would change in that.
#pragma once

#include "pcibus/leftOut.h"
#include "tavctl/description/description.h"
#include "tavctl/recordings/recording.h"
#include "tavctl/words/failure.h"

#include <optional>
#include <string>
#include <vector>

namespace tavctl::lint {

struct FoundModel {
    enum class Change { has, gains, loses };
    Change change = Change::has;
    std::string model;
    std::string address;  // as the device is reported
    std::string slotPath; // of its anchor
};

struct Comparison {
    std::string dump;
    std::optional<Failure> failure; // why the bus could not be read
    std::vector<FoundModel> models; // by slot path; a model lost before one gained
    std::optional<pcibus::LeftOut> leftOut;
};

// Loads files that must all load. Raises FailureException, with ExitStatus::problemFound, for one
// that does not.
std::vector<tModelDescription> loadModels(const std::vector<std::string>& files);

// What the models find on each recorded bus; those that `before` finds as well are had, the others
// gained, and what only `before` finds is lost. Without `before` (null) everything is had. Works on
// every processor, and shows a person who waits how far it is. Raises nothing for a bus that cannot
// be read.
std::vector<Comparison> compareAll(const std::vector<Recording>& recordings,
                                   const std::vector<tModelDescription>& models,
                                   const std::vector<tModelDescription>* before);

bool failedAny(const std::vector<Comparison>& comparisons);

bool losesAny(const std::vector<Comparison>& comparisons);

std::string comparisonsAsText(const std::vector<Comparison>& comparisons);

} // namespace tavctl::lint

// A look at a recorded machine with the plug-in's own code, for whoever looks at very many: the
// descriptions are loaded once, and looks may be taken in several threads at a time.
#pragma once

#include "source/modelList.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/match/deviceSurvey.h"
#include "tavctl/recordings/recording.h"
#include "tavctl/words/failure.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// The models of the descriptions in force, loaded as the plug-in loads them; shared by looks.
using Models = std::shared_ptr<nZoTavManagerPciPlugin_15_0::ModelList>;

// Raises FailureException, as a look of the plug-in's would.
[[nodiscard]] Models modelsInForce();

// The names stored beside the recording; none where nothing is. Raises FailureException.
[[nodiscard]] NameFile namesOf(const Recording& recording);

// The devices that the plug-in would list on this bus with the names stored beside the recording.
// Nothing is stored. Raises FailureException.
[[nodiscard]] Survey surveyOf(const Recording& recording, const WholeBus& bus,
                              const Models& models);

struct MachineLook {
    std::optional<Failure> failure; // why there is nothing else
    WholeBus bus;
    Survey survey;                     // as the plug-in lists the devices
    std::vector<ListedDevice> devices; // the same as its attributes tell it
    std::vector<AbsentDevice> absent;  // names beside the recording that no device has
};

// Raises nothing but std::bad_alloc.
[[nodiscard]] MachineLook lookAt(const Recording& recording, const Models& models);

} // namespace tavctl

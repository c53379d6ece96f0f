// Matches models against a bus with the plug-in's own code, without the plug-in's files: what comes
// out is what the plug-in would list for these models, and an observer hears why.
#pragma once

#include "pciBrdWrapper/iPciBrdWrapper_ex.h"
#include "pxidrivertools/cIniFile.h"
#include "quil/iQUILDeviceFinder.h"
#include "source/iPciModelInfoDb.h"
#include "source/matchObserver.h"
#include "source/modelDescription.h"
#include "tavctl/match/matchedDevice.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

// The two ways to the bus that the plug-in has.
struct MatchBus {
    std::unique_ptr<nZoTavManagerPciPlugin_15_0::iQUILDeviceFinder> finder;
    std::unique_ptr<nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex> wrapper;
};

// Those that the plug-in uses: the system's devices and the bridge library. Raises
// FailureException when the library cannot be loaded.
MatchBus hostBus();

class ModelMatcher {
public:
    using tModelDescription = nZoTavManagerPciPlugin_15_0::tModelDescription;
    using MatchObserver = nZoTavManagerPciPlugin_15_0::MatchObserver;

    explicit ModelMatcher(MatchBus bus) : bus_(std::move(bus)) {}

    // The devices that the plug-in would list, under names as if none were stored. The bus is read
    // anew each time. Raises FailureException when it cannot be.
    std::vector<MatchedDevice> match(const std::vector<tModelDescription>& models);

    // The same for models that several matchers share, with the names of a name file; empty: none.
    // What is given to devices that have none there is not written.
    std::vector<MatchedDevice> match(nZoTavManagerPciPlugin_15_0::iPciModelInfoDb& models,
                                     const std::string& nameFile);

    // The same as the first, for an observer that has an interest in more than the devices.
    void observe(nZoTavManagerPciPlugin_15_0::iPciModelInfoDb& models, MatchObserver& observer);

    // The way to the bridges, for observers; its session is open only while models are matched.
    [[nodiscard]] nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex& wrapper() {
        return *bus_.wrapper;
    }

private:
    void build(nZoTavManagerPciPlugin_15_0::iPciModelInfoDb& models, MatchObserver& observer,
               nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile& nameFile);

    MatchBus bus_;
};

} // namespace tavctl

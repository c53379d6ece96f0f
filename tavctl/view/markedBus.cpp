#include "tavctl/view/markedBus.h"

#include "tavctl/host/hostSession.h"
#include "tavctl/match/visibleBus.h"

namespace tavctl {

MarkedBus::MarkedBus(const CommonOptions& options, const HostSetup& setup) {
    const auto listed = devicesOfPlugin(options, setup);
    if (!options.json)
        explainMarks(listed);
    whole = machineBus();
    devices = placeDevices(listed, surveyDevices(setup), *whole.searched);
}

std::vector<BusTreeView> MarkedBus::views() const {
    std::vector<BusTreeView> views;
    views.reserve(whole.domains.size());
    static const std::vector<PlacedDevice> kNone;
    for (const DomainBus& domain : whole.domains)
        views.emplace_back(domain, domain.number() == 0 ? devices : kNone);
    return views;
}

std::vector<ListedDevice> MarkedBus::listed() const {
    std::vector<ListedDevice> listed;
    listed.reserve(devices.size());
    for (const PlacedDevice& device : devices)
        listed.push_back(device.listed);
    return listed;
}

} // namespace tavctl

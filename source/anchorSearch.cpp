#include "source/anchorSearch.h"

#include "source/bridgePlace.h"
#include "source/tavStatus.h"

#include <cstddef>
#include <set>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZoPciBrdWrapper_15_0::iPciBrdWrapper_ex;
using nZoPciBrdWrapper_15_0::kNoHandle;
using nZoPciBrdWrapper_15_0::tBridgeList;
using nZoPxiDriverTools_1_0::cSlotPath;
using Handles = std::set<std::uint32_t>;

constexpr const char* kFile = "source\\cPciTavPluginCache";

// As many as bus, device and function numbers tell apart. A longer list is not worth the time that
// looking at each of its elements takes.
constexpr std::size_t kMostBridges = 0x10000;

void addBridgesWithIds(const tPciIds& ids, iPciBrdWrapper_ex& bridgeWrapper, Handles& handles) {
    tBridgeList bridges;
    bridgeWrapper.FindBridgesByPciIds(ids, bridges);
    if (bridges.size() > kMostBridges)
        raiseSoftwareFault(kFile, kMessageTooManyBridges);
    handles.insert(bridges.begin(), bridges.end());
}

// The described bridges found below a candidate, itself included; the first one that is missing
// ends the check.
Handles matchCandidate(std::uint32_t candidate, const cSlotPath& slotPath,
                       const std::vector<tBridgeDescription>& descriptions, const Handles& required,
                       iPciBrdWrapper_ex& bridgeWrapper, MatchObserver& observer) {
    Handles matched{candidate};
    for (const tBridgeDescription& description : descriptions) {
        if (description.isOptional || description.traversalMap.empty())
            continue;
        observer.onLookUp(description);
        const std::uint32_t bridge =
            findDescribedBridge(slotPath, description.traversalMap, bridgeWrapper);
        const bool counts = required.contains(bridge);
        observer.onDescribedBridge(description, bridge, counts);
        if (bridge == kNoHandle)
            return {};
        if (counts)
            matched.insert(bridge);
    }
    return matched;
}

} // namespace

std::vector<tBridgeDescription> descriptionsOfAnchor(const tAnchorIdentity& anchor,
                                                     const iPciModelInfoDb& models,
                                                     std::uint32_t modelIndex) {
    std::vector<tBridgeDescription> descriptions;
    models.GetAllBridges(modelIndex, descriptions);
    std::erase_if(descriptions, [&](const auto& each) { return each.ids != anchor.ids; });
    return descriptions;
}

void searchAnchors(const tAnchorIdentity& anchor, const iPciModelInfoDb& models,
                   std::uint32_t modelIndex, iPciBrdWrapper_ex& bridgeWrapper, FoundAnchors& found,
                   MatchObserver& observer) {
    Handles candidates;
    addBridgesWithIds(anchor.ids, bridgeWrapper, candidates);

    const auto descriptions = descriptionsOfAnchor(anchor, models, modelIndex);
    Handles required;
    std::size_t requiredCount = 0;
    for (const tBridgeDescription& description : descriptions) {
        if (description.isOptional)
            continue;
        addBridgesWithIds(description.ids, bridgeWrapper, required);
        ++requiredCount;
    }

    observer.onCandidates(candidates, requiredCount);

    // Qualifying takes bridges out of the set, so each step looks for the next handle afresh.
    for (auto next = candidates.begin(); next != candidates.end();) {
        const std::uint32_t candidate = *next;
        cSlotPath slotPath;
        bridgeWrapper.GetBridgeSlotPath(candidate, slotPath);
        observer.onCandidate(candidate, slotPath);
        const Handles matched =
            matchCandidate(candidate, slotPath, descriptions, required, bridgeWrapper, observer);
        if (!matched.empty())
            observer.onCandidateCounted(matched, requiredCount);
        if (!matched.empty() && matched.size() == requiredCount) {
            tBusAddress address;
            bridgeWrapper.GetBridgeAddress(candidate, &address.bus, &address.device,
                                           &address.function);
            found.addresses.push_back(address);
            found.slotPaths.push_back(slotPath);
            for (const std::uint32_t handle : matched) {
                candidates.erase(handle);
                required.erase(handle);
            }
        }
        next = candidates.upper_bound(candidate);
    }
}

} // namespace nZoTavManagerPciPlugin_15_0

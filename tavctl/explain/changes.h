// Looks for single changes to a description that make the plug-in list a device, by making each and
// matching again.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/position.h"
#include "tavctl/description/sectionNames.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/explain/nearFunctions.h"
#include "tavctl/match/modelMatcher.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tavctl::explain {

// The section that describes this bridge; the first of equal ones.
std::string sectionOf(const nZoTavManagerPciPlugin_15_0::tModelDescription& model,
                      const lint::SectionNames& sections,
                      const nZoTavManagerPciPlugin_15_0::tBridgeDescription& bridge);

// The traversal map from one position to another below the same root bus.
std::string mapBetween(const pcibus::Position& from, const pcibus::Position& to);

class ChangeFinder {
public:
    using tModelDescription = nZoTavManagerPciPlugin_15_0::tModelDescription;

    // For models that are matched against this bus.
    explicit ChangeFinder(std::shared_ptr<const pcibus::Bus> bus);

    // Fills in the changes of the nearest rejected candidates and, when nothing is listed, the
    // functions that nearly have the anchor's identifiers. What was found for a model that is the
    // same but for its names is not searched again.
    void find(const tModelDescription& model, const lint::SectionNames& sections,
              Explanation& explanation);

private:
    struct Found {
        std::vector<std::vector<Change>> changes; // of the candidates
        std::vector<std::string> hints;           // likewise
        std::vector<NearFunction> near;
    };

    [[nodiscard]] std::vector<NearFunction> nearFunctions(const tModelDescription& model) const;

    std::shared_ptr<const pcibus::Bus> bus_;
    ModelMatcher matcher_;
    NearFunctions nearFunctions_;
    std::unordered_map<std::string, Found> found_;
};

} // namespace tavctl::explain

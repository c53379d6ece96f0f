// Explains how far the matching of models came.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/description/description.h"
#include "tavctl/explain/elsewhere.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/match/modelMatcher.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavctl::explain {

// What of descriptions, which all load, an explanation needs. There may be very many.
class LoadedModels {
public:
    void add(lint::Description&& description);
    // Leaves only the models of this name.
    void keepOnly(const std::string& model);

    [[nodiscard]] std::size_t size() const { return models_.size(); }
    [[nodiscard]] std::vector<std::string> names() const;

private:
    friend class Explainer;

    // One of each for each description.
    std::vector<std::string> files_;
    std::vector<lint::SectionNames> sections_;
    std::vector<lint::tModelDescription> models_;
};

// One explanation for each model, in their order and each as soon as it is there, of what the
// matcher makes of its bus; with the changes that would make it list a device. Those are tried on
// `bus`, which is the matcher's read by ourselves: however many there are, the matcher's is not
// read again. `tell` may change what it is told. `elsewhere` is looked at for anchors too. Raises
// what the matcher and `tell` raise.
void explain(LoadedModels models, ModelMatcher& matcher,
             const std::shared_ptr<const pcibus::Bus>& bus,
             const std::function<void(Explanation&)>& tell,
             const Elsewhere& elsewhere = Elsewhere());

} // namespace tavctl::explain

#include "tavctl/mock/catalog.h"

#include "tavctl/description/loadFailure.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>

namespace tavctl::mock {

Catalog::Catalog(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        // On the heap: stacks may be small.
        auto description =
            std::make_unique<lint::Description>(file, lint::Description::Text::unwanted);
        if (!description->loads())
            throw FailureException(lint::loadFailure(lint::Description(file)),
                                   ExitStatus::problemFound);
        models_.emplace_back(std::move(*description));
        const BoxModel& model = models_.back();
        descriptions_.push_back(model.model);
        for (std::size_t i = 0; i < model.model.anchors.size(); ++i) {
            asked_.insert(model.model.anchors[i].ids.packed());
            for (const DescribedBridge& bridge : model.bridges(i))
                asked_.insert(bridge.ids.packed());
        }
    }
}

std::size_t Catalog::numberOf(const Said& model) const {
    std::vector<std::string> names;
    for (const BoxModel& each : models_) {
        if (each.model.model == model.text)
            return names.size();
        names.push_back(each.model.model);
    }
    std::string reason =
        fmt::format("no description file describes a model {}", inQuotes(model.text));
    if (const std::string near = nearestName(model.text, names); !near.empty())
        reason += fmt::format("; did you mean {}?", inQuotes(near));
    refuse(model.place, std::move(reason));
}

tPciIds Catalog::unasked(tPciIds ids) const {
    while (asked_.contains(ids.packed()))
        ++ids.device;
    return ids;
}

} // namespace tavctl::mock

// The descriptions that a made-up bus is for: all that the plug-in would load.
#pragma once

#include "tavctl/mock/boxModel.h"
#include "tavctl/mock/plan.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace tavctl::mock {

class Catalog {
public:
    // Raises FailureException for a file that the plug-in cannot load.
    explicit Catalog(const std::vector<std::string>& files);

    [[nodiscard]] const std::vector<BoxModel>& models() const { return models_; }

    // As the plug-in matches them.
    [[nodiscard]] const std::vector<tModelDescription>& descriptions() const {
        return descriptions_;
    }

    // The number of the first model of that name. Raises FailureException when there is none.
    [[nodiscard]] std::size_t numberOf(const Said& model) const;

    // Identifiers that no description asks for: those given, or the next ones after them.
    [[nodiscard]] tPciIds unasked(tPciIds ids) const;

private:
    std::vector<BoxModel> models_;
    std::vector<tModelDescription> descriptions_;
    std::set<std::uint64_t> asked_;
};

} // namespace tavctl::mock

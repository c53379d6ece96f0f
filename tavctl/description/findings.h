// Collects the findings of one file, with the places and the lines that they belong to.
#pragma once

#include "tavctl/description/description.h"
#include "tavctl/description/finding.h"

#include <string>
#include <string_view>
#include <vector>

namespace tavctl::lint {

class Findings {
public:
    explicit Findings(const Description& description) : description_(description) {}

    void add(std::string_view rule, const Place& place, std::string found, std::string expected,
             bool endsLoad = false);

    // In the order of the lines, those about the whole file first.
    [[nodiscard]] std::vector<Finding> sorted() &&;

private:
    const Description& description_;
    std::vector<Finding> findings_;
};

} // namespace tavctl::lint

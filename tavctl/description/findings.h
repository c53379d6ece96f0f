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

// The checks, by what they look at. Each adds what it finds.
void checkLoad(const Description& description, Findings& findings);     // what ends the load
void checkLines(const Description& description, Findings& findings);    // lines and names
void checkValues(const Description& description, Findings& findings);   // values that load
void checkLists(const Description& description, Findings& findings);    // items of lists
void checkMaps(const Description& description, Findings& findings);     // traversal maps
void checkMatching(const Description& description, Findings& findings); // the model as a whole

} // namespace tavctl::lint

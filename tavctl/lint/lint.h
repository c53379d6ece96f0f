// Checks description files: every problem of every file.
#pragma once

#include "tavctl/description/description.h"
#include "tavctl/description/finding.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/lint/against.h"

#include <string>
#include <vector>

namespace tavctl::lint {

// What a folder of descriptions, or some files, came to.
struct Report {
    std::vector<std::string> files; // in the order in which they are loaded
    std::vector<Finding> findings;  // by file, then by line

    [[nodiscard]] std::size_t errors() const;
    [[nodiscard]] std::size_t warnings() const;
    // Whether the plug-in cannot load the files.
    [[nodiscard]] bool endsLoad() const;
};

Report lint(const std::vector<std::string>& files);

// The same for a whole folder of descriptions, with what its files are called.
Report lint(const DescriptionFolder& folder);

// The report for people: each finding with its place, the line and what stands wrong in it.
std::string reportAsText(const Report& report);

// One JSON object in one line, with its line feed.
std::string reportAsJson(const Report& report, const std::vector<Comparison>& comparisons = {});

// The table of rules, for people and as JSON.
std::string rulesAsText();
std::string rulesAsJson();

} // namespace tavctl::lint

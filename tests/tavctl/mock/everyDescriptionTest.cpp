// Every description of the project: a box of it is made and listed, or a rule of lint says why not.
#include "tavctl/description/description.h"
#include "tavctl/lint/lint.h"
#include "tavctl/mock/mock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>

namespace {

namespace fs = std::filesystem;
using namespace tavctl;

std::vector<std::string> descriptionsBelow(const fs::path& folder) {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().extension() == ".ini" &&
            lint::Description(entry.path().string()).loads())
            files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Empty when the box is listed; else the rule that forbids it.
std::string ruleAgainst(const std::string& file) {
    const mock::Catalog catalog({file});
    mock::Plan plan;
    const std::string& model = catalog.models().front().model.model;
    plan.boxes.emplace_back().model = {model, file};
    try {
        (void)mock::makeBus(plan, catalog, nullptr, "a test");
        return {};
    } catch (const FailureException& failure) {
        const std::string& reason = failure.failure().reason;
        return reason.substr(0, reason.find(": "));
    }
}

TEST(MockDescriptions, EachIsMadeOrForbiddenByAnErrorOfLint) {
    std::size_t made = 0;
    std::size_t forbidden = 0;
    for (const char* folder : {"descriptions", "tests", "samples"}) {
        for (const std::string& file : descriptionsBelow(fs::path(TAV_SOURCE_DIR) / folder)) {
            const std::string rule = ruleAgainst(file);
            const auto report = lint::lint({file});
            const bool isError = std::any_of(
                report.findings.begin(), report.findings.end(), [&](const lint::Finding& each) {
                    return each.severity == lint::Severity::error && each.rule == rule;
                });
            EXPECT_TRUE(rule.empty() || isError) << file << ": " << rule;
            ++(rule.empty() ? made : forbidden);
        }
    }
    EXPECT_GT(made, 100U);
    EXPECT_GE(forbidden, 5U);
}

} // namespace

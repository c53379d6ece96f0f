#include "tavctl/lint/lint.h"

#include "source/descriptionLoader.h"
#include "tavctl/description/checkLoad.h"
#include "tavctl/lint/checks.h"
#include "tavctl/lint/modelTree.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;

struct Linted {
    explicit Linted(const std::string& path) : description(path), findings(description) {}
    Linted(const Linted&) = delete;
    Linted& operator=(const Linted&) = delete;

    void checkAlone() {
        checkLoad(description, findings);
        checkLines(description, findings);
        checkValues(description, findings);
        checkLists(description, findings);
        checkMaps(description, findings);
        checkMatching(description, findings);
    }

    Description description;
    Findings findings;
};

void checkModelNames(std::deque<Linted>& all) {
    std::map<std::string, const Description*> seen;
    for (Linted& each : all) {
        const Description& description = each.description;
        if (description.text().linesOf(kSectionModel, kModel).empty())
            continue;
        const auto [first, isNew] = seen.emplace(description.model().model, &description);
        if (!isNew)
            each.findings.add(
                "duplicate-model", description.text().value(kSectionModel, kModel),
                fmt::format("{} describes a model of this name too", first->second->path()),
                "one file for each model");
    }
}

void checkSameTree(std::deque<Linted>& all) {
    for (std::size_t later = 1; later < all.size(); ++later) {
        const Description& description = all[later].description;
        for (std::size_t earlier = 0; earlier < later && description.loads(); ++earlier) {
            const Description& other = all[earlier].description;
            if (!other.loads() || !satisfiedByOneTree(other.model(), description.model()))
                continue;
            all[later].findings.add("same-tree", description.text().header(kSectionAnchor),
                                    fmt::format("a box can be taken for this model and for {} ({}) "
                                                "at once: it is listed twice then",
                                                quoted(other.model().model), other.path()),
                                    "an anchor, or counted bridges, that tell the models apart");
            break;
        }
    }
}

} // namespace

std::size_t Report::errors() const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [](const Finding& each) { return each.severity == Severity::error; }));
}

std::size_t Report::warnings() const {
    return findings.size() - errors();
}

bool Report::endsLoad() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& each) { return each.endsLoad; });
}

Report lint(const std::vector<std::string>& files) {
    std::deque<Linted> all;
    for (const std::string& file : files)
        all.emplace_back(file).checkAlone();
    checkModelNames(all);
    checkSameTree(all);
    Report report{files, {}};
    for (Linted& each : all) {
        auto findings = std::move(each.findings).sorted();
        std::move(findings.begin(), findings.end(), std::back_inserter(report.findings));
    }
    return report;
}

} // namespace tavctl::lint

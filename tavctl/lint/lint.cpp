#include "tavctl/lint/lint.h"

#include "source/descriptionLoader.h"
#include "tavctl/description/checkLoad.h"
#include "tavctl/lint/checks.h"
#include "tavctl/lint/sharedTrees.h"
#include "tavctl/words/progress.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;

// The files so far. Of each only what the checks of later ones need is kept, since there may be
// very many.
class LintedFiles {
public:
    explicit LintedFiles(const std::vector<std::string>& files) : files_(files) {}

    // The next one's.
    std::vector<Finding> check() {
        const Description description(files_[number_]);
        Findings findings(description);
        checkLoad(description, findings);
        if (isExplorersFile(description)) {
            ++number_;
            return std::move(findings).sorted();
        }
        checkSize(description, findings);
        checkLines(description, findings);
        checkValues(description, findings);
        checkLists(description, findings);
        checkMaps(description, findings);
        checkPlaces(description, findings);
        checkMatching(description, findings);
        checkModelName(description, findings);
        checkSameTree(description, findings);
        ++number_;
        return std::move(findings).sorted();
    }

private:
    void checkModelName(const Description& description, Findings& findings) {
        if (description.text().linesOf(kSectionModel, kModel).empty() && !description.isTooLarge())
            return;
        const auto [first, isNew] = names_.emplace(description.model().model, number_);
        if (!isNew)
            findings.add(
                "duplicate-model", description.text().value(kSectionModel, kModel),
                fmt::format("{} describes a model of this name too", files_[first->second]),
                "one file for each model");
    }

    void checkSameTree(const Description& description, Findings& findings) {
        if (!description.loads())
            return;
        loaded_.push_back({number_, description.model().model});
        const auto first = trees_.add(description.model());
        if (!first)
            return;
        const Loaded& other = loaded_[*first];
        findings.add("same-tree", description.text().header(kSectionAnchor),
                     fmt::format("a box can be taken for this model and for {} ({}) at once: it "
                                 "is listed twice then",
                                 inQuotes(other.model), files_[other.file]),
                     "an anchor, or counted bridges, that tell the models apart");
    }

    struct Loaded {
        std::size_t file;
        std::string model;
    };

    const std::vector<std::string>& files_;
    std::size_t number_ = 0;
    std::unordered_map<std::string, std::size_t> names_; // the first file of each
    std::vector<Loaded> loaded_;                         // in the order of the trees' models
    SharedTrees trees_;
};

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
    return lint({files, {}, {}});
}

Report lint(const DescriptionFolder& folder) {
    const std::vector<std::string>& files = folder.files;
    const std::unordered_set<std::string> byShortName(folder.byShortName.begin(),
                                                      folder.byShortName.end());
    Progress progress("checking descriptions", files.size());
    Report report{files, {}};
    LintedFiles linted(files);
    for (const std::string& file : files) {
        if (byShortName.contains(file))
            report.findings.push_back(loadedByShortName(file));
        std::vector<Finding> findings = linted.check();
        std::move(findings.begin(), findings.end(), std::back_inserter(report.findings));
        progress.step();
    }
    std::transform(folder.elsewhere.begin(), folder.elsewhere.end(),
                   std::back_inserter(report.findings), shortName);
    return report;
}

} // namespace tavctl::lint

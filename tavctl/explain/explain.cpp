#include "tavctl/explain/explain.h"

#include "source/modelList.h"
#include "tavctl/explain/changes.h"
#include "tavctl/explain/matchRecorder.h"

#include <fmt/core.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace tavctl::explain {

using namespace nZoTavManagerPciPlugin_15_0;

namespace {

// What was not walked because the model's turn had ended, and the order in which people look.
void finish(Explanation& explanation) {
    for (Candidate& each : explanation.candidates) {
        if (each.qualified && !each.walked && each.firstFailure() == nullptr)
            each.outcome = Outcome::notReached;
    }
    const auto rank = [](const Candidate& each) {
        return std::pair(each.outcome, -static_cast<std::ptrdiff_t>(each.conditionsMet()));
    };
    std::stable_sort(explanation.candidates.begin(), explanation.candidates.end(),
                     [&](const Candidate& a, const Candidate& b) { return rank(a) < rank(b); });
}

// Of bridges; other functions have theirs in the header.
bool asksForSubsystems(const tModelDescription& model) {
    return std::any_of(model.anchors.begin(), model.anchors.end(), [](const auto& anchor) {
        return anchor.headerType == kHeaderTypeBridge &&
               (anchor.ids.subsystemVendor != 0 || anchor.ids.subsystem != 0);
    });
}

} // namespace

// Matches all models at once, as the plug-in does, and has one explanation at a time.
class Explainer {
public:
    Explainer(LoadedModels models, const std::shared_ptr<const pcibus::Bus>& bus,
              const std::function<void(Explanation&)>& tell, const Elsewhere& elsewhere)
        : files_(std::move(models.files_)), sections_(std::move(models.sections_)),
          models_(std::move(models.models_)), bus_(bus), changes_(bus), tell_(tell),
          elsewhere_(elsewhere) {
        names_.bridge = [this](const tBridgeDescription& bridge) {
            return sectionOf(models_.GetModel(model_), sections_[model_], bridge);
        };
    }

    void explain(ModelMatcher& matcher) {
        TurnRecorder recorder(matcher.wrapper(), *this);
        matcher.observe(models_, recorder);
        endTurn();
        if (trouble_)
            std::rethrow_exception(trouble_);
    }

private:
    class TurnRecorder : public MatchRecorder {
    public:
        TurnRecorder(iPciBrdWrapper_ex& wrapper, Explainer& explainer)
            : MatchRecorder(wrapper, *explainer.bus_, explainer.names_, explainer.explanation_),
              explainer_(explainer) {}

        void onModel(std::uint32_t index) override {
            explainer_.endTurn();
            explainer_.beginTurn(index);
            MatchRecorder::onModel(index);
        }

    private:
        Explainer& explainer_;
    };

    void beginTurn(std::uint32_t index) {
        model_ = index;
        hasTurn_ = true;
        const tModelDescription& model = models_.GetModel(index);
        explanation_ = {};
        explanation_.model = model.model;
        explanation_.file = files_[index];
        explanation_.asksForSubsystems = asksForSubsystems(model);
        explanation_.asksForLinkWidths = model.linkWidthPerLabel != 0;
        for (std::size_t i = 0; i < model.anchors.size(); ++i)
            explanation_.anchors.push_back(fmt::format(
                "[{}] {}{}", sections_[index].anchor(i),
                model.anchors[i].headerType == kHeaderTypeBridge ? "a bridge " : "a function ",
                idsText(model.anchors[i].ids)));
    }

    // Whoever observes must not raise.
    void endTurn() {
        if (!std::exchange(hasTurn_, false) || trouble_)
            return;
        try {
            finish(explanation_);
            explanation_.elsewhere = elsewhere_.anchorsOf(models_.GetModel(model_));
            changes_.find(models_.GetModel(model_), sections_[model_], explanation_);
            tell_(explanation_);
        } catch (...) {
            trouble_ = std::current_exception();
        }
    }

    std::vector<std::string> files_;
    std::vector<lint::SectionNames> sections_;
    ModelList models_;
    std::shared_ptr<const pcibus::Bus> bus_;
    ChangeFinder changes_;
    const std::function<void(Explanation&)>& tell_;
    const Elsewhere& elsewhere_;
    PartNames names_;
    // The model whose turn it is.
    std::uint32_t model_ = 0;
    bool hasTurn_ = false;
    Explanation explanation_;
    std::exception_ptr trouble_;
};

void LoadedModels::add(lint::Description&& description) {
    files_.push_back(description.path());
    sections_.push_back(description.takeSections());
    models_.push_back(description.takeModel());
}

void LoadedModels::keepOnly(const std::string& model) {
    LoadedModels kept;
    for (std::size_t i = 0; i < models_.size(); ++i) {
        if (models_[i].model != model)
            continue;
        kept.files_.push_back(std::move(files_[i]));
        kept.sections_.push_back(std::move(sections_[i]));
        kept.models_.push_back(std::move(models_[i]));
    }
    *this = std::move(kept);
}

std::vector<std::string> LoadedModels::names() const {
    std::vector<std::string> names;
    for (const lint::tModelDescription& each : models_)
        names.push_back(each.model);
    return names;
}

void explain(LoadedModels models, ModelMatcher& matcher,
             const std::shared_ptr<const pcibus::Bus>& bus,
             const std::function<void(Explanation&)>& tell, const Elsewhere& elsewhere) {
    Explainer(std::move(models), bus, tell, elsewhere).explain(matcher);
}

} // namespace tavctl::explain

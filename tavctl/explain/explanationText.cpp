// The two forms of explanations.
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/words/json.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>

namespace tavctl::explain {

namespace {

std::string_view resultName(Step::Result result) {
    switch (result) {
    case Step::Result::met:
        return "ok";
    case Step::Result::failed:
        return "FAIL";
    default:
        return "note";
    }
}

// A text behind a head of its own in the first line, indented alike in the following ones.
std::string hanging(std::string_view head, std::string_view text) {
    std::string lines = wrapped(text, head.size());
    lines.replace(0, head.size(), head);
    return lines;
}

std::string outcomeText(const Candidate& candidate, bool withSteps) {
    switch (candidate.outcome) {
    case Outcome::listed:
        return candidate.reported == candidate.address
                   ? "listed"
                   : fmt::format("listed, reported at {}", addressText(candidate.reported));
    case Outcome::rejected: {
        const Step* const failure = candidate.firstFailure();
        return failure == nullptr || withSteps
                   ? "not listed"
                   : fmt::format("not listed: expected that {}, found {}", failure->condition,
                                 failure->found);
    }
    case Outcome::partOfOther:
        return "not an anchor of its own: it serves as a bridge of one above";
    default:
        return "not reached: an earlier one of this model failed, and that ends the model's turn";
    }
}

std::string stepText(const Step& step) {
    const std::string head = fmt::format("      {:<6}", resultName(step.result));
    if (step.result == Step::Result::failed) {
        std::string text = hanging(head, step.condition);
        text += hanging("            expected: ", step.expected);
        text += hanging("            found:    ", step.found);
        return text;
    }
    return hanging(head, step.found.empty() ? step.condition
                                            : fmt::format("{}: {}", step.condition, step.found));
}

std::string changeText(const Change& change) {
    return hanging("      change: ", fmt::format("[{}] {} = {}\n({})", change.section, change.key,
                                                 change.value, change.reason));
}

std::string candidateText(const Candidate& candidate, bool withSteps) {
    std::string head = fmt::format("    {}  ", addressText(candidate.address));
    std::string text = hanging(head, outcomeText(candidate, withSteps));
    if (withSteps) {
        for (const Step& step : candidate.steps)
            text += stepText(step);
    }
    for (const Change& change : candidate.changes)
        text += changeText(change);
    if (!candidate.hint.empty())
        text += hanging("      hint: ", candidate.hint);
    return text;
}

std::string nearText(const Explanation& explanation) {
    const bool anyListed =
        std::any_of(explanation.near.begin(), explanation.near.end(),
                    [](const NearFunction& each) { return !each.changes.empty(); });
    // Functions that would not be listed either are of interest only for want of better ones.
    if (!anyListed && !explanation.candidates.empty())
        return {};
    std::string text = "  Nearly the anchor's identifiers:\n";
    for (const NearFunction& near : explanation.near) {
        if (anyListed && near.changes.empty())
            continue;
        text += hanging(fmt::format("    {}  ", addressText(near.address)),
                        fmt::format("{}{}{}{}", idsText(near.ids),
                                    near.isBridge ? ", a bridge" : ", no bridge",
                                    near.slip.empty() ? "" : "; " + near.slip,
                                    near.changes.empty() ? "; not listed with these either" : ""));
        for (const Change& change : near.changes)
            text += changeText(change);
    }
    return text;
}

std::string verdict(const Explanation& explanation) {
    const std::size_t listed = explanation.listed();
    if (listed == 0)
        return "not listed";
    return listed == 1 ? "listed once" : fmt::format("listed {} times", listed);
}

// What a recording of the headers alone does not show, though the description goes by it.
std::string headerOnlyText(const Explanation& explanation,
                           const std::optional<pcibus::LeftOut>& leftOut) {
    if (!leftOut || leftOut->headerOnly == 0 || explanation.listed() != 0)
        return {};
    std::vector<std::string> missing;
    if (explanation.asksForSubsystems)
        missing.emplace_back("subsystem identifiers");
    if (explanation.asksForLinkWidths)
        missing.emplace_back("link widths");
    if (missing.empty())
        return {};
    return wrapped(
        fmt::format("Of {} this recording has 64 bytes alone. Bridges among them show no {}, which "
                    "this description goes by: record the bus with tavctl record, or with 256 "
                    "bytes of each function.",
                    counted(leftOut->headerOnly, "function"), separated(missing, " and no ")),
        2);
}

// Of models that were looked for in vain.
std::string withoutCandidate(const Explanation& explanation,
                             const std::optional<pcibus::LeftOut>& leftOut) {
    std::string text = "No function of this bus has the anchor's identifiers.";
    const std::size_t others = leftOut ? leftOut->otherDomains : 0;
    if (others != 0)
        text += fmt::format(" {} of other domains {} not looked at: the plug-in and its bridge "
                            "library know domain 0 alone.",
                            counted(others, "function"), others == 1 ? "is" : "are");
    if (!explanation.elsewhere.empty())
        text +=
            fmt::format(" {} among them {} these identifiers.", enumerated(explanation.elsewhere),
                        explanation.elsewhere.size() == 1 ? "has" : "have");
    return wrapped(text, 2);
}

// Matching knows domain 0 alone.
std::string fullAddress(const nZoTavManagerPciPlugin_15_0::tBusAddress& address) {
    return "0000:" + addressText(address);
}

// What people read are a column's words; programs get names.
const char* resultWord(Step::Result result) {
    switch (result) {
    case Step::Result::met:
        return "met";
    case Step::Result::failed:
        return "failed";
    case Step::Result::noted:
        break;
    }
    return "noted";
}

const char* outcomeWord(Outcome outcome) {
    switch (outcome) {
    case Outcome::listed:
        return "listed";
    case Outcome::rejected:
        return "rejected";
    case Outcome::partOfOther:
        return "partOfOther";
    case Outcome::notReached:
        break;
    }
    return "notReached";
}

Json changesJson(const std::vector<Change>& changes) {
    Json list = Json::array();
    for (const Change& change : changes)
        list.push_back(Json{{"section", change.section},
                            {"key", change.key},
                            {"value", change.value},
                            {"reason", change.reason}});
    return list;
}

Json candidateJson(const Candidate& candidate) {
    Json steps = Json::array();
    for (const Step& step : candidate.steps)
        steps.push_back(
            Json{{"result", resultWord(step.result)},
                 {"condition", step.condition},
                 {"expected", step.expected},
                 {"found", step.found},
                 {"section", step.section.empty() ? Json(nullptr) : Json(step.section)}});
    return Json{{"address", fullAddress(candidate.address)},
                {"slotPath", candidate.slotPath},
                {"anchor", candidate.anchor},
                {"outcome", outcomeWord(candidate.outcome)},
                {"reported", candidate.outcome == Outcome::listed
                                 ? Json(fullAddress(candidate.reported))
                                 : Json(nullptr)},
                {"steps", std::move(steps)},
                {"changes", changesJson(candidate.changes)},
                {"hint", candidate.hint.empty() ? Json(nullptr) : Json(candidate.hint)}};
}

} // namespace

std::string explanationAsText(const Explanation& explanation, bool inFull,
                              const std::optional<pcibus::LeftOut>& leftOut) {
    std::string text =
        wrapped(fmt::format("{}: {}", printable(explanation.model), verdict(explanation)), 0);
    text += fmt::format("  {}\n", printable(explanation.file));
    for (const std::string& anchor : explanation.anchors)
        text += hanging("  anchor: ", anchor);
    if (explanation.candidates.empty())
        text += withoutCandidate(explanation, leftOut);
    text += headerOnlyText(explanation, leftOut);
    bool shownMiss = false;
    for (const Candidate& candidate : explanation.candidates) {
        const bool isMiss = candidate.outcome == Outcome::rejected;
        const bool isAnswer = isMiss && !shownMiss && explanation.listed() == 0;
        text += candidateText(candidate, inFull || isAnswer);
        shownMiss = shownMiss || isMiss;
    }
    if (!explanation.near.empty())
        text += nearText(explanation);
    return text;
}

std::string explanationAsJson(const Explanation& explanation) {
    Json candidates = Json::array();
    for (const Candidate& candidate : explanation.candidates)
        candidates.push_back(candidateJson(candidate));
    Json near = Json::array();
    for (const NearFunction& each : explanation.near)
        near.push_back(Json{{"address", fullAddress(each.address)},
                            {"ids", idsText(each.ids)},
                            {"isBridge", each.isBridge},
                            {"slip", each.slip.empty() ? Json(nullptr) : Json(each.slip)},
                            {"changes", changesJson(each.changes)}});
    return Json{
        {"model", explanation.model},
        {"file", explanation.file},
        {"listed", explanation.listed()},
        {"anchors", explanation.anchors},
        {"failure", explanation.failure.empty() ? Json(nullptr) : Json(explanation.failure)},
        {"candidates", std::move(candidates)},
        {"near", std::move(near)},
        {"elsewhere", explanation.elsewhere}}
        .text();
}

} // namespace tavctl::explain

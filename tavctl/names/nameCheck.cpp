#include "tavctl/names/nameCheck.h"

#include "pxidrivertools/cSlotPath.h"
#include "source/cTerminalNameDb.h"
#include "source/modelDescription.h"
#include "source/terminalNumbers.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

// The slot path as the plug-in writes it; empty when the text is none.
std::string canonicalSlotPath(const std::string& text) {
    nZoPxiDriverTools_1_0::cSlotPath path;
    nZOQUIL000::tErrorStatus status;
    path.ParseMachineText(text, status);
    std::string canonical;
    path.ToString(canonical, status);
    return status.failed() ? std::string() : canonical;
}

bool isMissing(const std::string& text) {
    return text.empty() || text == kNoText;
}

// Why the plug-in could never use the entry, or never wrote it; empty when all is well.
std::string malformation(const NameEntry& entry) {
    const std::string canonical = canonicalSlotPath(entry.slotPath);
    if (canonical.empty() || canonical.ends_with(':'))
        return "the section is no slot path such as MR00:00,20";
    if (canonical != entry.slotPath)
        return fmt::format("the section is never looked up; the slot path is written {}",
                           canonical);
    if (isMissing(entry.model))
        return fmt::format("the key {} is missing", kNameKeyModel);
    if (isMissing(entry.terminalName))
        return fmt::format("the key {} is missing", kNameKeyTerminalName);
    if (!isMadeName(entry.terminalName))
        return "the terminal name is not a base followed by a number from 1 upwards";
    return {};
}

const MatchedDevice* deviceIn(const std::string& slotPath, const Survey& survey) {
    const auto found = std::find_if(survey.begin(), survey.end(), [&](const MatchedDevice& device) {
        return device.slotPath == slotPath;
    });
    return found == survey.end() ? nullptr : &*found;
}

class Check {
public:
    Check(const NameFile& file, const Survey* survey) : file_(file), survey_(survey) {}

    std::vector<NameProblem> run() {
        for (const auto& repeated : file_.repeated())
            problems_.push_back({NameProblem::Kind::duplicate, repeated.slotPath, "", repeated.line,
                                 "this slot stands a second time; both are taken for one"});
        for (const NameEntry& entry : file_.entries())
            check(entry);
        std::stable_sort(
            problems_.begin(), problems_.end(),
            [](const NameProblem& a, const NameProblem& b) { return a.line < b.line; });
        return std::move(problems_);
    }

private:
    void check(const NameEntry& entry) {
        if (const std::string reason = malformation(entry); !reason.empty())
            return add(NameProblem::Kind::malformed, entry, reason);
        const auto [first, isFirst] = slots_.emplace(entry.terminalName, entry.slotPath);
        if (!isFirst)
            add(NameProblem::Kind::duplicate, entry,
                fmt::format("this is the name of {} too", first->second));
        if (survey_ == nullptr)
            return;
        const MatchedDevice* const device = deviceIn(entry.slotPath, *survey_);
        switch (presenceOf(entry, *survey_)) {
        case NamePresence::absent:
            add(NameProblem::Kind::stale, entry, "no device is in this slot");
            break;
        case NamePresence::replaced:
            add(NameProblem::Kind::stale, entry,
                fmt::format("the slot has a {} now, as {}", device->record.modelName,
                            device->record.terminalName));
            break;
        case NamePresence::present:
        case NamePresence::unknown:
            break;
        }
    }

    void add(NameProblem::Kind kind, const NameEntry& entry, const std::string& message) {
        problems_.push_back({kind, entry.slotPath, entry.terminalName, entry.line, message});
    }

    const NameFile& file_;
    const Survey* survey_;
    std::map<std::string, std::string> slots_; // by terminal name
    std::vector<NameProblem> problems_;
};

} // namespace

NamePresence presenceOf(const NameEntry& entry, const Survey& survey) {
    bool isTaken = false;
    for (const MatchedDevice& device : survey) {
        if (device.slotPath != entry.slotPath)
            continue;
        if (device.record.modelName == entry.model &&
            device.record.terminalName == entry.terminalName)
            return NamePresence::present;
        isTaken = true;
    }
    return isTaken ? NamePresence::replaced : NamePresence::absent;
}

const char* kindName(NameProblem::Kind kind) {
    switch (kind) {
    case NameProblem::Kind::malformed:
        return "malformed";
    case NameProblem::Kind::duplicate:
        return "duplicate";
    case NameProblem::Kind::stale:
        return "stale";
    }
    return "";
}

const char* changeName(NameForecast::Change change) {
    switch (change) {
    case NameForecast::Change::stays:
        return "stays";
    case NameForecast::Change::changes:
        return "changes";
    case NameForecast::Change::fresh:
        return "new";
    case NameForecast::Change::gone:
        return "gone";
    }
    return "";
}

bool isMadeName(const std::string& name) {
    const std::string base = withoutDigits(name);
    return name.starts_with(base) && name.size() > base.size() && name[base.size()] != '0';
}

std::vector<NameProblem> checkNames(const NameFile& file, const Survey* survey) {
    return Check(file, survey).run();
}

std::vector<NameForecast> forecastNames(const NameFile& file, const Survey* now,
                                        const Survey& then) {
    std::vector<NameForecast> forecasts;
    for (const MatchedDevice& device : then) {
        NameForecast forecast{NameForecast::Change::fresh, device.record.terminalName, "",
                              device.record.modelName, device.slotPath};
        for (const NameEntry& entry : file.entries()) {
            if (entry.slotPath != device.slotPath)
                continue;
            const bool stays = entry.model == device.record.modelName &&
                               entry.terminalName == device.record.terminalName;
            forecast.change = stays ? NameForecast::Change::stays : NameForecast::Change::changes;
            forecast.before = stays ? std::string() : entry.terminalName;
        }
        forecasts.push_back(std::move(forecast));
    }
    if (now == nullptr)
        return forecasts;
    for (const MatchedDevice& device : *now) {
        if (deviceIn(device.slotPath, then) == nullptr)
            forecasts.push_back({NameForecast::Change::gone, device.record.terminalName, "",
                                 device.record.modelName, device.slotPath});
    }
    return forecasts;
}

} // namespace tavctl

#include "tavctl/mock/planFile.h"

#include "platform/file.h"
#include "platform/stream.h"
#include "platform/systemCode.h"
#include "tavctl/description/positionedIni.h"
#include "tavctl/mock/planValues.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <string_view>
#include <utility>

namespace tavctl::mock {

namespace {

using lint::IniLineKind;
using lint::PositionedIni;
using lint::PositionedLine;

constexpr std::size_t kLargestPlan = std::size_t{1} << 20;
constexpr std::string_view kBox = "Box ";
constexpr std::string_view kEndpoint = "Endpoint ";
constexpr std::string_view kStep = "Step ";

class PlanReader {
public:
    PlanReader(const PositionedIni& ini, const std::string& name) : ini_(ini), name_(name) {}

    std::vector<Plan> read() {
        for (const PositionedLine& line : ini_.lines()) {
            if (line.kind == IniLineKind::comment)
                continue;
            if (line.kind == IniLineKind::header)
                begin(line);
            else if (line.kind == IniLineKind::key)
                take(line);
            else
                refuse(placeOf(line, line.text), "this is neither a section, a key nor a comment");
        }
        finish();
        return std::move(plans_);
    }

private:
    [[nodiscard]] std::string placeOf(const PositionedLine& line, std::string_view stretch) const {
        const lint::Place place = ini_.placeOf(line.number, stretch);
        return fmt::format("{}:{}:{}", name_, place.line, place.column);
    }

    void begin(const PositionedLine& line) {
        finish();
        const std::string place = placeOf(line, line.name);
        keys_.clear();
        box_ = nullptr;
        endpoint_ = nullptr;
        const auto nameBehind = [&](std::string_view prefix) {
            std::string name(line.name.substr(prefix.size()));
            if (name.empty() || !names_.insert(name).second)
                refuse(place, name.empty() ? "the section has no name of its own"
                                           : fmt::format("{} was begun before", inQuotes(name)));
            return Said{std::move(name), place};
        };
        if (line.name.starts_with(kBox)) {
            requireNoStep(place);
            box_ = &plans_.back().boxes.emplace_back();
            box_->name = nameBehind(kBox);
        } else if (line.name.starts_with(kEndpoint)) {
            requireNoStep(place);
            endpoint_ = &plans_.back().endpoints.emplace_back();
            endpoint_->name = nameBehind(kEndpoint);
        } else if (line.name.starts_with(kStep)) {
            beginStep(line.name.substr(kStep.size()), place);
        } else {
            refuse(place, fmt::format("{} is no section of a plan; there are [Box NAME], "
                                      "[Endpoint NAME] and [Step NUMBER NAME]",
                                      inQuotes(line.name)));
        }
    }

    void requireNoStep(const std::string& place) const {
        if (plans_.size() > 1)
            refuse(place, "it stands behind a step; Gone = 1 is for what comes later");
    }

    // "1 Rack"
    void beginStep(std::string_view text, const std::string& place) {
        const std::size_t blank = std::min(text.find(' '), text.size());
        const std::string name(text.substr(std::min(blank + 1, text.size())));
        const unsigned number = readCount({std::string(text.substr(0, blank)), place});
        if (number == 0 || (number + 1 != plans_.size() && number != plans_.size()))
            refuse(place,
                   fmt::format("steps stand in their order: step {} comes next", plans_.size()));
        if (number == plans_.size()) {
            plans_.push_back(plans_.back());
            changed_.clear();
        }
        if (!changed_.insert(name).second)
            refuse(place, fmt::format("this step was said of {} before", inQuotes(name)));
        for (PlannedBox& box : plans_.back().boxes) {
            if (box.name.text == name)
                box_ = &box;
        }
        for (PlannedEndpoint& endpoint : plans_.back().endpoints) {
            if (endpoint.name.text == name)
                endpoint_ = &endpoint;
        }
        if (box_ == nullptr && endpoint_ == nullptr)
            refuse(place, fmt::format("no box and no endpoint is called {}", inQuotes(name)));
    }

    void take(const PositionedLine& line) {
        const std::string place = placeOf(line, line.name);
        const std::string key(line.name);
        if (box_ == nullptr && endpoint_ == nullptr)
            refuse(place, "the key stands before the first section");
        if (!keys_.insert(key).second)
            refuse(place, fmt::format("{} was given before", inQuotes(key)));
        const Said value{std::string(line.value),
                         line.value.empty() ? place : placeOf(line, line.value)};
        if (value.text.empty())
            refuse(place, fmt::format("{} has no value", inQuotes(key)));
        if (box_ != nullptr)
            takeOfBox(key, place, value);
        else
            takeOfEndpoint(key, place, value);
    }

    void takeOfBox(const std::string& key, const std::string& place, const Said& value) {
        if (key == "Model")
            box_->model = value;
        else if (key == "In")
            box_->in = value;
        else if (key == "Anchor")
            box_->anchor = value;
        else if (key == "Missing")
            box_->missing = readList(value);
        else if (key == "Gone")
            box_->isGone = readFlag(value);
        else if (const auto port = portBehind("Link", key))
            ofPort(*port, place).link = readLink(value);
        else if (const auto below = portBehind("Bus", key))
            ofPort(*below, place).bus = readBus(value);
        else if (const auto kept = portBehind("Reserve", key))
            ofPort(*kept, place).reserve = readCount(value);
        else
            refuseKey(key, place,
                      {"Model", "In", "Anchor", "Missing", "Gone", "Link", "Bus", "Reserve",
                       "Link PORT", "Bus PORT", "Reserve PORT"});
    }

    void takeOfEndpoint(const std::string& key, const std::string& place, const Said& value) {
        if (key == "In")
            endpoint_->in = value;
        else if (key == "Vid")
            endpoint_->ids.vendor = readIdentifier(value);
        else if (key == "Pid")
            endpoint_->ids.device = readIdentifier(value);
        else if (key == "SsVid")
            endpoint_->ids.subsystemVendor = readIdentifier(value);
        else if (key == "SsPid")
            endpoint_->ids.subsystem = readIdentifier(value);
        else if (key == "Class")
            endpoint_->deviceClass = readIdentifier(value);
        else if (key == "Link")
            endpoint_->link = readLink(value);
        else if (key == "Gone")
            endpoint_->isGone = readFlag(value);
        else
            refuseKey(key, place, {"In", "Vid", "Pid", "SsVid", "SsPid", "Class", "Link", "Gone"});
    }

    // "Link" is said of the way up, "Link 2" of port 2.
    static std::optional<std::string> portBehind(std::string_view word, std::string_view key) {
        if (key == word)
            return std::string();
        if (!key.starts_with(word) || key.size() < word.size() + 2 || key[word.size()] != ' ')
            return std::nullopt;
        return std::string(key.substr(word.size() + 1));
    }

    PlannedPort& ofPort(const std::string& port, const std::string& place) {
        PlannedPort& planned = box_->ports[port];
        if (planned.place.empty())
            planned.place = place;
        return planned;
    }

    [[noreturn]] static void refuseKey(const std::string& key, const std::string& place,
                                       const std::vector<std::string>& keys) {
        const std::string near = nearestName(key, keys);
        refuse(place, fmt::format("{} is no key of this section; {}", inQuotes(key),
                                  near.empty() ? fmt::format("there are {}", enumerated(keys))
                                               : fmt::format("did you mean {}?", inQuotes(near))));
    }

    // What every section must have.
    void finish() const {
        if (box_ != nullptr && !box_->model.isSaid())
            refuse(box_->name.place, "the box has no Model");
        if (endpoint_ != nullptr && !endpoint_->in.isSaid())
            refuse(endpoint_->name.place, "the endpoint has no In");
    }

    const PositionedIni& ini_;
    const std::string& name_;
    std::vector<Plan> plans_{1}; // the last one is at work
    PlannedBox* box_ = nullptr;  // of the section at work, as is the next
    PlannedEndpoint* endpoint_ = nullptr;
    std::set<std::string, std::less<>> names_;
    std::set<std::string> keys_;    // of the section at work
    std::set<std::string> changed_; // by the step at work
};

} // namespace

std::vector<Plan> readPlan(std::string text, const std::string& name) {
    const PositionedIni ini(std::move(text));
    return PlanReader(ini, name).read();
}

std::vector<Plan> readPlanFile(const std::string& file) {
    const platform::Stream stream = platform::openStream(file.c_str(), "rb");
    if (!stream)
        failBySystem("read the plan", file, platform::lastSystemCode());
    std::string text(kLargestPlan + 1, '\0');
    text.resize(platform::readStream(stream.get(), text.data(), text.size()));
    if (std::ferror(stream.get()) != 0)
        failBySystem("read the plan", file, platform::lastSystemCode());
    if (text.size() > kLargestPlan)
        throw FailureException({"read the plan", file, "it has more than a megabyte", {}, {}},
                               ExitStatus::problemFound);
    return readPlan(std::move(text), file);
}

} // namespace tavctl::mock

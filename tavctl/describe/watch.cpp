#include "tavctl/describe/watch.h"

#include "pxidrivertools/asciiText.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/describe/settleLabels.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <istream>
#include <map>
#include <ostream>
#include <set>
#include <utility>
#include <vector>

namespace tavctl::describe {

namespace {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;

// What a function is, wherever its bus numbers have moved to.
using Functions = std::map<std::string, std::string>; // by slot path

Functions functionsBelow(const pcibus::Bus& bus, const std::string& anchorPath) {
    Functions functions;
    for (const pcibus::PciFunction& each : bus.functions()) {
        const std::string path = slotPathOf(bus, each);
        // Paths begin nearest the function: below the anchor are those that end with its hops.
        const std::string hops = anchorPath.substr(anchorPath.find(':') + 1);
        if (path.ends_with("," + hops) &&
            path.substr(0, path.find(':')) == anchorPath.substr(0, anchorPath.find(':')))
            functions[path] = fmt::format("{:04X}:{:04X}", each.vendorId, each.deviceId);
    }
    return functions;
}

// The path of the bridge above, "MR00:20" for "MR00:00,20".
std::string parentPath(const std::string& path) {
    const std::size_t root = path.find(':') + 1;
    const std::size_t comma = path.find(',');
    return comma == std::string::npos ? std::string()
                                      : path.substr(0, root) + path.substr(comma + 1);
}

// The port above a function below the anchor that came or went: the nearest bridge that was there
// all the time, or, when that is the anchor itself, the function next below it.
std::string portAbove(const std::string& path, const Functions& steady,
                      const std::string& anchorPath) {
    std::string below = path;
    for (std::string at = parentPath(path); !at.empty() && at != anchorPath;
         below = at, at = parentPath(at)) {
        if (steady.contains(at))
            return at;
    }
    return below;
}

[[noreturn]] void fail(const std::string& reason) {
    throw FailureException({"describe", {}, reason, {}, {}}, ExitStatus::problemFound);
}

constexpr const char* kNextConnector =
    "What is printed beside the next connector? (An empty line ends the list.)";
constexpr const char* kNextCorrection =
    "What is printed beside the next connector? (-LABEL takes one off the list again; an empty "
    "line ends the list.)";

} // namespace

void Watch::say(const std::string& text) {
    questions_ << wrapped(text, 0) << std::flush;
}

bool Watch::ask(const std::string& question, std::string& answer) {
    say(question);
    if (!std::getline(answers_, answer))
        return false;
    answer = std::string(trim(answer));
    return true;
}

std::string Watch::changedPort(const pcibus::Bus& before, const pcibus::Bus& after,
                               const std::string& anchorPath) {
    const Functions old = functionsBelow(before, anchorPath);
    const Functions now = functionsBelow(after, anchorPath);
    Functions steady;
    std::set<std::string> changed;
    for (const auto& [path, what] : now) {
        const auto was = old.find(path);
        if (was != old.end() && was->second == what)
            steady.emplace(path, what);
        else
            changed.insert(path);
    }
    for (const auto& [path, what] : old) {
        if (!now.contains(path))
            changed.insert(path);
    }
    std::set<std::string> ports;
    for (const std::string& path : changed)
        ports.insert(portAbove(path, steady, anchorPath));
    if (ports.size() == 1)
        return *ports.begin();
    say(ports.empty()
            ? "Nothing has changed below the box. Is it plugged in, and powered?"
            : fmt::format("Something has changed behind {} at once. One at a time, please.",
                          counted(ports.size(), "port")));
    return {};
}

std::string Watch::portOf(const std::string& label) {
    std::string path;
    std::string answer;
    while (path.empty()) {
        if (!ask(fmt::format("Plug something into connector {} (or unplug what is in it), then "
                             "press Enter; s and Enter skips it.",
                             inQuotes(label)),
                 answer) ||
            answer == "s")
            return {};
        std::shared_ptr<const pcibus::Bus> after;
        try {
            after = readBus_();
        } catch (const FailureException& failure) {
            say(fmt::format("{}. What was found is kept; try again.", failure.what()));
            continue;
        }
        isGone_ = functionAtSlotPath(*after, anchorPath_) == nullptr;
        if (isGone_) {
            say(fmt::format("The box is no longer at {}. What was found is kept; plug it in and "
                            "power it again.",
                            anchorPath_));
            continue;
        }
        path = changedPort(*before_, *after, anchorPath_);
        before_ = after;
    }
    return path;
}

void Watch::addConnector(Draft& draft, const std::string& label) {
    const std::string path = portOf(label);
    if (path.empty())
        return;
    const pcibus::PciFunction* const port = functionAtSlotPath(*before_, path);
    if (port == nullptr || !port->isBridge()) {
        say("What has changed stands beside the ports of the box and not behind one. Try again "
            "with something in the connector.");
        return;
    }
    const auto known = std::find(portPaths_.begin(), portPaths_.end(), path);
    const auto index = static_cast<std::size_t>(known - portPaths_.begin());
    if (known == portPaths_.end()) {
        portPaths_.push_back(path);
        draft.ports.push_back(draftBridge(*before_, *functionAtSlotPath(*before_, anchorPath_),
                                          *port, std::to_string(portPaths_.size())));
    }
    draft.ports[index].labels.push_back(label);
    say(fmt::format("Connector {} is the port {}: TraversalMapFromAnchor = {}.", inQuotes(label),
                    pcibus::addressText(*port), draft.ports[index].map));
}

bool Watch::takeOff(Draft& draft, const std::string& label) {
    for (std::size_t i = 0; i < draft.ports.size(); ++i) {
        auto& labels = draft.ports[i].labels;
        const auto found = std::find(labels.begin(), labels.end(), label);
        if (found == labels.end())
            continue;
        labels.erase(found);
        if (labels.empty()) {
            draft.ports.erase(draft.ports.begin() + static_cast<std::ptrdiff_t>(i));
            portPaths_.erase(portPaths_.begin() + static_cast<std::ptrdiff_t>(i));
        }
        for (std::size_t each = 0; each < draft.ports.size(); ++each)
            draft.ports[each].name = std::to_string(each + 1);
        say(fmt::format("Connector {} is off the list.", inQuotes(label)));
        return true;
    }
    return false;
}

std::string Watch::contradiction(Draft& draft, std::int32_t lanes) const {
    if (isGone_)
        return fmt::format("the box is no longer at {}", anchorPath_);
    if (draft.ports.empty())
        return "no connector was found";
    return settleLabels(draft, *before_, anchorPath_, portPaths_, lanes);
}

void Watch::tellFound(const Draft& draft, const std::string& trouble) {
    say(fmt::format("That cannot be described: {}.\nFound so far:", trouble));
    for (std::size_t i = 0; i < draft.ports.size(); ++i) {
        const pcibus::PciFunction* const port = functionAtSlotPath(*before_, portPaths_[i]);
        questions_ << wrapped(
            fmt::format("{}{}: {}", draft.ports[i].map,
                        port == nullptr ? ""
                                        : fmt::format(" ({})", counted(port->linkWidth, "lane")),
                        enumerated(draft.ports[i].labels)),
            2);
    }
}

std::shared_ptr<const pcibus::Bus> Watch::run(Draft& draft, const std::string& anchorPath) {
    const std::int32_t lanes = draft.linkWidthPerLabel;
    anchorPath_ = anchorPath;
    portPaths_.clear();
    isGone_ = false;
    before_ = readBus_();
    bool isCorrecting = false;
    bool isCorrected = false;
    for (;;) {
        std::string label;
        const bool hasAnswer = ask(isCorrecting ? kNextCorrection : kNextConnector, label);
        if (hasAnswer && label.find(',') != std::string::npos) {
            say("A label must have no comma.");
        } else if (hasAnswer && !label.empty()) {
            isCorrected = true;
            if (!isCorrecting || label.front() != '-' || !takeOff(draft, label.substr(1)))
                addConnector(draft, label);
        } else {
            const std::string trouble = contradiction(draft, lanes);
            if (draft.ports.empty())
                fail(trouble);
            if (trouble.empty())
                return before_;
            if (!hasAnswer || (isCorrecting && !isCorrected)) {
                draft.unfinished = trouble;
                return before_;
            }
            tellFound(draft, trouble);
            isCorrecting = true;
            isCorrected = false;
        }
    }
}

} // namespace tavctl::describe

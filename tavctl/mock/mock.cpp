#include "tavctl/mock/mock.h"

#include "pcibus/pciFunction.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/mock/builder.h"
#include "tavctl/mock/listing.h"
#include "tavctl/mock/machineText.h"
#include "tavctl/mock/qemuOptions.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl::mock {

namespace {

std::vector<PresentDevice> connectorsOf(const std::vector<MatchedDevice>& devices) {
    std::vector<PresentDevice> present;
    for (const MatchedDevice& device : devices) {
        PresentDevice& each = present.emplace_back();
        each.name = device.record.terminalName;
        for (const MatchedPort& port : device.ports) {
            for (const auto& entry : port.entries) {
                each.connectors.push_back({entry.connectorLabel, handleOf(port.bridge.value())});
            }
        }
    }
    return present;
}

// The number of the anchor by which a box is made: the one that is named, else the first by which
// the plug-in lists the box where it is alone.
std::size_t anchorOf(const PlannedBox& plan, const Catalog& catalog) {
    const BoxModel& model = catalog.models()[catalog.numberOf(plan.model)];
    const auto& sections = model.anchorSections;
    if (plan.anchor.isSaid()) {
        const auto named = std::find(sections.begin(), sections.end(), plan.anchor.text);
        if (named == sections.end())
            refuse(plan.anchor.place,
                   fmt::format("{} is no anchor of this model; there {} {}",
                               inQuotes(plan.anchor.text), sections.size() == 1 ? "is" : "are",
                               enumerated(sections)));
        return static_cast<std::size_t>(named - sections.begin());
    }
    for (std::size_t anchor = 0; sections.size() > 1 && anchor < sections.size(); ++anchor) {
        Plan alone;
        alone.boxes.push_back(plan);
        alone.boxes.front().in = {};
        alone.boxes.front().anchor = {sections[anchor], plan.model.place};
        try {
            (void)makeBus(alone, catalog, nullptr, {});
            return anchor;
        } catch (const FailureException&) {
            continue;
        }
    }
    return 0;
}

std::vector<std::string> commentsOf(const BuiltMachine& built, const Catalog& catalog,
                                    const std::string& program, Form form) {
    std::vector<std::string> comments;
    if (form == Form::dump)
        comments.push_back(
            fmt::format("Made by {} in the form of lspci -xxx; no machine has this bus.", program));
    else
        comments.push_back(fmt::format("Made by {}: options for QEMU's machine q35.", program));
    for (const PlannedDevice& each : plannedDevices(built, catalog)) {
        const auto& record = each.record;
        comments.push_back(fmt::format(
            "{} {}: {}", pcibus::addressTextOf(record.bus, record.device, record.function),
            printable(each.name), printable(record.modelName)));
    }
    return comments;
}

} // namespace

MadeBus makeBus(const Plan& whole, const Catalog& catalog, const RecordedMachine* on,
                const std::string& program, Form form) {
    Plan plan = whole;
    std::erase_if(plan.boxes, [](const PlannedBox& box) { return box.isGone; });
    std::erase_if(plan.endpoints, [](const PlannedEndpoint& each) { return each.isGone; });
    std::vector<std::size_t> anchors;
    for (const PlannedBox& box : plan.boxes)
        anchors.push_back(anchorOf(box, catalog));
    std::vector<MatchedDevice> present;
    if (on != nullptr)
        present = ModelMatcher(recordedBus(on->bus)).match(catalog.descriptions());
    const BuiltMachine built = build(plan, anchors, catalog, on, connectorsOf(present));
    MadeBus made;
    made.isRenumbered = built.isRenumbered;
    made.text = machineText(built.machine, commentsOf(built, catalog, program, Form::dump));
    made.boxes = requireListing(made.text, built, catalog, present);
    if (form == Form::qemuOptions)
        made.text = qemuOptions(built.machine, commentsOf(built, catalog, program, form));
    return made;
}

} // namespace tavctl::mock

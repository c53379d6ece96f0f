#include "tavctl/mock/listing.h"

#include "pcibus/dump.h"
#include "source/modelList.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/mock/matchFaults.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace tavctl::mock {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

std::string slotPathText(std::uint8_t rootBus, const Way& way, const Way& below) {
    nZoPxiDriverTools_1_0::cSlotPath path;
    path.rootBus = rootBus;
    path.hops.assign(below.rbegin(), below.rend());
    path.hops.insert(path.hops.end(), way.rbegin(), way.rend());
    return tavctl::slotPathText(path);
}

bool isSame(const tPortEntry& a, const tPortEntry& b) {
    return a.connectorLabel == b.connectorLabel && a.first == b.first && a.second == b.second &&
           a.third == b.third;
}

// But for the address, which is the anchor's where nothing else is reported.
bool hasSamePorts(const tDeviceRecord& a, const tDeviceRecord& b) {
    return a.modelName == b.modelName && a.deviceCategory == b.deviceCategory &&
           a.linkWidthPerLabel == b.linkWidthPerLabel && a.walkValue == b.walkValue &&
           std::equal(a.ports.begin(), a.ports.end(), b.ports.begin(), b.ports.end(),
                      [](const tPortEntry& x, const tPortEntry& y) { return isSame(x, y); });
}

bool isSame(const tDeviceRecord& a, const tDeviceRecord& b) {
    return a.bus == b.bus && a.device == b.device && a.function == b.function && hasSamePorts(a, b);
}

std::string addressText(const tDeviceRecord& record) {
    return pcibus::addressTextOf(record.bus, record.device, record.function);
}

std::string placeOf(const PlannedBox& plan) {
    return plan.name.isSaid() ? plan.name.place : plan.model.place;
}

// Compares what is listed with what was planned.
class Comparison {
public:
    Comparison(const BuiltMachine& built, const Catalog& catalog,
               const std::vector<MatchedDevice>& present, std::vector<MatchedDevice> listed,
               const MatchFaults& faults)
        : built_(built), catalog_(catalog), present_(present), listed_(std::move(listed)),
          isMeant_(listed_.size(), false), faults_(faults) {}

    // The listed devices in the order of the plan.
    std::vector<MatchedDevice> require() {
        for (const MatchedDevice& each : present_) {
            if (const auto at = find(each.model, each.slotPath))
                isMeant_[*at] = true;
            else
                refuse(each.record.terminalName,
                       "with the boxes added the plug-in does not list it any more");
        }
        const std::vector<PlannedDevice> planned = plannedDevices(built_, catalog_);
        std::vector<MatchedDevice> devices;
        for (std::size_t i = 0; i < planned.size(); ++i) {
            const std::size_t at = require(planned[i], built_.boxes[i]);
            isMeant_[at] = true;
            devices.push_back(listed_[at]);
        }
        for (std::size_t i = 0; i < listed_.size(); ++i) {
            if (!isMeant_[i])
                refuseExtra(listed_[i], planned);
        }
        return devices;
    }

private:
    [[nodiscard]] std::optional<std::size_t> find(std::size_t model,
                                                  const std::string& slotPath) const {
        for (std::size_t i = 0; i < listed_.size(); ++i) {
            if (listed_[i].model == model && listed_[i].slotPath == slotPath)
                return i;
        }
        return std::nullopt;
    }

    [[nodiscard]] std::size_t require(const PlannedDevice& planned, const MadeBox& box) const {
        if (const auto at = find(planned.model, planned.slotPath)) {
            if (isSame(listed_[*at].record, planned.record))
                return *at;
            refuse(placeOf(*box.plan),
                   "the plug-in lists it with other ports than planned, since another box stands "
                   "where its description looks for bridges");
        }
        // Another of its bridges may do for the anchor, which the search came to before.
        for (const auto& [way, part] : box.shape.parts) {
            const auto at = find(planned.model, slotPathText(box.rootBus, box.way, way));
            if (at && !isMeant_[*at] && hasSamePorts(listed_[*at].record, planned.record))
                return *at;
        }
        refuseUnlisted(box);
    }

    [[noreturn]] void refuseUnlisted(const MadeBox& box) const {
        refuseBox(catalog_.models()[box.model], placeOf(*box.plan),
                  fmt::format("the plug-in does not list it: {}",
                              faults_.why(box.model, *box.anchor, box.shape.anchor.back())));
    }

    [[noreturn]] void refuseExtra(const MatchedDevice& extra,
                                  const std::vector<PlannedDevice>& planned) const {
        const std::string& model = extra.record.modelName;
        const auto same = std::find_if(planned.begin(), planned.end(), [&](const auto& each) {
            return each.slotPath == extra.slotPath;
        });
        if (same != planned.end())
            refuse(placeOf(*built_.boxes[static_cast<std::size_t>(same - planned.begin())].plan),
                   fmt::format("same-tree: the box can be taken for this model and for {} ({}) at "
                               "once: it is listed twice then; expected an anchor, or counted "
                               "bridges, that tell the models apart",
                               tavctl::inQuotes(model), catalog_.models()[extra.model].file),
                   "tavctl lint");
        refuse(model, fmt::format("the plug-in would list one at {} too, which nobody planned: "
                                  "bridges of another box are taken for it",
                                  addressText(extra.record)));
    }

    const BuiltMachine& built_;
    const Catalog& catalog_;
    const std::vector<MatchedDevice>& present_;
    std::vector<MatchedDevice> listed_;
    std::vector<bool> isMeant_; // by the plan, or there before
    const MatchFaults& faults_;
};

tDeviceRecord recordOf(const MadeBox& box, const tModelDescription& model) {
    tDeviceRecord record;
    record.modelName = model.model;
    record.deviceCategory = static_cast<std::uint32_t>(model.deviceCategory);
    record.linkWidthPerLabel = static_cast<std::uint32_t>(model.linkWidthPerLabel);
    const Function& at = box.reported != nullptr ? *box.reported : *box.anchor;
    const Way& way = box.reported != nullptr ? *box.shape.reported : box.shape.anchor;
    record.bus = at.bus;
    record.device = pcibus::deviceOfHop(way.back());
    record.function = pcibus::functionOfHop(way.back());
    if (box.upstreamPort != nullptr)
        record.walkValue = box.upstreamPort->bus;
    const bool countsLanes = model.linkWidthPerLabel != 0;
    for (const auto& label : box.widths.labels) {
        const Function& port = *box.ports[label.port];
        record.ports.push_back({label.label, port.secondary,
                                countsLanes ? port.link.maximumWidth : 0U,
                                countsLanes ? port.link.maximumSpeed : 0U});
    }
    return record;
}

} // namespace

std::vector<PlannedDevice> plannedDevices(const BuiltMachine& built, const Catalog& catalog) {
    std::vector<PlannedDevice> planned;
    for (const MadeBox& box : built.boxes)
        planned.push_back({box.name, box.model,
                           slotPathText(box.rootBus, box.way, box.shape.anchor),
                           recordOf(box, catalog.models()[box.model].model)});
    return planned;
}

std::vector<MatchedDevice> requireListing(const std::string& text, const BuiltMachine& built,
                                          const Catalog& catalog,
                                          const std::vector<MatchedDevice>& present) {
    const auto bus = std::make_shared<const pcibus::Bus>(pcibus::parseDump(text, "the made bus"));
    ModelMatcher matcher(recordedBus(bus));
    // On the heap: stacks may be small.
    const auto faults = std::make_unique<MatchFaults>(matcher.wrapper());
    const auto models = std::make_unique<ModelList>(catalog.descriptions());
    matcher.observe(*models, *faults);
    return std::make_unique<Comparison>(built, catalog, present, faults->takeDevices(), *faults)
        ->require();
}

} // namespace tavctl::mock

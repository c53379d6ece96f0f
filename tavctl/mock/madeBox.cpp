#include "tavctl/mock/madeBox.h"

#include "source/descriptionLoader.h"
#include "tavctl/lint/lint.h"
#include "tavctl/mock/wishes.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace tavctl::mock {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using Kind = DescribedBridge::Kind;

constexpr std::uint8_t kSlowest = 1;
// A bridge that the description does not tell of.
constexpr tPciIds kUnknownBridge{0x1B36, 0x000E, 0, 0};

class BoxMaker {
public:
    BoxMaker(const PlannedBox& plan, const Catalog& catalog, std::size_t anchor,
             Functions& functions)
        : plan_(plan), catalog_(catalog), functions_(functions) {
        box_.plan = &plan;
        box_.model = catalog.numberOf(plan.model);
        const BoxModel& model = this->model();
        wishes_ = wishesOf(plan, model, anchor);
        auto shape = shapeOf(model, anchor, wishes_.missing);
        if (!shape)
            refuseBox(model, place(), "a traversal map cannot be read");
        box_.shape = std::move(*shape);
        if (!box_.shape.parts.contains(box_.shape.anchor))
            refuse(place(), "its anchor is among what is missing, so the plug-in does not find it");
        auto widths = widthsOf(model, box_.shape, wishes_);
        if (!widths)
            refuseBox(model, place(), whyNoWidths());
        box_.widths = std::move(*widths);
    }

    MadeBox make() {
        for (const auto& [way, part] : box_.shape.parts)
            addFunction(way, part);
        box_.anchor = &at(box_.shape.anchor);
        if (box_.shape.reported && box_.shape.parts.contains(*box_.shape.reported))
            box_.reported = &at(*box_.shape.reported);
        for (std::size_t i = 0; i < box_.shape.ports.size(); ++i) {
            const auto& port = box_.shape.ports[i];
            box_.ports.push_back(port ? &at(*port) : nullptr);
            if (port)
                setWidth(at(*port), box_.widths.ports[i]);
        }
        if (box_.shape.upstreamPort) {
            box_.upstreamPort = &at(*box_.shape.upstreamPort);
            setWidth(at(*box_.shape.upstreamPort), box_.widths.upstreamPort);
        }
        applyWishes();
        makeConventional();
        return std::move(box_);
    }

private:
    [[nodiscard]] const BoxModel& model() const { return catalog_.models()[box_.model]; }
    [[nodiscard]] const std::string& place() const {
        return plan_.name.isSaid() ? plan_.name.place : plan_.model.place;
    }

    [[nodiscard]] std::string whyNoWidths() const {
        return fmt::format("{} cannot come out even with the ports that are there and their links; "
                           "a port that is missing takes none",
                           counted(model().model.connectorLabels.size(), "label"));
    }

    Function& at(const Way& way) const {
        Functions* functions = &functions_;
        Function* found = nullptr;
        for (const std::uint8_t hop : way) {
            found = functions->at(hop).get();
            functions = &found->below;
        }
        return *found;
    }

    void addFunction(const Way& way, const BoxPart& part) {
        Functions* functions = &functions_;
        for (auto hop = way.begin(); hop + 1 != way.end(); ++hop)
            functions = &functions->at(*hop)->below;
        auto& function = (*functions)[way.back()];
        if (function)
            refuse(plan_.in.isSaid() ? plan_.in.place : place(),
                   "something else stands there already");
        function = std::make_unique<Function>();
        function->headerType = part.isBridge ? 1 : 0;
        function->deviceClass = part.isBridge ? kBridgeClass : kSystemPeripheral;
        function->ids = part.ids ? *part.ids : catalog_.unasked(kUnknownBridge);
        function->link.maximumWidth = box_.widths.upstreamPort;
        function->link.maximumSpeed = kSlowest;
    }

    void setWidth(Function& function, std::uint8_t width) const {
        function.link.maximumWidth = width;
        function.isCounted = model().model.linkWidthPerLabel != 0;
    }

    void apply(const PlannedPort& wish, Function& function) {
        pcibus::Link& link = function.link;
        if (wish.link.maximumWidth != 0)
            link.maximumWidth = wish.link.maximumWidth;
        if (wish.link.maximumSpeed != 0)
            link.maximumSpeed = wish.link.maximumSpeed;
        link.width = wish.link.width;
        link.speed = wish.link.speed;
        function.reserve = wish.reserve;
    }

    void applyWishes() {
        std::size_t port = 0;
        for (std::size_t i = 0; i < box_.shape.described.size(); ++i) {
            const Kind kind = box_.shape.described[i].kind;
            Function* const function = kind == Kind::upstreamPort     ? upstreamPort()
                                       : kind == Kind::downstreamPort ? box_.ports[port++]
                                                                      : nullptr;
            const PlannedPort* const wish = wishes_.bridges[i];
            if (wish == nullptr)
                continue;
            if (function == nullptr)
                refuse(wish->place, fmt::format("[{}] is no port that is there",
                                                box_.shape.described[i].section));
            apply(*wish, *function);
            wished_.push_back(function);
            if (kind == Kind::downstreamPort) {
                function->wishedBus = wish->bus;
                function->wishPlace = wish->place;
            }
        }
        if (wishes_.wayUp != nullptr) {
            for (const auto& [way, part] : box_.shape.parts) {
                if (way.size() == 1)
                    apply(*wishes_.wayUp, at(way));
            }
        }
    }

    Function* upstreamPort() const {
        return box_.shape.upstreamPort ? &at(*box_.shape.upstreamPort) : nullptr;
    }

    // What stands beside a device on one bus within the box is conventional, where nothing goes by
    // its link.
    void makeConventional() {
        if (model().model.linkWidthPerLabel != 0)
            return;
        for (const auto& [way, part] : box_.shape.parts) {
            if (part.isBridge || way.size() < 2)
                continue;
            for (const auto& [hop, function] : at({way.begin(), way.end() - 1}).below) {
                if (std::find(wished_.begin(), wished_.end(), function.get()) == wished_.end())
                    function->hasLink = false;
            }
        }
    }

    const PlannedBox& plan_;
    const Catalog& catalog_;
    Functions& functions_;
    BoxWishes wishes_;
    MadeBox box_;
    std::vector<const Function*> wished_;
};

} // namespace

MadeBox makeBox(const PlannedBox& plan, const Catalog& catalog, std::size_t anchor,
                Functions& functions) {
    return BoxMaker(plan, catalog, anchor, functions).make();
}

void refuseBox(const BoxModel& model, const std::string& place, std::string reason) {
    const lint::Report report = lint::lint({model.file});
    const auto error =
        std::find_if(report.findings.begin(), report.findings.end(), [](const lint::Finding& each) {
            return each.severity == lint::Severity::error;
        });
    if (error != report.findings.end())
        refuse(error->placeText(), fmt::format("{}: {}", error->rule, error->sentence()),
               "tavctl lint");
    refuse(place, std::move(reason));
}

} // namespace tavctl::mock

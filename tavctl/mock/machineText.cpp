#include "tavctl/mock/machineText.h"

#include "pcibus/pciFunction.h"
#include "tavctl/bus/dumpText.h"
#include "tavctl/mock/configBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl::mock {

namespace {

bool leadsDown(LinkRole role) {
    return role == LinkRole::rootPort || role == LinkRole::downstreamPort;
}

// What a bridge is by the one above it; none above it on a root bus.
LinkRole roleOf(const Function& function, const LinkRole* above) {
    if (!function.isBridge())
        return LinkRole::endpoint;
    if (function.isRecorded) {
        switch (function.link.port) {
        case pcibus::PortType::rootPort:
            return LinkRole::rootPort;
        case pcibus::PortType::downstreamPort:
            return LinkRole::downstreamPort;
        case pcibus::PortType::upstreamPort:
            return LinkRole::upstreamPort;
        default:
            return LinkRole::toConventionalBus;
        }
    }
    if (above == nullptr)
        return LinkRole::rootPort;
    if (*above == LinkRole::upstreamPort)
        return LinkRole::downstreamPort;
    const bool leadsToConventional =
        !function.below.empty() &&
        std::none_of(function.below.begin(), function.below.end(),
                     [](const auto& each) { return each.second->hasLink; });
    return leadsToConventional ? LinkRole::toConventionalBus : LinkRole::upstreamPort;
}

std::uint8_t least(std::uint8_t a, std::uint8_t b, std::uint8_t wish) {
    const std::uint8_t able = std::min(a, b);
    return wish != 0 ? std::min(able, wish) : able;
}

// The link between a port and what is behind it. What it is wished to run at stands where it will
// be told.
void bringTogether(Function& port) {
    pcibus::Link& down = port.link;
    Function* end = nullptr;
    for (const auto& [hop, function] : port.below) {
        if (function->hasLink && end == nullptr)
            end = function.get();
    }
    if (end == nullptr) {
        if (!port.isRecorded) {
            down.width = 0;
            down.speed = std::min<std::uint8_t>(1, down.maximumSpeed);
        }
        return;
    }
    if (end->isRecorded)
        return;
    // How a recorded port ran before is no wish.
    const bool isWish = !port.isRecorded;
    const std::uint8_t widthWish = end->link.width == 0 && isWish ? down.width : end->link.width;
    const std::uint8_t speedWish = end->link.speed == 0 && isWish ? down.speed : end->link.speed;
    // Of a port that says nothing of its link, as one that was recorded without capabilities.
    const bool isKnown = down.maximumWidth != 0;
    const pcibus::Link& up = end->link;
    const std::uint8_t width =
        least(isKnown ? down.maximumWidth : up.maximumWidth, up.maximumWidth, widthWish);
    const std::uint8_t speed =
        least(isKnown ? down.maximumSpeed : up.maximumSpeed, up.maximumSpeed, speedWish);
    down.width = width;
    down.speed = speed;
    for (const auto& [hop, function] : port.below) {
        function->link.width = width;
        function->link.speed = speed;
    }
}

void settleLinks(Functions& functions, const LinkRole* above) {
    for (auto& [hop, function] : functions) {
        const LinkRole role = roleOf(*function, above);
        if (function->isBridge() && function->hasLink && leadsDown(role))
            bringTogether(*function);
        if (!function->isRecorded && !leadsDown(role) && (above == nullptr || !leadsDown(*above))) {
            function->link.width = function->link.maximumWidth;
            function->link.speed = function->link.maximumSpeed;
        }
        settleLinks(function->below, &role);
    }
}

// A device that has functions answers at function 0.
void addFirstFunctions(Functions& functions, const nZoTavManagerPciPlugin_15_0::tPciIds& ids) {
    std::vector<std::uint8_t> missing;
    for (auto& [hop, function] : functions) {
        addFirstFunctions(function->below, ids);
        const auto first = static_cast<std::uint8_t>(hop & 0xF8U);
        if (!function->isRecorded && !functions.contains(first))
            missing.push_back(first);
    }
    for (const std::uint8_t hop : missing) {
        if (functions.contains(hop))
            continue;
        auto function = std::make_unique<Function>();
        function->ids = ids;
        function->deviceClass = kSystemPeripheral;
        function->hasLink = false;
        functions.emplace(hop, std::move(function));
    }
}

class TextMaker {
public:
    explicit TextMaker(std::string& text, bool withDomains) : text_(text), domains_(withDomains) {}

    void collect(const Functions& functions, const LinkRole* above) {
        for (const auto& [hop, function] : functions) {
            const LinkRole role = roleOf(*function, above);
            const auto device = static_cast<std::uint8_t>(hop & 0xF8U);
            const auto first = functions.lower_bound(device);
            const auto end = functions.upper_bound(static_cast<std::uint8_t>(device | 7U));
            const bool hasNewLink =
                std::any_of(function->below.begin(), function->below.end(),
                            [](const auto& each) { return !each.second->isRecorded; });
            pcibus::PciFunction at;
            at.bus = function->bus;
            at.device = pcibus::deviceOfHop(hop);
            at.function = pcibus::functionOfHop(hop);
            at.vendorId = function->ids.vendor;
            at.deviceId = function->ids.device;
            functions_.push_back(
                {at, configBytes(*function, role, std::distance(first, end) > 1, hasNewLink)});
            collect(function->below, &role);
        }
    }

    // By address.
    void write() {
        std::sort(functions_.begin(), functions_.end(), [](const Made& a, const Made& b) {
            return a.function.handle() < b.function.handle();
        });
        for (const Made& each : functions_)
            appendDumpFunction(text_,
                               (domains_ ? "0000:" : "") + pcibus::addressText(each.function),
                               each.function, each.bytes);
    }

private:
    struct Made {
        pcibus::PciFunction function;
        std::vector<std::uint8_t> bytes;
    };

    std::string& text_;
    bool domains_;
    std::vector<Made> functions_;
};

} // namespace

void settle(Machine& machine, const nZoTavManagerPciPlugin_15_0::tPciIds& standIn) {
    for (auto& [bus, functions] : machine.roots) {
        addFirstFunctions(functions, standIn);
        settleLinks(functions, nullptr);
    }
}

std::string machineText(const Machine& machine, const std::vector<std::string>& comments) {
    std::string text;
    for (const std::string& comment : comments)
        text += fmt::format("# {}\n", comment);
    text += '\n';
    TextMaker maker(text, !machine.otherDomains.empty());
    for (const auto& [bus, functions] : machine.roots)
        maker.collect(functions, nullptr);
    maker.write();
    for (const std::string& other : machine.otherDomains)
        text += other;
    return text;
}

} // namespace tavctl::mock

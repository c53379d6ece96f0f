#include "tavctl/description/modelShape.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

constexpr const char* kStandInText = "A";

class ShapeWriter {
public:
    template <typename Number>
    void number(Number number) {
        static_assert(std::is_integral_v<Number>);
        char bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        shape_.append(bytes, sizeof bytes);
    }
    void ids(const tPciIds& ids) {
        number(ids.vendor);
        number(ids.device);
        number(ids.subsystemVendor);
        number(ids.subsystem);
    }
    void bridge(const tBridgeDescription& bridge) {
        number(static_cast<std::uint32_t>(bridge.traversalMap.size()));
        shape_ += bridge.traversalMap;
        ids(bridge.ids);
        number(bridge.reportAddressFromThisBridge);
        number(bridge.isOptional);
    }
    void bridges(const std::vector<tBridgeDescription>& all) {
        number(static_cast<std::uint32_t>(all.size()));
        for (const tBridgeDescription& each : all)
            bridge(each);
    }

    std::string take() { return std::move(shape_); }

private:
    std::string shape_;
};

class ShapeReader {
public:
    explicit ShapeReader(std::string_view shape) : rest_(shape) {}

    template <typename Number>
    Number number() {
        Number number{};
        std::memcpy(&number, rest_.data(), sizeof number);
        rest_.remove_prefix(sizeof number);
        return number;
    }
    tPciIds ids() {
        tPciIds ids;
        ids.vendor = number<std::uint16_t>();
        ids.device = number<std::uint16_t>();
        ids.subsystemVendor = number<std::uint16_t>();
        ids.subsystem = number<std::uint16_t>();
        return ids;
    }
    tBridgeDescription bridge() {
        tBridgeDescription bridge;
        const auto length = number<std::uint32_t>();
        bridge.traversalMap = rest_.substr(0, length);
        rest_.remove_prefix(length);
        bridge.ids = ids();
        bridge.reportAddressFromThisBridge = number<bool>();
        bridge.isOptional = number<bool>();
        return bridge;
    }
    std::vector<tBridgeDescription> bridges() {
        std::vector<tBridgeDescription> all(number<std::uint32_t>());
        for (tBridgeDescription& each : all)
            each = bridge();
        return all;
    }

private:
    std::string_view rest_;
};

} // namespace

std::string shapeOf(const tModelDescription& model) {
    ShapeWriter shape;
    shape.number(model.model == kNoText);
    shape.number(model.terminalNameBase == kNoText);
    shape.number(static_cast<std::uint32_t>(model.anchors.size()));
    for (const tAnchorIdentity& anchor : model.anchors) {
        shape.number(anchor.headerType);
        shape.ids(anchor.ids);
    }
    shape.number(static_cast<std::uint32_t>(model.connectorLabels.size()));
    shape.number(model.linkWidthPerLabel);
    shape.bridge(model.upstreamPort);
    shape.bridges(model.downstreamPorts);
    shape.bridges(model.internalBridges);
    return shape.take();
}

tModelDescription modelOfShape(const std::string& shape) {
    ShapeReader reader(shape);
    tModelDescription model;
    model.model = reader.number<bool>() ? kNoText : kStandInText;
    model.terminalNameBase = reader.number<bool>() ? kNoText : kStandInText;
    model.anchors.resize(reader.number<std::uint32_t>());
    for (tAnchorIdentity& anchor : model.anchors) {
        anchor.headerType = reader.number<std::uint32_t>();
        anchor.ids = reader.ids();
    }
    model.connectorLabels.assign(reader.number<std::uint32_t>(), kStandInText);
    model.linkWidthPerLabel = reader.number<std::int32_t>();
    model.upstreamPort = reader.bridge();
    model.downstreamPorts = reader.bridges();
    model.internalBridges = reader.bridges();
    return model;
}

} // namespace tavctl::lint

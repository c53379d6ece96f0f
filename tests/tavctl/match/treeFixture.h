// A small machine with a box that has a port missing and one without a label, as the tests of the
// tree and of the drawing look at it.
#pragma once

#include "pcibus/dump.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/placedDevices.h"
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"

#include <deque>

namespace tavctltest {

// A box on bus 1: an upstream port, connectors A (a card is plugged in) and B1, B2 (both behind one
// port, empty); d3f0 is described and not there, d4f0 has no label left.
struct TreeFixture {
    testsupport::BusBuilder machine;
    testsupport::BusBuilder::Node root = machine.rootPort(0, 4, 0, {0x8086, 0x3420, 0x8086, 0}, 8);
    testsupport::BusBuilder::Node up = machine.bridge(root, 0, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node portA = machine.bridge(up, 1, 0, {0x10B5, 0x8609, 0, 0}, 4, 3);
    testsupport::BusBuilder::Node portB = machine.bridge(up, 2, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node portD = machine.bridge(up, 4, 0, {0x10B5, 0x8609, 0, 0}, 8, 3);
    testsupport::BusBuilder::Node card = machine.endpoint(portA, 0, 0, {0x1172, 0xE001, 1, 2});
    testsupport::BusBuilder::Node other = machine.rootEndpoint(0, 0, 0, {0x8086, 0x29C0, 0, 0});
    testsupport::BusBuilder::Node second = machine.rootPort(0x40, 1, 0, {0x8086, 0x3421, 0, 0}, 1);
    pcibus::Bus bus = pcibus::parseDump(machine.dump(), "machine");

    std::vector<tavctl::ListedDevice> listed{
        {"Box", 12, 1, 0, 0, 1, 4, "TAV1", {{"A", 3, 4, 3}, {"B1", 4, 8, 3}, {"B2", 4, 8, 3}}}};

    // Two labels are the upstream port's. The bridges that are no anchor have its identifiers too
    // and end the model's turn, after the box.
    static nZoTavManagerPciPlugin_15_0::tModelDescription model() {
        using namespace nZoTavManagerPciPlugin_15_0;
        tModelDescription model;
        model.model = "Box";
        model.deviceCategory = eDeviceCategory::SwitchboxTav;
        model.anchors = {{kHeaderTypeBridge, {0x10B5, 0x8609, 0, 0}}};
        model.connectorLabels = {"HOST1", "HOST2", "A", "B1", "B2"};
        model.linkWidthPerLabel = 4;
        model.upstreamPort.traversalMap = "";
        model.upstreamPort.ids = {0x10B5, 0x8609, 0, 0};
        for (const char* map : {"d1f0", "d2f0", "d3f0", "d4f0"}) {
            tBridgeDescription port;
            port.traversalMap = map;
            model.downstreamPorts.push_back(port);
        }
        model.terminalNameBase = "TAV";
        return model;
    }

    // The machine as it is now, as views look at it; good as long as the fixture.
    [[nodiscard]] const tavctl::DomainBus& domain() const {
        const testsupport::FileFolder folder;
        wholes_.push_back(tavctl::readWholeBus(folder.write("machine", machine.dump())));
        return wholes_.back().main();
    }

    // What the plug-in's code finds out.
    [[nodiscard]] tavctl::Survey
    survey(const nZoTavManagerPciPlugin_15_0::tModelDescription& described = model()) const {
        return tavctl::ModelMatcher(tavctl::recordedBus(std::make_shared<const pcibus::Bus>(bus)))
            .match({described});
    }

    [[nodiscard]] std::vector<tavctl::PlacedDevice> placed() const {
        return tavctl::placeDevices(listed, survey(), bus);
    }

private:
    mutable std::deque<tavctl::WholeBus> wholes_;
};

} // namespace tavctltest

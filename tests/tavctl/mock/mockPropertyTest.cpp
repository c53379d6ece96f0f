// Whatever is described and planned: what is made is listed as it was planned, and what is refused
// cannot be listed.
#include "pcibus/dump.h"
#include "tavctl/lint/modelTree.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/mock/mock.h"
#include "tavctl/mock/planFile.h"
#include "tests/support/busBuilder.h"
#include "tests/support/effort.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/mock/randomPlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

using namespace tavctl;
using testtavctl::RandomBox;
using testtavctl::RandomPlan;

struct Outcome {
    std::string difference; // empty: none
    bool isRefused = false;
};

class RandomBuses {
public:
    // Makes one plan, now and then on a machine that is there, and compares what is listed with it.
    Outcome compare(std::uint32_t seed) {
        std::mt19937 random(seed);
        models_.clear();
        const unsigned count = 1 + testtavctl::chance(random, 3);
        std::vector<std::string> files;
        for (unsigned i = 0; i < count; ++i) {
            models_.push_back(testtavctl::randomBox(random, i));
            files.push_back(folder_.write("box" + std::to_string(i) + ".ini", models_.back().text));
        }
        plan_ = testtavctl::randomPlan(random, models_);
        on_ = testtavctl::chance(random, 4) == 0 ? recordedMachine(random) : std::string();
        const mock::Catalog catalog(files);
        mock::MadeBus made;
        try {
            std::optional<mock::RecordedMachine> on;
            if (!on_.empty())
                on = mock::readRecordedMachine(on_);
            made = mock::makeBus(mock::readPlan(plan_.text, "plan").front(), catalog,
                                 on ? &*on : nullptr, "a test");
        } catch (const FailureException& failure) {
            return {plan_.isSound ? std::string("refused: ") + failure.what()
                                  : refusedThoughListed(catalog, failure),
                    true};
        }
        bus_ = std::make_shared<const pcibus::Bus>(pcibus::parseDump(made.text, "made"));
        listed_ = ModelMatcher(recordedBus(bus_)).match(catalog.descriptions());
        if (listed_.size() != plan_.boxes.size())
            return {std::to_string(listed_.size()) + " devices are listed"};
        devices_.clear();
        for (const MatchedDevice& box : made.boxes) {
            const auto device = std::find_if(listed_.begin(), listed_.end(), [&](const auto& each) {
                return each.slotPath == box.slotPath && each.model == box.model;
            });
            if (device == listed_.end())
                return {"nothing is listed at " + box.slotPath};
            devices_.push_back(&*device);
        }
        for (std::size_t i = 0; i < devices_.size(); ++i) {
            if (std::string difference = differenceOf(i); !difference.empty())
                return {"box " + std::to_string(i) + ": " + difference};
        }
        return {};
    }

    // What the seed stood for.
    [[nodiscard]] std::string story() const {
        std::string text = (on_.empty() ? "" : "on a recorded machine\n") + plan_.text;
        for (const RandomBox& model : models_)
            text += "--- " + model.model + (model.isSound ? "\n" : " (not sound)\n") + model.text;
        return text;
    }

private:
    // With root buses 0, 60 and b0, as plans have them that wish for no bus.
    std::string recordedMachine(std::mt19937& random) {
        testsupport::BusBuilder machine;
        const bool hasWish = plan_.text.find("Bus ") != std::string::npos;
        for (const unsigned root : {0U, 0x60U, 0xB0U}) {
            if (root != 0 && hasWish)
                continue;
            machine.rootEndpoint(root, 0, 0, {0x8086, 0x29C0, 0, 0});
            const unsigned ports = testtavctl::chance(random, 3);
            for (unsigned i = 0; i < ports; ++i) {
                const auto port = machine.rootPort(root, 2 + i, 0, {0x8086, 0x1234, 0, 0});
                const auto up = machine.bridge(port, 0, 0, {0x9999, 0x1, 0, 0});
                if (testtavctl::chance(random, 2) == 0)
                    machine.endpoint(machine.bridge(up, 1, 0, {0x9999, 0x2, 0, 0}), 0, 0,
                                     {0x9999, 0x3, 0, 0});
            }
        }
        return folder_.write("machine.dump", machine.dump());
    }

    [[nodiscard]] std::string differenceOf(std::size_t number) const {
        const RandomPlan::Box& planned = plan_.boxes[number];
        const RandomBox& model = models_[planned.model];
        const auto& record = devices_[number]->record;
        if (record.modelName != model.model)
            return "is listed as " + record.modelName;
        if (!model.isSound)
            return {};
        std::vector<std::string> labels;
        for (const auto& port : record.ports)
            labels.push_back(port.connectorLabel);
        const std::vector<std::string> wanted(model.labels.begin() +
                                                  static_cast<std::ptrdiff_t>(model.upstreamLabels),
                                              model.labels.end());
        if (labels != wanted)
            return "has other labels";
        std::size_t entry = 0;
        for (std::size_t port = 0; port < model.ports.size(); ++port) {
            for (unsigned i = 0; i < model.ports[port].labels; ++i, ++entry) {
                if (record.ports[entry].second != model.ports[port].width)
                    return "has a port of another width";
                if (planned.bus && planned.bus->first == port &&
                    record.ports[entry].first != planned.bus->second)
                    return "has a port with another bus";
            }
        }
        char root[8];
        std::snprintf(root, sizeof root, "MR%02X:", planned.rootBus);
        if (!devices_[number]->slotPath.starts_with(root))
            return "is below another root bus";
        return planned.in && !isIn(*devices_[number], *planned.in) ? "is in another connector"
                                                                   : std::string();
    }

    // Whether the way up from an anchor leads through a port.
    [[nodiscard]] bool isIn(const MatchedDevice& device, const RandomPlan::Place& place) const {
        const RandomBox& outer = models_[plan_.boxes[place.box].model];
        std::size_t entry = 0;
        for (std::size_t port = 0; port < place.port; ++port)
            entry += outer.ports[port].labels;
        if (!outer.isSound)
            return true;
        const std::uint32_t wanted = devices_[place.box]->record.ports[entry].first;
        for (std::uint8_t bus = device.address.bus; bus != wanted;) {
            const pcibus::PciFunction* const above = bus_->parentOfBus(bus);
            if (above == nullptr)
                return false;
            bus = above->bus;
        }
        return true;
    }

    // Of one box alone: whether another way to make a bus has it listed.
    [[nodiscard]] std::string refusedThoughListed(const mock::Catalog& catalog,
                                                  const FailureException& failure) const {
        if (plan_.boxes.size() != 1 || !on_.empty() ||
            plan_.text.find("Missing") != std::string::npos ||
            plan_.text.find("Link") != std::string::npos)
            return {};
        const auto& model = catalog.descriptions().front();
        for (std::size_t anchor = 0; anchor < model.anchors.size(); ++anchor) {
            const lint::tModelDescription* const one[] = {&model};
            const auto bus = lint::busOf(one, anchor, true);
            if (bus != nullptr && ModelMatcher(recordedBus(bus)).match({model}).size() == 1)
                return std::string("refused though it can be listed: ") + failure.what();
        }
        return {};
    }

    testsupport::FileFolder folder_;
    std::vector<RandomBox> models_;
    RandomPlan plan_;
    std::string on_; // a recorded machine; empty: none
    std::shared_ptr<const pcibus::Bus> bus_;
    std::vector<MatchedDevice> listed_;
    std::vector<const MatchedDevice*> devices_; // in the order of the plan
};

TEST(MockProperty, WhatIsPlannedIsListed) {
    const auto buses = std::make_unique<RandomBuses>();
    const std::uint64_t count = testsupport::effort(1000, 100000);
    std::uint64_t refused = 0;
    for (std::uint32_t seed = 1; seed <= count; ++seed) {
        const Outcome outcome = buses->compare(seed);
        ASSERT_EQ(outcome.difference, "") << "seed " << seed << "\n" << buses->story();
        refused += outcome.isRefused ? 1U : 0U;
    }
    EXPECT_LT(refused, count / 2);
    EXPECT_GT(refused, 0U);
    testsupport::figure(count, "random plans were made or refused without a difference");
    testsupport::figure(refused, "of them were refused");
}

} // namespace

#include "tests/tavctl/mock/randomPlan.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace testtavctl {

namespace {

std::string hexadecimalBus(unsigned number) {
    char text[8];
    std::snprintf(text, sizeof text, "%02x", number);
    return text;
}

class PlanWriter {
public:
    PlanWriter(std::mt19937& random, const std::vector<RandomBox>& models)
        : random_(random), models_(models), hasOneRoot_(chance(random, 2) == 0) {}

    RandomPlan write() {
        for (std::size_t model = 0; model < models_.size(); ++model) {
            addBox(model);
            if (chance(random_, 4) == 0)
                addBox(model);
        }
        return std::move(plan_);
    }

private:
    void addBox(std::size_t number) {
        const RandomBox& model = models_[number];
        RandomPlan::Box box;
        box.model = number;
        plan_.isSound = plan_.isSound && model.isSound;
        const std::size_t self = plan_.boxes.size();
        plan_.text += "[Box B" + std::to_string(self) + "]\nModel = " + model.model + "\n";
        const auto places = freePlaces();
        if (!places.empty() && chance(random_, 2) == 0) {
            box.in = places[chance(random_, static_cast<unsigned>(places.size()))];
            used_.insert({box.in->box, box.in->port});
            plan_.text += "In = B" + std::to_string(box.in->box) + ":" + labelOf(*box.in) + "\n";
            box.rootBus = plan_.boxes[box.in->box].rootBus;
        } else if (!hasOneRoot_ && chance(random_, 2) == 0) {
            box.rootBus = 0x60 + 0x50 * chance(random_, 2);
            plan_.text += "In = root " + hexadecimalBus(box.rootBus) + "\n";
        }
        writeWishes(box);
        plan_.boxes.push_back(box);
    }

    void writeWishes(RandomPlan::Box& box) {
        const RandomBox& model = models_[box.model];
        std::string missing;
        if (model.countsLanes && model.hasUpstream)
            plan_.text += "Link = x" + std::to_string(model.upstreamWidth) + "\n";
        for (std::size_t i = 0; i < model.ports.size(); ++i) {
            const RandomPort& port = model.ports[i];
            if (port.isMissing) {
                missing.append(missing.empty() ? "" : ",").append(port.section);
                continue;
            }
            if (model.countsLanes)
                plan_.text += "Link " + port.section + " = x" + std::to_string(port.width) + "\n";
            if (chance(random_, 8) == 0)
                plan_.text += "Reserve " + port.section + " = " +
                              std::to_string(1 + chance(random_, 3)) + "\n";
            if (!hasWish_ && chance(random_, 6) == 0 && hasOneRoot_ && port.labels != 0) {
                hasWish_ = true;
                box.bus = {i, 0x80};
                plan_.text += "Bus " + port.section + " = 80\n";
            }
        }
        if (!missing.empty())
            plan_.text += "Missing = " + missing + "\n";
    }

    // Connectors of boxes so far that nothing is in, and nothing described below.
    std::vector<RandomPlan::Place> freePlaces() {
        std::vector<RandomPlan::Place> places;
        for (std::size_t box = 0; box < plan_.boxes.size(); ++box) {
            const RandomBox& model = models_[plan_.boxes[box].model];
            for (std::size_t port = 0; port < model.ports.size(); ++port) {
                if (model.ports[port].labels != 0 && !model.ports[port].isAbove &&
                    !used_.contains({box, port}))
                    places.push_back({box, port});
            }
        }
        return places;
    }

    // The first label of the port.
    [[nodiscard]] std::string labelOf(const RandomPlan::Place& place) const {
        const RandomBox& model = models_[plan_.boxes[place.box].model];
        std::size_t label = model.upstreamLabels;
        for (std::size_t i = 0; i < place.port; ++i)
            label += model.ports[i].labels;
        return label < model.labels.size() ? model.labels[label] : "none";
    }

    std::mt19937& random_;
    const std::vector<RandomBox>& models_;
    RandomPlan plan_;
    std::set<std::pair<std::size_t, std::size_t>> used_;
    bool hasOneRoot_; // so that a bus may be wished for
    bool hasWish_ = false;
};

} // namespace

RandomPlan randomPlan(std::mt19937& random, const std::vector<RandomBox>& models) {
    return PlanWriter(random, models).write();
}

} // namespace testtavctl

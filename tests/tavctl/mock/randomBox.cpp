#include "tests/tavctl/mock/randomBox.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <sstream>

namespace testtavctl {

namespace {

std::string idLinesOf(unsigned vendor, unsigned device, unsigned subsystem) {
    char text[80];
    std::snprintf(text, sizeof text, "Vid = %04X\nPid = %04X\nSsVid = %04X\nSsPid = %04X\n", vendor,
                  device, subsystem == 0 ? 0U : 0x1AF4U, subsystem);
    return text;
}

std::string quotedIfEmpty(const std::string& text) {
    return text.empty() ? "\"\"" : text;
}

std::string joinedList(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items)
        list.append(list.empty() ? "" : ",").append(item);
    return quotedIfEmpty(list);
}

class BoxWriter {
public:
    BoxWriter(std::mt19937& random, unsigned number)
        : random_(random), vendor_(0x2000 + number), lapse_(chance(random, 5) == 0) {
        box_.model = "Box " + std::to_string(number);
        box_.isSound = !lapse_;
        if (lapse_)
            vendor_ = 0x3000 + chance(random, 2);
    }

    RandomBox write() {
        chooseKind();
        choosePorts();
        chooseLabels();
        writeModel();
        writeAnchors();
        writeBridges();
        box_.text = text_.str();
        return box_;
    }

private:
    enum class Kind { upstreamAnchor, innerAnchor, portAnchor, deviceAnchor };

    unsigned below(unsigned outOf) { return chance(random_, outOf); }
    // Something that makes the box unsound, now and then.
    bool lapses(unsigned outOf) { return lapse_ && below(outOf) == 0; }

    void chooseKind() {
        kind_ = static_cast<Kind>(below(4));
        alternates_ = kind_ != Kind::deviceAnchor && below(5) == 0 ? 1 + below(2) : 0;
        box_.countsLanes = below(3) == 0;
        perLabel_ = box_.countsLanes ? 1U << below(4) : 0;
        // What leads from the anchor to the bridge above the ports.
        if (kind_ == Kind::innerAnchor)
            base_ = "d1f0";
        else if (kind_ == Kind::portAnchor || kind_ == Kind::deviceAnchor)
            base_ = "-";
        box_.hasUpstream = kind_ == Kind::upstreamAnchor || below(2) == 0;
    }

    [[nodiscard]] std::string mapTo(const std::string& step) const {
        return base_.empty() ? step : step.empty() ? base_ : base_ + "," + step;
    }

    void choosePorts() {
        std::set<std::string> steps;
        const unsigned count = below(6);
        for (unsigned i = 0; i < count; ++i) {
            std::string step =
                "d" + std::to_string(below(8)) + "f" + std::to_string(below(4) == 0 ? below(8) : 0);
            if (below(8) == 0)
                step += ",d" + std::to_string(below(3)) + "f0";
            if (!steps.insert(step).second && !lapses(2))
                continue;
            RandomPort port;
            port.section = "DownstreamPort" + std::to_string(i);
            box_.ports.push_back(port);
            steps_.push_back(step);
            // Of the anchor's own identifiers, which are counted then; of its own ones.
            isAnchors_.push_back(below(3) == 0);
            isOptional_.push_back(lapses(3) || (!isAnchors_.back() && below(5) == 0));
            box_.ports.back().isMissing = !isAnchors_.back() && below(6) == 0;
        }
        // What stands below a bridge that is missing is missing too.
        for (std::size_t i = 0; i < steps_.size(); ++i) {
            for (std::size_t j = 0; j < steps_.size(); ++j) {
                if (!steps_[i].starts_with(steps_[j] + ","))
                    continue;
                box_.ports[j].isMissing = false;
                box_.ports[j].isAbove = true;
            }
        }
    }

    void chooseLabels() {
        constexpr unsigned kWidthsOfLinks[] = {1, 2, 4, 8, 16, 32};
        const auto take = [&](unsigned& width, const std::string& stem) {
            unsigned count = 1;
            if (box_.countsLanes) {
                width = kWidthsOfLinks[below(6)];
                count = width / perLabel_;
            }
            for (unsigned i = 0; i < count; ++i)
                box_.labels.push_back(stem + std::to_string(i + 1));
            return count;
        };
        if (box_.hasUpstream)
            box_.upstreamLabels = take(box_.upstreamWidth, "HOST");
        for (std::size_t i = 0; i < box_.ports.size(); ++i) {
            if (!box_.ports[i].isMissing)
                box_.ports[i].labels = take(box_.ports[i].width, "P" + std::to_string(i) + ".");
        }
        if (lapses(3))
            box_.labels.emplace_back("MORE");
        if (lapses(3) && !box_.labels.empty())
            box_.labels.pop_back();
    }

    void writeModel() {
        std::vector<std::string> ports;
        for (const RandomPort& port : box_.ports)
            ports.push_back(port.section.substr(std::string("DownstreamPort").size()));
        // The anchor stands for itself unless the upstream port does.
        describesSelf_ = kind_ != Kind::deviceAnchor &&
                         !(kind_ == Kind::upstreamAnchor && box_.hasUpstream && alternates_ == 0);
        if (lapses(6))
            describesSelf_ = !describesSelf_;
        std::vector<std::string> internal;
        if (describesSelf_)
            internal.emplace_back("Self");
        hasTop_ = kind_ == Kind::deviceAnchor && below(2) == 0;
        if (hasTop_)
            internal.emplace_back("Top");
        text_ << "[UpstreamTAV]\nModel = " << box_.model
              << "\nDeviceCategory = SwitchboxTav\nInternalBridges = " << joinedList(internal)
              << "\nConnectorLabels = " << joinedList(box_.labels)
              << "\nDownstreamPorts = " << joinedList(ports)
              << "\nHasUpstreamPort = " << (box_.hasUpstream ? 1 : 0) << "\n";
        if (box_.countsLanes)
            text_ << "LinkWidthPerLabel = " << perLabel_ << "\n";
    }

    void writeAnchors() {
        const unsigned type = kind_ == Kind::deviceAnchor ? 0 : 1;
        text_ << "[Anchor]\nPciHeaderType = " << type << "\n" << idLinesOf(vendor_, 0x10, below(2));
        std::vector<std::string> names;
        for (unsigned i = 0; i < alternates_; ++i)
            names.push_back(std::to_string(i));
        if (!names.empty())
            text_ << "AlternateAnchors = " << joinedList(names) << "\n";
        for (unsigned i = 0; i < alternates_; ++i)
            text_ << "[AlternateAnchor" << i << "]\nPciHeaderType = 1\n"
                  << idLinesOf(vendor_, 0x11 + (lapses(3) ? 0 : i), 0);
    }

    void writeBridge(const std::string& section, const std::string& map, bool isAnchors,
                     unsigned device, bool isOptional, bool mayReport) {
        text_ << "[" << section << "]\nTraversalMapFromAnchor = " << quotedIfEmpty(map) << "\n";
        if (isAnchors)
            text_ << "IDsSameAs = Anchor\n";
        else
            text_ << idLinesOf(vendor_, device, below(2));
        if (isOptional)
            text_ << "IsOptional = 1\n";
        if (mayReport && below(6) == 0)
            text_ << "ReportAddressFromThisBridge = 1\n";
    }

    void writeBridges() {
        const bool isSelf = kind_ == Kind::upstreamAnchor;
        // With alternate anchors the upstream port keeps its own identifiers, so it is left out of
        // the search.
        if (box_.hasUpstream)
            writeBridge("UpstreamPort",
                        isSelf                       ? ""
                        : kind_ == Kind::innerAnchor ? "-"
                                                     : base_,
                        isSelf, 0x20, alternates_ != 0, true);
        if (describesSelf_)
            writeBridge("InternalBridgeSelf", "", true, 0x10, false, true);
        if (hasTop_)
            writeBridge("InternalBridgeTop", "-,-", false, 0x21, false, true);
        for (std::size_t i = 0; i < box_.ports.size(); ++i) {
            const bool isAnchors = isAnchors_[i] && kind_ != Kind::deviceAnchor;
            // With alternate anchors what is not optional has the anchor's.
            const bool isOptional =
                isOptional_[i] || (alternates_ != 0 && !isAnchors && !lapses(3));
            std::string map = mapTo(steps_[i]);
            if (lapses(12))
                map = "d1";
            writeBridge(box_.ports[i].section, map, isAnchors, 0x30 + below(3), isOptional,
                        !box_.ports[i].isMissing);
        }
    }

    std::mt19937& random_;
    unsigned vendor_;
    bool lapse_;
    RandomBox box_;
    std::ostringstream text_;
    Kind kind_ = Kind::upstreamAnchor;
    unsigned alternates_ = 0;
    unsigned perLabel_ = 0;
    std::string base_;
    bool describesSelf_ = false;
    bool hasTop_ = false;
    std::vector<std::string> steps_;
    std::vector<bool> isAnchors_;
    std::vector<bool> isOptional_;
};

} // namespace

RandomBox randomBox(std::mt19937& random, unsigned number) {
    return BoxWriter(random, number).write();
}

} // namespace testtavctl

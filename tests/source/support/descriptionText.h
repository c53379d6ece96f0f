// The text of a description file, section by section, to be changed at one place for one test.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace testsupport {

class DescriptionText {
public:
    struct Key {
        std::string section;
        std::string key;
        std::string value;
    };

    // Writes `value` as it stands; a new key goes behind those that are there.
    DescriptionText& set(const std::string& section, const std::string& key,
                         const std::string& value) {
        if (const auto found = find(section, key); found != keys_.end())
            found->value = value;
        else
            keys_.push_back({section, key, value});
        return *this;
    }
    DescriptionText& setIds(const std::string& section, const std::string& vendor,
                            const std::string& device, const std::string& subsystemVendor,
                            const std::string& subsystem) {
        return set(section, "Vid", vendor)
            .set(section, "Pid", device)
            .set(section, "SsVid", subsystemVendor)
            .set(section, "SsPid", subsystem);
    }
    DescriptionText& remove(const std::string& section, const std::string& key) {
        const auto found = find(section, key);
        if (found == keys_.end())
            throw std::logic_error("no key " + section + "." + key);
        keys_.erase(found);
        return *this;
    }
    DescriptionText& removeSection(const std::string& section) {
        if (std::erase_if(keys_, [&](const Key& key) { return key.section == section; }) == 0)
            throw std::logic_error("no section " + section);
        return *this;
    }

    [[nodiscard]] const std::vector<Key>& keys() const { return keys_; }

    [[nodiscard]] std::string text() const {
        std::string result;
        std::string section;
        for (const Key& key : keys_) {
            if (key.section != section)
                result += "[" + (section = key.section) + "]\n";
            result.append(key.key).append("=").append(key.value).append("\n");
        }
        return result;
    }

private:
    std::vector<Key>::iterator find(const std::string& section, const std::string& key) {
        return std::find_if(keys_.begin(), keys_.end(), [&](const Key& candidate) {
            return candidate.section == section && candidate.key == key;
        });
    }

    std::vector<Key> keys_;
};

// The smallest description that loads: no bridges at all.
inline DescriptionText smallestDescription(const std::string& model = "Small") {
    return DescriptionText()
        .set("UpstreamTAV", "Model", model)
        .set("UpstreamTAV", "DeviceCategory", "PCI")
        .set("UpstreamTAV", "InternalBridges", "\"\"")
        .set("UpstreamTAV", "ConnectorLabels", "\"\"")
        .set("UpstreamTAV", "DownstreamPorts", "\"\"")
        .set("UpstreamTAV", "HasUpstreamPort", "0")
        .set("Anchor", "PciHeaderType", "1")
        .setIds("Anchor", "1", "2", "3", "4");
}

// One that uses everything: an alternate anchor, two internal bridges (the first without, the
// second with the optional keys), a downstream port with the anchor's identifiers, an upstream
// port.
inline DescriptionText fullDescription(const std::string& model = "Model 1") {
    return DescriptionText()
        .set("UpstreamTAV", "Model", model)
        .set("UpstreamTAV", "DeviceCategory", "SwitchboxTav")
        .set("UpstreamTAV", "InternalBridges", "First,Second")
        .set("UpstreamTAV", "ConnectorLabels", "A,B")
        .set("UpstreamTAV", "LinkWidthPerLabel", "4")
        .set("UpstreamTAV", "DownstreamPorts", "1")
        .set("UpstreamTAV", "HasUpstreamPort", "1")
        .set("UpstreamTAV", "TerminalNameBase", "BOX")
        .set("Anchor", "AlternateAnchors", "2")
        .set("Anchor", "PciHeaderType", "1")
        .setIds("Anchor", "1A01", "1A02", "1A03", "1A04")
        .set("AlternateAnchor2", "PciHeaderType", "0")
        .setIds("AlternateAnchor2", "2A01", "2A02", "2A03", "2A04")
        .setIds("InternalBridgeFirst", "1B01", "1B02", "1B03", "1B04")
        .set("InternalBridgeFirst", "TraversalMapFromAnchor", "\"\"")
        .setIds("InternalBridgeSecond", "2B01", "2B02", "2B03", "2B04")
        .set("InternalBridgeSecond", "TraversalMapFromAnchor", "d1f0")
        .set("InternalBridgeSecond", "ReportAddressFromThisBridge", "1")
        .set("InternalBridgeSecond", "IsOptional", "1")
        .set("DownstreamPort1", "IDsSameAs", "Anchor")
        .set("DownstreamPort1", "TraversalMapFromAnchor", "d1f0,d2f0")
        .set("DownstreamPort1", "IsOptional", "1")
        .setIds("UpstreamPort", "1C01", "1C02", "1C03", "1C04")
        .set("UpstreamPort", "TraversalMapFromAnchor", "-")
        .set("UpstreamPort", "ReportAddressFromThisBridge", "1");
}

} // namespace testsupport

// Reads one hardware description file into a model description, key by key in a fixed order; the
// first key that cannot be read raises and ends the load.
#pragma once

#include "source/modelDescription.h"
#include "source/tavStatus.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

// The category that a value of "DeviceCategory" names, by the exact text. Raises
// kTavManErrSoftwareFault for any other.
eDeviceCategory deviceCategoryFromText(const std::string& text);

// The file format's sections and keys.
namespace nDescription {
inline constexpr const char* kSectionModel = "UpstreamTAV";
inline constexpr const char* kSectionAnchor = "Anchor";
inline constexpr const char* kSectionUpstreamPort = "UpstreamPort";
// The sections of listed items: the prefix, then the item's name.
inline constexpr const char* kPrefixAlternateAnchor = "AlternateAnchor";
inline constexpr const char* kPrefixInternalBridge = "InternalBridge";
inline constexpr const char* kPrefixDownstreamPort = "DownstreamPort";

inline constexpr const char* kModel = "Model";
inline constexpr const char* kDeviceCategory = "DeviceCategory";
inline constexpr const char* kInternalBridges = "InternalBridges";
inline constexpr const char* kConnectorLabels = "ConnectorLabels";
inline constexpr const char* kLinkWidthPerLabel = "LinkWidthPerLabel";
inline constexpr const char* kDownstreamPorts = "DownstreamPorts";
inline constexpr const char* kHasUpstreamPort = "HasUpstreamPort";
inline constexpr const char* kTerminalNameBase = "TerminalNameBase";
inline constexpr const char* kAlternateAnchors = "AlternateAnchors";
inline constexpr const char* kPciHeaderType = "PciHeaderType";
inline constexpr const char* kIDsSameAs = "IDsSameAs";
inline constexpr const char* kVid = "Vid";
inline constexpr const char* kPid = "Pid";
inline constexpr const char* kSsVid = "SsVid";
inline constexpr const char* kSsPid = "SsPid";
inline constexpr const char* kTraversalMapFromAnchor = "TraversalMapFromAnchor";
inline constexpr const char* kReportAddressFromThisBridge = "ReportAddressFromThisBridge";
inline constexpr const char* kIsOptional = "IsOptional";

inline constexpr const char* kDefaultTerminalNameBase = "TAV";

// The source file that error records of the model database and its loader name.
inline constexpr const char* kRecordedFile = "source\\cPciModelInfoDb";
} // namespace nDescription

// `tIniFile` is an INI file class with the operations of iIniFile. Raises zoerr::Exception with the
// status of the INI file class, or kTavManErrSoftwareFault for an unknown category and for a
// missing "HasUpstreamPort"; std::bad_alloc.
template <typename tIniFile>
class DescriptionLoader {
public:
    explicit DescriptionLoader(tIniFile& file) : file_(file) {}

    tModelDescription load(const std::string& path) {
        using namespace nDescription;
        read([&](auto& status) { file_.open(path.c_str(), 0, status); });
        tModelDescription model;
        model.model = text(kSectionModel, kModel);
        model.deviceCategory = deviceCategoryFromText(text(kSectionModel, kDeviceCategory));
        const Names internalBridges = list(kSectionModel, kInternalBridges);
        model.connectorLabels = list(kSectionModel, kConnectorLabels);
        if (has(kSectionModel, kLinkWidthPerLabel))
            model.linkWidthPerLabel = decimal(kSectionModel, kLinkWidthPerLabel);
        const Names downstreamPorts = list(kSectionModel, kDownstreamPorts);
        const bool hasUpstreamPort = requiredBoolean(kSectionModel, kHasUpstreamPort);
        model.anchors = anchors();
        model.internalBridges = bridges(kPrefixInternalBridge, internalBridges, model.anchors);
        model.downstreamPorts = bridges(kPrefixDownstreamPort, downstreamPorts, model.anchors);
        if (hasUpstreamPort)
            model.upstreamPort = bridge(kSectionUpstreamPort);
        model.terminalNameBase = has(kSectionModel, kTerminalNameBase)
                                     ? text(kSectionModel, kTerminalNameBase)
                                     : kDefaultTerminalNameBase;
        return model;
    }

private:
    using Names = std::list<std::string>;

    // Runs one operation on the file and raises what it reports.
    template <typename Operation>
    void read(Operation operation) {
        nZOQUIL000::tFixedStatus status;
        operation(status);
        zoerr::raiseIfFailed(status);
    }

    bool has(const std::string& section, const char* key) {
        bool result = false;
        read([&](auto& status) { result = file_.hasKey(section, key, status); });
        return result;
    }

    std::string text(const std::string& section, const char* key) {
        std::string value;
        read([&](auto& status) { file_.getString(section, key, value, status); });
        return value;
    }

    Names list(const std::string& section, const char* key) {
        Names values;
        read([&](auto& status) { file_.getStringList(section, key, values, status); });
        return values;
    }

    std::int32_t decimal(const std::string& section, const char* key) {
        std::int32_t value = 0;
        read([&](auto& status) { file_.getSigned32(section, key, value, status); });
        return value;
    }

    std::uint32_t hexadecimal(const std::string& section, const char* key) {
        std::uint32_t value = 0;
        read([&](auto& status) { file_.getHexadecimal(section, key, value, status); });
        return value;
    }

    bool requiredBoolean(const std::string& section, const char* key) {
        if (!has(section, key))
            raiseSoftwareFault(nDescription::kRecordedFile);
        return decimal(section, key) != 0;
    }

    bool optionalBoolean(const std::string& section, const char* key) {
        return has(section, key) && decimal(section, key) != 0;
    }

    // Identifiers are 16 bits wide; a larger value keeps its low ones.
    std::uint16_t identifier(const std::string& section, const char* key) {
        return static_cast<std::uint16_t>(hexadecimal(section, key));
    }

    tPciIds ids(const std::string& section) {
        using namespace nDescription;
        const std::string from = has(section, kIDsSameAs) ? text(section, kIDsSameAs) : section;
        tPciIds result;
        result.vendor = identifier(from, kVid);
        result.device = identifier(from, kPid);
        result.subsystemVendor = identifier(from, kSsVid);
        result.subsystem = identifier(from, kSsPid);
        return result;
    }

    tAnchorIdentity anchor(const std::string& section) {
        tAnchorIdentity result;
        result.headerType = hexadecimal(section, nDescription::kPciHeaderType);
        result.ids = ids(section);
        return result;
    }

    std::vector<tAnchorIdentity> anchors() {
        using namespace nDescription;
        const Names alternates = has(kSectionAnchor, kAlternateAnchors)
                                     ? list(kSectionAnchor, kAlternateAnchors)
                                     : Names();
        std::vector<tAnchorIdentity> result{anchor(kSectionAnchor)};
        for (const std::string& name : alternates)
            result.push_back(anchor(kPrefixAlternateAnchor + name));
        return result;
    }

    tBridgeDescription bridge(const std::string& section) {
        using namespace nDescription;
        tBridgeDescription result;
        result.ids = ids(section);
        result.traversalMap = text(section, kTraversalMapFromAnchor);
        result.reportAddressFromThisBridge = optionalBoolean(section, kReportAddressFromThisBridge);
        result.isOptional = optionalBoolean(section, kIsOptional);
        return result;
    }

    // A model with alternate anchors describes its bridges once per anchor: each copy carries that
    // anchor's identifiers, so that the anchor search can tell whose copy it is.
    std::vector<tBridgeDescription> bridges(const char* prefix, const Names& names,
                                            const std::vector<tAnchorIdentity>& anchors) {
        std::vector<tBridgeDescription> result;
        for (const tAnchorIdentity& anchor : anchors) {
            for (const std::string& name : names) {
                result.push_back(bridge(prefix + name));
                if (anchors.size() > 1)
                    result.back().ids = anchor.ids;
            }
        }
        return result;
    }

    tIniFile& file_;
};

} // namespace nZoTavManagerPciPlugin_15_0

// Any bytes as a hardware description file. It loads, or is refused with a status that the format
// documents and a record of where; a model that loads has as many anchors and bridges as the file
// lists, with the identifiers that the file gives them, and a second load gives the same model.
#include "fuzz/expect.h"
#include "fuzz/memoryFiles.h"
#include "pxidrivertools/cIniFile.h"
#include "source/descriptionLoader.h"
#include "source/modelList.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

bool operator==(const tBridgeDescription& a, const tBridgeDescription& b) {
    return std::tie(a.traversalMap, a.ids, a.reportAddressFromThisBridge, a.isOptional) ==
           std::tie(b.traversalMap, b.ids, b.reportAddressFromThisBridge, b.isOptional);
}
bool operator==(const tAnchorIdentity& a, const tAnchorIdentity& b) {
    return a.headerType == b.headerType && a.ids == b.ids;
}
bool operator==(const tModelDescription& a, const tModelDescription& b) {
    return std::tie(a.model, a.deviceCategory, a.anchors, a.connectorLabels, a.linkWidthPerLabel,
                    a.upstreamPort, a.downstreamPorts, a.internalBridges, a.terminalNameBase) ==
           std::tie(b.model, b.deviceCategory, b.anchors, b.connectorLabels, b.linkWidthPerLabel,
                    b.upstreamPort, b.downstreamPorts, b.internalBridges, b.terminalNameBase);
}

} // namespace nZoTavManagerPciPlugin_15_0

namespace {

using fuzz::expect;
using fuzz::MemoryFiles;
using namespace nZoTavManagerPciPlugin_15_0;
using nZoPxiDriverTools_1_0::cIniFile;
using nZoPxiDriverTools_1_0::IniFileServices;
using nZoPxiDriverTools_1_0::systemIniMemory;

// What the file says of a key by the rules of the INI file class, which has a fuzzer of its own.
class Asked {
public:
    explicit Asked(cIniFile& file) : file_(file) {}

    std::size_t listed(const std::string& section, const char* key) {
        std::list<std::string> items;
        nZOQUIL000::tFixedStatus status;
        file_.getStringList(section, key, items, status);
        return items.size();
    }
    std::string text(const std::string& section, const char* key) {
        std::string value;
        nZOQUIL000::tFixedStatus status;
        file_.getString(section, key, value, status);
        expect(status.code == 0, "what the model has is in the file");
        return value;
    }
    bool has(const std::string& section, const char* key) {
        nZOQUIL000::tFixedStatus status;
        return file_.hasKey(section, key, status);
    }

private:
    cIniFile& file_;
};

std::optional<tModelDescription> load(cIniFile& file) {
    try {
        return DescriptionLoader(file).load("a name");
    } catch (const zoerr::Exception& exception) {
        using namespace nZoPxiDriverTools_1_0;
        constexpr std::int32_t kDocumented[] = {kTavManErrSoftwareFault, kIniFileErrCannotOpen,
                                                kIniFileErrNotOpen,      kIniFileErrBadNumber,
                                                kIniFileErrNoKey,        kIniFileErrBadForm};
        expect(std::find(std::begin(kDocumented), std::end(kDocumented), exception.status().code) !=
                   std::end(kDocumented),
               "the status is documented");
        expect(std::string_view(exception.text()).starts_with("{\""), "the status has a record");
        return std::nullopt;
    }
}

void expectBridges(const std::vector<tBridgeDescription>& bridges, std::size_t listed,
                   const tModelDescription& model) {
    expect(bridges.size() == listed * model.anchors.size(), "each listed bridge, once an anchor");
    if (model.anchors.size() > 1)
        for (std::size_t i = 0; i < bridges.size(); ++i)
            expect(bridges[i].ids == model.anchors[i / listed].ids,
                   "with alternate anchors a bridge has its anchor's identifiers");
}

void expectModel(const tModelDescription& model, Asked asked) {
    using namespace nDescription;
    expect(model.model == asked.text(kSectionModel, kModel), "the model's name is the file's");
    expect(deviceCategoryFromText(asked.text(kSectionModel, kDeviceCategory)) ==
               model.deviceCategory,
           "the category is the file's");
    const auto category = static_cast<std::uint32_t>(model.deviceCategory);
    expect(category >= 10 && category <= 12, "the category is one of three");
    expect(model.connectorLabels.size() == asked.listed(kSectionModel, kConnectorLabels),
           "the labels are the file's");
    expect(model.anchors.size() == 1 + (asked.has(kSectionAnchor, kAlternateAnchors)
                                            ? asked.listed(kSectionAnchor, kAlternateAnchors)
                                            : 0),
           "one anchor, and the alternates");
    expectBridges(model.internalBridges, asked.listed(kSectionModel, kInternalBridges), model);
    expectBridges(model.downstreamPorts, asked.listed(kSectionModel, kDownstreamPorts), model);
    expect(model.terminalNameBase == (asked.has(kSectionModel, kTerminalNameBase)
                                          ? asked.text(kSectionModel, kTerminalNameBase)
                                          : kDefaultTerminalNameBase),
           "the base of the names is the file's, or the usual one");
    if (!asked.has(kSectionModel, kLinkWidthPerLabel))
        expect(model.linkWidthPerLabel == 0, "without a link width there is none");
    if (!asked.has(kSectionUpstreamPort, kTraversalMapFromAnchor))
        expect(model.upstreamPort.traversalMap == kNoText,
               "without an upstream port there is none");
}

void expectQueries(const tModelDescription& model) {
    const ModelList models({model});
    std::vector<tBridgeDescription> all;
    models.GetAllBridges(0, all);
    const bool hasUpstreamPort = model.upstreamPort.traversalMap != kNoText;
    expect(all.size() == model.downstreamPorts.size() + model.internalBridges.size() +
                             (hasUpstreamPort ? 1 : 0),
           "all bridges are ports, internal ones and the upstream port");
    expect(models.HasLinkWidthPerLabel(0) == (model.linkWidthPerLabel != 0),
           "a link width of 0 is none");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    MemoryFiles files;
    files.content.assign(reinterpret_cast<const char*>(data), size);
    cIniFile file(IniFileServices{systemIniMemory(), &files});
    const auto model = load(file);
    if (!model)
        return 0;
    expectModel(*model, Asked(file));
    expectQueries(*model);
    const auto again = load(file);
    expect(again && *again == *model, "a second load gives the same model");
    return 0;
}

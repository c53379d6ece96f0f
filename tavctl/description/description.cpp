#include "tavctl/description/description.h"

#include "platform/file.h"
#include "platform/systemCode.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "source/descriptionLoader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;

std::string readAll(std::FILE* stream) {
    std::string bytes;
    std::array<char, 2048> part{};
    for (std::size_t got = 0; (got = std::fread(part.data(), 1, part.size(), stream)) != 0;)
        bytes.append(part.data(), got);
    return bytes;
}

bool isRefusedAsWide(std::FILE* stream) {
    using namespace nZoPxiDriverTools_1_0;
    const IniFileOwner engine(createIniFile());
    return engine && loadIni(*engine, stream) == kIniWideEncoding;
}

std::string itemOf(const std::vector<std::string>& items, std::size_t index) {
    return items.empty() ? std::string() : items[index % items.size()];
}

} // namespace

Description::Description(std::string path)
    : path_(std::move(path)), reads_(std::make_unique<GatheringIniFile>()) {
    std::string bytes;
    if (const platform::Stream stream = platform::openStream(path_.c_str(), "rb")) {
        bytes = readAll(stream.get());
        std::rewind(stream.get());
        wide_ = isRefusedAsWide(stream.get());
    } else {
        openingTrouble_ = platform::systemMessage(platform::lastSystemCode());
    }
    text_ = std::make_unique<PositionedIni>(wide_ ? std::string() : std::move(bytes));
    try {
        model_ = DescriptionLoader<GatheringIniFile>(*reads_).load(path_);
    } catch (const zoerr::Exception&) { // NOLINT(bugprone-empty-catch): only opening raises, and
                                        // that is noted
    }
}

const std::vector<std::string>& Description::list(const std::string& section,
                                                  const std::string& key) const {
    static const std::vector<std::string> kNone;
    const auto found = reads_->lists().find({section, key});
    return found == reads_->lists().end() ? kNone : found->second;
}

std::string Description::anchorSection(std::size_t anchor) const {
    return anchor == 0 ? kSectionAnchor
                       : kPrefixAlternateAnchor +
                             itemOf(list(kSectionAnchor, kAlternateAnchors), anchor - 1);
}

std::string Description::downstreamPortSection(std::size_t port) const {
    return kPrefixDownstreamPort + itemOf(list(kSectionModel, kDownstreamPorts), port);
}

std::string Description::internalBridgeSection(std::size_t bridge) const {
    return kPrefixInternalBridge + itemOf(list(kSectionModel, kInternalBridges), bridge);
}

std::vector<std::string> Description::bridgeSections() const {
    std::vector<std::string> sections;
    const auto add = [&](std::string section) {
        if (std::find(sections.begin(), sections.end(), section) == sections.end())
            sections.push_back(std::move(section));
    };
    for (const std::string& name : list(kSectionModel, kDownstreamPorts))
        add(kPrefixDownstreamPort + name);
    for (const std::string& name : list(kSectionModel, kInternalBridges))
        add(kPrefixInternalBridge + name);
    if (reads_->asked().contains({kSectionUpstreamPort, kVid}) ||
        reads_->asked().contains({kSectionUpstreamPort, kTraversalMapFromAnchor}))
        add(kSectionUpstreamPort);
    return sections;
}

} // namespace tavctl::lint

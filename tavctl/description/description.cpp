#include "tavctl/description/description.h"

#include "platform/file.h"
#include "platform/stream.h"
#include "platform/systemCode.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "source/descriptionLoader.h"

#include <algorithm>
#include <cstdio>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

// What most descriptions fit into.
constexpr std::size_t kFirstRoom = std::size_t{16} << 10;

bool isRefusedAsWide(std::FILE* stream) {
    using namespace nZoPxiDriverTools_1_0;
    const IniFileOwner engine(createIniFile());
    return engine && loadIni(*engine, stream) == kIniWideEncoding;
}

} // namespace

Description::Description(std::string path, Text text)
    : path_(std::move(path)), reads_(std::make_unique<GatheringIniFile>()) {
    load();
    if (!loads())
        examineFailure();
    text_ = std::make_unique<PositionedIni>(text == Text::wanted && !wide_ ? readText()
                                                                           : std::string());
}

void Description::load() {
    try {
        model_ = DescriptionLoader<GatheringIniFile>(*reads_).load(path_);
    } catch (const zoerr::Exception&) { // NOLINT(bugprone-empty-catch): only opening raises, and
                                        // that is noted
    }
    sections_ = SectionNames(*reads_);
    reads_->close();
}

// Why the loader could not open the file.
void Description::examineFailure() {
    if (reads_->problems().front().kind != LoadProblem::Kind::cannotOpen)
        return;
    if (const platform::Stream stream = platform::openStream(path_.c_str(), "rb"))
        wide_ = isRefusedAsWide(stream.get());
    else
        openingTrouble_ = platform::systemMessage(platform::lastSystemCode());
}

std::string Description::readText() {
    std::string bytes;
    const platform::Stream stream = platform::openStream(path_.c_str(), "rb");
    if (!stream)
        return bytes;
    std::setvbuf(stream.get(), nullptr, _IONBF, 0); // the pieces are large
    bool ended = false;
    while (!ended && bytes.size() <= kLargestText) {
        const std::size_t before = bytes.size();
        const std::size_t room = std::max(before, kFirstRoom);
        bytes.resize(before + room);
        const std::size_t got = platform::readStream(stream.get(), bytes.data() + before, room);
        bytes.resize(before + got);
        ended = got < room;
    }
    if (bytes.size() > kLargestText) {
        tooLarge_ = true;
        return {};
    }
    return bytes;
}

} // namespace tavctl::lint

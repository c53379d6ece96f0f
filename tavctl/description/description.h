// One description file as lint, explain and describe know it: what the loader made of it, and where
// everything stands in the file.
#pragma once

#include "source/modelDescription.h"
#include "tavctl/description/gatheringIniFile.h"
#include "tavctl/description/positionedIni.h"
#include "tavctl/description/sectionNames.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavctl::lint {

using nZoTavManagerPciPlugin_15_0::tAnchorIdentity;
using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using nZoTavManagerPciPlugin_15_0::tModelDescription;

class Description {
public:
    // Files that are larger are loaded as the plug-in loads them, but their lines are not looked
    // at: a description has some thousand bytes, and each line would take room many times over.
    static constexpr std::size_t kLargestText = std::size_t{64} << 20;

    // Whether it will be asked for text().
    enum class Text { wanted, unwanted };

    // Reads the file with the plug-in's loader, which goes on where it would end.
    explicit Description(std::string path, Text text = Text::wanted);

    [[nodiscard]] const std::string& path() const { return path_; }
    // Without lines when it is not wanted, too large, or cannot be read.
    [[nodiscard]] const PositionedIni& text() const { return *text_; }
    [[nodiscard]] const GatheringIniFile& reads() const { return *reads_; }

    // With stand-ins for what could not be read: 0, no items, an empty text.
    [[nodiscard]] const tModelDescription& model() const { return model_; }
    [[nodiscard]] tModelDescription takeModel() { return std::move(model_); }

    [[nodiscard]] const SectionNames& sections() const { return sections_; }
    [[nodiscard]] SectionNames takeSections() { return std::move(sections_); }

    // Whether the plug-in loads it.
    [[nodiscard]] bool loads() const { return reads_->problems().empty(); }

    // The system's words for why the file cannot be opened; empty when it can be.
    [[nodiscard]] const std::string& openingTrouble() const { return openingTrouble_; }

    // Whether the file starts with the mark of an encoding that is refused.
    [[nodiscard]] bool isWide() const { return wide_; }

    // Whether the text was left out for its size.
    [[nodiscard]] bool isTooLarge() const { return tooLarge_; }

    // The items of a list as they were read; none when it was not.
    [[nodiscard]] const std::vector<std::string>& list(const std::string& section,
                                                       const std::string& key) const {
        return reads_->list(section, key);
    }

private:
    void load();
    [[nodiscard]] std::string readText();
    void examineFailure();

    std::string path_;
    std::unique_ptr<PositionedIni> text_;
    std::unique_ptr<GatheringIniFile> reads_;
    tModelDescription model_;
    SectionNames sections_;
    std::string openingTrouble_;
    bool wide_ = false;
    bool tooLarge_ = false;
};

} // namespace tavctl::lint

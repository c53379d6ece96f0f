// Items of lists: they are split at commas and not trimmed.
#include "pxidrivertools/asciiText.h"
#include "source/descriptionLoader.h"
#include "tavctl/lint/checks.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;

void checkList(const Description& description, const std::string& section, const char* key,
               Findings& findings) {
    const auto& items = description.list(section, key);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string& item = items[i];
        const auto place = [&] { return description.text().item(section, key, i); };
        if (item.empty())
            findings.add("empty-item", place(), fmt::format("item {} of {} is empty", i + 1, key),
                         "one comma between two items");
        else if (trim(item) != item)
            findings.add("blank-in-list", place(),
                         fmt::format("the item is {}, with its blanks", inQuotes(item)),
                         fmt::format("{}, without blanks around the commas", inQuotes(trim(item))));
        const auto here = items.begin() + static_cast<std::ptrdiff_t>(i);
        if (!item.empty() && std::find(items.begin(), here, item) != here)
            findings.add("duplicate-item", place(),
                         fmt::format("{} names {} a second time", key, inQuotes(item)),
                         "each item once");
    }
}

} // namespace

void checkLists(const Description& description, Findings& findings) {
    for (const char* key : {kInternalBridges, kConnectorLabels, kDownstreamPorts})
        checkList(description, kSectionModel, key, findings);
    checkList(description, kSectionAnchor, kAlternateAnchors, findings);
}

} // namespace tavctl::lint

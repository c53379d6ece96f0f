#include "pxidrivertools/listText.h"

#include "pxidrivertools/listItems.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

std::list<std::string> splitList(std::string_view text) {
    std::list<std::string> items;
    while (!text.empty()) {
        const std::string_view item = text.substr(0, text.find(','));
        appendItem(items, std::string(item));
        text.remove_prefix(item.size() == text.size() ? item.size() : item.size() + 1);
    }
    return items;
}

std::string joinList(const std::list<std::string>& items) {
    std::string text;
    bool first = true;
    for (const std::string& item : items) {
        if (!first)
            text += ',';
        first = false;
        text += item;
    }
    return text;
}

std::string joinList(const std::list<std::int32_t>& items) {
    std::string text;
    for (const std::int32_t item : items) {
        if (!text.empty())
            text += ',';
        text += std::to_string(item);
    }
    return text;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

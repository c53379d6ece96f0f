#include "tavctl/draw/style.h"

#include "include/tavPlugin.h"

namespace tavctl {

const char* headColour(std::int32_t category) {
    switch (category) {
    case kTavCategoryPci:
        return "#dcfce7";
    case kTavCategoryExpresscard:
        return "#fef3c7";
    default:
        return "#dbeafe";
    }
}

} // namespace tavctl

#include "tavctl/bus/linkJson.h"

namespace tavctl {

namespace {

Json unlessZero(std::uint8_t number) {
    return number == 0 ? Json(nullptr) : Json(number);
}

} // namespace

void addLink(Json& object, const LinkState& link) {
    object.add("negotiatedWidth", unlessZero(link.width));
    object.add("negotiatedSpeed", unlessZero(link.speed));
    object.add("possibleWidth", unlessZero(link.ableWidth));
    object.add("possibleSpeed", unlessZero(link.ableSpeed));
    object.add("degraded", link.isKnown() ? Json(link.isDegraded()) : Json(nullptr));
}

} // namespace tavctl

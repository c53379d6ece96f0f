#include "tavctl/description/loadFailure.h"

#include "tavctl/description/checkLoad.h"

namespace tavctl::lint {

Failure loadFailure(const Description& description) {
    const Finding end = endOfLoad(description);
    return {"load description",
            end.placeText(),
            end.sentence(),
            description.reads().problems().front().status,
            {},
            "tavctl lint"};
}

} // namespace tavctl::lint

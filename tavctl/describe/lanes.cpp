#include "tavctl/describe/lanes.h"

#include "tavctl/words/failure.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl::describe {

std::string lanesTrouble(const pcibus::PciFunction& port, const std::string& kind,
                         std::int32_t lanesPerLabel) {
    const auto lanes = static_cast<unsigned>(lanesPerLabel);
    if (lanes == 0 || (port.linkWidth != 0 && port.linkWidth % lanes == 0))
        return {};
    const std::string name = fmt::format("the {} {}", kind, pcibus::addressText(port));
    if (port.linkWidth == 0)
        return fmt::format("no link width is known of {}, so it would take no label", name);
    const std::string width = fmt::format("{} has {}", name, counted(port.linkWidth, "lane"));
    if (port.linkWidth < lanes)
        return fmt::format("{}, fewer than {}, so it would take no label", width, lanes);
    return fmt::format("{}, which is no multiple of {}", width, lanes);
}

void requireLanes(const pcibus::PciFunction& port, const std::string& kind,
                  std::int32_t lanesPerLabel) {
    const std::string trouble = lanesTrouble(port, kind, lanesPerLabel);
    if (!trouble.empty())
        throw FailureException(
            {"describe", fmt::format("--lanes {}", lanesPerLabel), trouble, {}, {}},
            ExitStatus::problemFound);
}

} // namespace tavctl::describe

#include "tavctl/lint/ownIds.h"

#include "source/descriptionLoader.h"

namespace tavctl::lint {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;

std::optional<tPciIds> ownIdsOf(const Description& description, const std::string& section) {
    const GatheringIniFile& reads = description.reads();
    const auto redirected = reads.idsSameAs().find(section);
    const std::string& from = redirected == reads.idsSameAs().end() ? section : redirected->second;
    bool complete = true;
    const auto identifier = [&](const char* key) -> std::uint16_t {
        const auto read = reads.hexadecimals().find({from, key});
        complete = complete && read != reads.hexadecimals().end();
        return complete ? static_cast<std::uint16_t>(read->second) : std::uint16_t{0};
    };
    const tPciIds ids{identifier(kVid), identifier(kPid), identifier(kSsVid), identifier(kSsPid)};
    return complete ? std::optional(ids) : std::nullopt;
}

} // namespace tavctl::lint

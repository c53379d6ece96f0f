#include "tavctl/words/newFileBeside.h"

#include "platform/randomSeed.h"
#include "platform/utf8Path.h"

#include <fmt/core.h>

#include <cstdint>

namespace tavctl {

std::pair<platform::NewFile, std::string>
createBeside(const std::string& target, platform::NewFileAccess access, Removal& removal) {
    constexpr int kAttempts = 100;
    platform::NewFile made;
    std::string name;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        name = fmt::format("{}.{:08x}.tmp", target,
                           static_cast<std::uint32_t>(platform::randomSeed()));
        removal.emplace(platform::RemovedAtEarlyEnd::Kind::file, platform::utf8Path(name));
        made = platform::createExclusively(name.c_str(), access);
        if (made.stream || !platform::isNameTaken(made.code))
            break;
    }
    return {std::move(made), std::move(name)};
}

} // namespace tavctl

#include "tavctl/host/scratchFolder.h"

#include "platform/privateFolder.h"
#include "platform/randomSeed.h"
#include "platform/utf8Path.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <string>
#include <system_error>

namespace tavctl {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    constexpr int kAttempts = 100;
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    std::string reason = error ? error.message() : "every name is taken";
    for (int attempt = 0; !error && attempt < kAttempts; ++attempt) {
        path_ = parent / fmt::format("tavctl-{}", platform::randomSeed());
        removal_.emplace(platform::RemovedAtEarlyEnd::Kind::folder, path_);
        const platform::SystemCode code = platform::createPrivateFolder(path_);
        if (code == platform::kNoSystemError)
            return;
        if (!platform::isFolderNameTaken(code)) {
            reason = platform::systemMessage(code);
            break;
        }
    }
    throw FailureException({"make a temporary folder", platform::utf8Text(parent), reason, {}, {}});
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

} // namespace tavctl

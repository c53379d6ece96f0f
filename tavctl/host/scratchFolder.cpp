#include "tavctl/host/scratchFolder.h"

#include "platform/utf8Path.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <random>
#include <string>
#include <system_error>

namespace tavctl {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    constexpr int kAttempts = 100;
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    std::random_device random;
    for (int attempt = 0; !error && attempt < kAttempts; ++attempt) {
        const fs::path candidate = parent / fmt::format("tavctl-{}", random());
        // False, without an error, for a name that is taken.
        if (fs::create_directory(candidate, error)) {
            path_ = candidate;
            std::error_code ignored; // a system that knows no owners has nothing to restrict
            fs::permissions(path_, fs::perms::owner_all, ignored);
            return;
        }
    }
    throw FailureException({"make a temporary folder",
                            platform::utf8Text(parent),
                            error ? error.message() : "",
                            {},
                            {}});
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

} // namespace tavctl

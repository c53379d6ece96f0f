#include "tavctl/words/resultFile.h"

#include "platform/file.h"
#include "tavctl/words/failure.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace tavctl {

namespace {

[[noreturn]] void fail(const std::string& file, platform::SystemCode code) {
    throw FailureException({"write result", file, platform::systemMessage(code), {}, {}});
}

} // namespace

void writeResult(const std::string& text, const std::string& file) {
    if (file.empty()) {
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
            std::fflush(stdout) != 0)
            fail("standard output", platform::lastSystemCode());
        return;
    }
    platform::Stream stream = platform::openStream(file.c_str(), "wb");
    if (!stream)
        fail(file, platform::lastSystemCode());
    platform::SystemCode code = platform::kNoSystemError;
    if (std::fwrite(text.data(), 1, text.size(), stream.get()) != text.size())
        code = platform::lastSystemCode();
    if (std::fclose(stream.release()) != 0 && code == platform::kNoSystemError)
        code = platform::lastSystemCode();
    if (code == platform::kNoSystemError)
        return;
    // Half a result is worse than none; but a device is not ours to remove.
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file, ignored))
        platform::removeFile(file.c_str());
    fail(file, code);
}

} // namespace tavctl

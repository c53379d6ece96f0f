#include "tests/support/command.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace testsupport {

CommandResult runCommand(const std::string& command) {
    std::FILE* const pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    if (pipe == nullptr)
        throw std::runtime_error("cannot run " + command);
    CommandResult result;
    std::array<char, 4096> part{};
    for (std::size_t got = 0; (got = std::fread(part.data(), 1, part.size(), pipe)) != 0;)
        result.output.append(part.data(), got);
    const int status = pclose(pipe);
    if (WIFEXITED(status))
        result.exitStatus = WEXITSTATUS(status);
    return result;
}

} // namespace testsupport

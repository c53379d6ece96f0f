#include "tests/faults/tavctlRun.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

// The program's entry, under the name that the build gives it here: a process that starts would
// make a thousand calls that are not the product's.
int tavctlMain(int argc, char** argv);

namespace testfaults {

TracedEnd runTavctl(const std::vector<std::string>& words, const Decide& decide) {
    std::vector<std::string> all{"tavctl"};
    all.insert(all.end(), words.begin(), words.end());
    return runTraced(
        [&] {
            std::vector<char*> pointers;
            for (std::string& word : all)
                pointers.push_back(word.data());
            pointers.push_back(nullptr);
            // Tests that run in the background are started to pass some of them over.
            for (const int end : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE})
                std::signal(end, SIG_DFL);
            const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
            dup2(nowhere, STDOUT_FILENO);
            dup2(nowhere, STDERR_FILENO);
            const WatchedPart watched;
            return tavctlMain(static_cast<int>(all.size()), pointers.data());
        },
        decide);
}

} // namespace testfaults

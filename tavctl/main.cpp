// tavctl, the plug-in's host on the command line.
#include "platform/commandLine.h"
#include "platform/earlyEnd.h"
#include "tavctl/commandLine.h"
#include "tavctl/words/print.h"

#include <cstdio>
#include <exception>

namespace {

// What a library says may hold the name of a file.
void tellOf(const std::exception& exception) {
    try {
        tavctl::complain(exception.what());
    } catch (...) {
        std::fputs("tavctl: out of memory\n", stderr);
    }
}

} // namespace

int main(int argc, char** argv) {
    using tavctl::ExitStatus;
    try {
        platform::meetEarlyEnds();
        platform::prepareOutput();
        return static_cast<int>(tavctl::runCommandLine(platform::commandLine(argc, argv)));
    } catch (const std::exception& exception) {
        tellOf(exception);
    } catch (...) {
        std::fputs("tavctl: unknown failure\n", stderr);
    }
    return static_cast<int>(ExitStatus::failed);
}

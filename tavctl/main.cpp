// tavctl, the plug-in's host on the command line.
#include "platform/commandLine.h"
#include "tavctl/commandLine.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    using tavctl::ExitStatus;
    try {
        platform::prepareOutput();
        return static_cast<int>(tavctl::runCommandLine(platform::commandLine(argc, argv)));
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "tavctl: %s\n", exception.what());
    } catch (...) {
        std::fputs("tavctl: unknown failure\n", stderr);
    }
    return static_cast<int>(ExitStatus::failed);
}

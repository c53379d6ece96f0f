#include "platform/commandLine.h"

#include "platform/text.h"
#include "platform/windows/console.h"
#include "platform/windows/uniqueHandle.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace platform {

// What main() is given went through the program's code page, which need not have every character.
std::vector<std::string> commandLine(int argc, char** argv) {
    std::vector<std::string> words(argv, argv + argc);
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    const LocalMemory owner(static_cast<void*>(wide));
    if (wide == nullptr)
        return words;
    words.resize(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < words.size(); ++i)
        static_cast<void>(toUtf8(wide[i], words[i]));
    return words;
}

void prepareOutput() noexcept {
    // Where the program breaks off, too.
    std::atexit(restoreConsole);
    std::signal(SIGABRT, [](int) { restoreConsole(); });
    useUtf8OnConsole();
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

void prepareInput() noexcept {
    _setmode(_fileno(stdin), _O_BINARY);
}

} // namespace platform

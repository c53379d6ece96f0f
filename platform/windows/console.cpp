#include "platform/windows/console.h"

#include <array>

namespace platform {

namespace {

constexpr UINT kNone = 0;

struct Mode {
    HANDLE output = nullptr;
    DWORD before = 0;
};

// The system may end the program in a thread of its own while the first one goes on.
SRWLOCK gate = SRWLOCK_INIT;
UINT codePageBefore = kNone;
std::array<Mode, 2> modesBefore; // of standard output and standard error
std::size_t modes = 0;
bool isRestored = false;

class Gate {
public:
    Gate() noexcept { AcquireSRWLockExclusive(&gate); }
    ~Gate() { ReleaseSRWLockExclusive(&gate); }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
};

} // namespace

void useUtf8OnConsole() noexcept {
    const Gate shut;
    const UINT before = GetConsoleOutputCP();
    if (isRestored || before == kNone || before == CP_UTF8)
        return;
    if (SetConsoleOutputCP(CP_UTF8) && codePageBefore == kNone)
        codePageBefore = before;
}

bool useEscapesOnConsole(HANDLE output) noexcept {
    const Gate shut;
    DWORD mode = 0;
    if (!GetConsoleMode(output, &mode))
        return false;
    if ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    if (isRestored || modes == modesBefore.size() ||
        !SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING))
        return false;
    modesBefore[modes++] = {output, mode};
    return true;
}

void restoreConsole() noexcept {
    const Gate shut;
    isRestored = true;
    while (modes > 0) {
        const Mode& mode = modesBefore[--modes];
        SetConsoleMode(mode.output, mode.before);
    }
    if (codePageBefore != kNone)
        SetConsoleOutputCP(codePageBefore);
    codePageBefore = kNone;
}

} // namespace platform

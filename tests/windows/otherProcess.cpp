// The other process of tests that need two.
//
//   lock FILE READY GO MARKER   holds a lock on the file: gives READY, waits for GO, and makes the
//                               file MARKER before it lets go
//   hold FILE READY GO          the same with the file opened without sharing, and no marker
//   configuration NAME          prints a value of the configuration in force, or what it came to
//   bus                         prints where the recorded bus is, and whose list of devices counts
//   arguments WORD...           prints its words, each between brackets on a line of its own
//   console FILE run LINE       runs the command line in its console, and writes to the file what
//   is
//                               left of the console's settings; with "break" in place of "run" it
//                               ends the command early
#include "platform/busLocation.h"
#include "platform/commandLine.h"
#include "platform/configurationValue.h"
#include "platform/windows/hostVariable.h"
#include "platform/windows/uniqueHandle.h"
#include "pxidrivertools/configuration.h"
#include "quil/tErrorStatus.h"
#include "tests/windows/signal.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

platform::FileHandle open(const std::string& file, DWORD sharing) {
    return platform::FileHandle(CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE, sharing,
                                            nullptr, OPEN_EXISTING, 0, nullptr));
}

int lock(const std::vector<std::string>& words) {
    const platform::FileHandle file =
        open(words[2], FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    OVERLAPPED start = {};
    if (!file || !LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK, 0, MAXDWORD, MAXDWORD, &start))
        return kFailed;
    testwindows::Signal(words[3]).give();
    testwindows::Signal(words[4]).wait();
    // Who does not wait for the lock gets here first.
    constexpr DWORD kHeadStart = 100;
    Sleep(kHeadStart);
    const platform::FileHandle marker(CreateFileA(words[5].c_str(), GENERIC_WRITE, 0, nullptr,
                                                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    return marker ? kDone : kFailed;
}

int hold(const std::vector<std::string>& words) {
    const platform::FileHandle file = open(words[2], 0);
    if (!file)
        return kFailed;
    testwindows::Signal(words[3]).give();
    testwindows::Signal(words[4]).wait();
    return kDone;
}

int printConfiguration(const std::vector<std::string>& words) {
    nZOQUIL000::tErrorStatus status;
    const std::string text = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::readConfiguration(
        words[2].c_str(), status);
    std::printf("%ld %s", static_cast<long>(status.code), text.c_str());
    return kDone;
}

int printBus() {
    const auto functions = platform::hostVariable(platform::kHostPciFunctions);
    std::printf("%s %s", platform::busLocation().value_or("(none)").c_str(),
                functions.value_or("(system)").c_str());
    return kDone;
}

int printArguments(const std::vector<std::string>& words) {
    for (std::size_t i = 2; i < words.size(); ++i)
        std::printf("[%s]\n", words[i].c_str());
    return kDone;
}

// Goes on when the console breaks what runs in it.
BOOL WINAPI goOn(DWORD) {
    return TRUE;
}

// Runs a command line in this process's console, or breaks it off once it has set the console up,
// and writes what it leaves of the console to a file.
int reportConsole(const std::vector<std::string>& words) {
    constexpr UINT kCodePage = 850;
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE console =
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    &inherited, OPEN_EXISTING, 0, nullptr);
    DWORD before = 0;
    HANDLE input = nullptr; // which stays open, and empty
    HANDLE inputEnd = nullptr;
    if (!GetConsoleMode(console, &before) || !SetConsoleOutputCP(kCodePage) ||
        !CreatePipe(&input, &inputEnd, &inherited, 0))
        return kFailed;
    SetHandleInformation(inputEnd, HANDLE_FLAG_INHERIT, 0);
    before &= ~DWORD{ENABLE_VIRTUAL_TERMINAL_PROCESSING};
    SetConsoleMode(console, before);
    SetConsoleCtrlHandler(goOn, TRUE);
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input;
    start.hStdOutput = start.hStdError = console;
    std::string line = words[4];
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &process))
        return kFailed;
    if (words[3] == "break") {
        while (GetConsoleOutputCP() == kCodePage &&
               WaitForSingleObject(process.hProcess, 10) == WAIT_TIMEOUT) {
        }
        GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, 0);
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD after = 0;
    GetConsoleMode(console, &after);
    std::FILE* const report = std::fopen(words[2].c_str(), "wb");
    if (report == nullptr)
        return kFailed;
    std::fprintf(report, "code page %u, mode %s", GetConsoleOutputCP(),
                 after == before ? "as before" : "changed");
    std::fclose(report);
    return kDone;
}

} // namespace

int main(int argc, char** argv) {
    platform::prepareOutput();
    const std::vector<std::string> words = platform::commandLine(argc, argv);
    const std::string mode = words.size() > 1 ? words[1] : "";
    if (mode == "lock" && words.size() == 6)
        return lock(words);
    if (mode == "hold" && words.size() == 5)
        return hold(words);
    if (mode == "configuration" && words.size() == 3)
        return printConfiguration(words);
    if (mode == "bus" && words.size() == 2)
        return printBus();
    if (mode == "console" && words.size() == 5)
        return reportConsole(words);
    if (mode == "arguments")
        return printArguments(words);
    return kUsage;
}

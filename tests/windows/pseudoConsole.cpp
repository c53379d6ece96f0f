#include "tests/windows/pseudoConsole.h"

#include "platform/utf8Path.h"
#include "platform/windows/commandLineText.h"
#include "platform/windows/uniqueHandle.h"

#include <array>
#include <stdexcept>
#include <thread>

namespace testwindows {

namespace {

// The compiler's headers have them for later systems than the product's oldest only.
using Console = void*;
using CreateConsole = HRESULT(WINAPI*)(COORD, HANDLE, HANDLE, DWORD, Console*);
using CloseConsole = void(WINAPI*)(Console);
constexpr DWORD_PTR kConsoleAttribute = 0x20016; // PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE

template <typename Function>
Function systemFunction(const char* name) {
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32"), name);
    if (found == nullptr)
        throw std::runtime_error(std::string("this system has no ") + name);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

void require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(std::string(what) + ": system error " +
                                 std::to_string(GetLastError()));
}

struct Pipe {
    Pipe() { require(CreatePipe(readEnd.out(), writeEnd.out(), nullptr, 0) != 0, "make a pipe"); }
    platform::FileHandle readEnd;
    platform::FileHandle writeEnd;
};

// What the console shows nobody looks at, but it must go somewhere.
void drain(HANDLE pipe) {
    std::array<char, 4096> chunk{};
    DWORD size = 0;
    while (ReadFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &size, nullptr) &&
           size != 0) {
    }
}

platform::ProcessHandle start(Console console, std::wstring line) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<char> room(size);
    STARTUPINFOEXW information = {};
    information.StartupInfo.cb = sizeof information;
    information.StartupInfo.dwFlags = STARTF_USESTDHANDLES; // none of this program's
    information.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    require(InitializeProcThreadAttributeList(information.lpAttributeList, 1, 0, &size) != 0 &&
                UpdateProcThreadAttribute(information.lpAttributeList, 0, kConsoleAttribute,
                                          console, sizeof console, nullptr, nullptr) != 0,
            "give a process a console");
    PROCESS_INFORMATION process = {};
    const BOOL started =
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, EXTENDED_STARTUPINFO_PRESENT,
                       nullptr, nullptr, &information.StartupInfo, &process);
    DeleteProcThreadAttributeList(information.lpAttributeList);
    require(started != 0, "start a process in a console");
    CloseHandle(process.hThread);
    return platform::ProcessHandle(process.hProcess);
}

} // namespace

int runInConsole(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    const auto create = systemFunction<CreateConsole>("CreatePseudoConsole");
    const auto close = systemFunction<CloseConsole>("ClosePseudoConsole");
    Pipe toConsole;
    Pipe fromConsole;
    constexpr COORD kSize = {80, 25};
    Console console = nullptr;
    require(create(kSize, toConsole.readEnd.get(), fromConsole.writeEnd.get(), 0, &console) == 0,
            "make a console");
    toConsole.readEnd.reset();
    fromConsole.writeEnd.reset();
    std::wstring line = platform::quotedWord(program.wstring());
    for (const std::string& argument : arguments)
        line.append(L" ").append(platform::quotedWord(platform::utf8Path(argument).wstring()));
    const auto process = start(console, line);
    std::thread reader([&] { drain(fromConsole.readEnd.get()); });
    DWORD status = 0;
    WaitForSingleObject(process.get(), INFINITE);
    GetExitCodeProcess(process.get(), &status);
    close(console);
    reader.join();
    return static_cast<int>(status);
}

} // namespace testwindows

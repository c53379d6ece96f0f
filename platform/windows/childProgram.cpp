#include "platform/childProgram.h"

#include "platform/text.h"
#include "platform/windows/uniqueHandle.h"

#include <array>
#include <thread>

namespace platform {

namespace {

struct ProcessKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { CloseHandle(handle); }
};
using PipeHandle = UniqueHandle<ProcessKind>;
using ProcessHandle = UniqueHandle<ProcessKind>;

// A word as the C library of the program takes it from the command line.
void appendQuoted(std::wstring& line, const std::wstring& word) {
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"')
            line.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

std::wstring commandLineOf(const std::vector<std::string>& words) {
    std::wstring line;
    for (const std::string& word : words) {
        std::wstring wide;
        static_cast<void>(toWide(word, wide));
        if (!line.empty())
            line += L' ';
        appendQuoted(line, wide);
    }
    return line;
}

// Makes a pipe of which the program inherits one end.
bool makePipe(PipeHandle& read, PipeHandle& write, const PipeHandle& ours) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreatePipe(read.out(), write.out(), &inherited, 0) != 0 &&
           SetHandleInformation(ours.get(), HANDLE_FLAG_INHERIT, 0) != 0;
}

void writeWhole(HANDLE pipe, std::string_view text) {
    constexpr std::size_t kMost = std::size_t{1} << 20;
    while (!text.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(text.size() < kMost ? text.size() : kMost);
        if (WriteFile(pipe, text.data(), size, &written, nullptr) == 0)
            return;
        text.remove_prefix(written);
    }
}

void readWhole(HANDLE pipe, std::string& text) {
    std::array<char, 1 << 16> chunk;
    DWORD size = 0;
    while (ReadFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &size, nullptr) != 0 &&
           size != 0)
        text.append(chunk.data(), size);
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input) {
    ProgramRun run;
    PipeHandle inputRead;
    PipeHandle inputWrite;
    PipeHandle outputRead;
    PipeHandle outputWrite;
    if (!makePipe(inputRead, inputWrite, inputWrite) ||
        !makePipe(outputRead, outputWrite, outputRead)) {
        run.failure = lastSystemCode();
        return run;
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = inputRead.get();
    startup.hStdOutput = outputWrite.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    std::wstring line = commandLineOf(words);
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &process) == 0) {
        run.failure = lastSystemCode();
        return run;
    }
    const ProcessHandle thread(process.hThread);
    const ProcessHandle program(process.hProcess);
    inputRead.reset();
    outputWrite.reset();
    std::thread writer([&] {
        writeWhole(inputWrite.get(), input);
        inputWrite.reset();
    });
    readWhole(outputRead.get(), run.output);
    writer.join();
    WaitForSingleObject(program.get(), INFINITE);
    DWORD status = 0;
    if (GetExitCodeProcess(program.get(), &status) != 0)
        run.exitStatus = static_cast<int>(status);
    return run;
}

} // namespace platform

#include "platform/childProgram.h"

#include "platform/text.h"
#include "platform/windows/commandLineText.h"
#include "platform/windows/uniqueHandle.h"

#include <thread>

namespace platform {

namespace {

// Both ends of a pipe; the program is given one of them.
struct Pipe {
    FileHandle readEnd;
    FileHandle writeEnd;
};

bool open(Pipe& pipe) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherited, 0))
        return false;
    pipe.readEnd = FileHandle(readEnd);
    pipe.writeEnd = FileHandle(writeEnd);
    return true;
}

void writeWhole(HANDLE handle, std::string_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        if (!WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
            return;
        text.remove_prefix(written);
    }
}

void readWhole(HANDLE handle, std::string& text) {
    std::vector<char> chunk(1 << 16);
    DWORD size = 0;
    while (ReadFile(handle, chunk.data(), static_cast<DWORD>(chunk.size()), &size, nullptr) &&
           size != 0)
        text.append(chunk.data(), size);
}

// False for a text that is no UTF-8.
bool joinWords(const std::vector<std::string>& words, std::wstring& line) {
    for (const std::string& word : words) {
        std::wstring wide;
        if (toWide(word, wide) != Conversion::done)
            return false;
        if (!line.empty())
            line.push_back(L' ');
        line.append(quotedWord(wide));
    }
    return true;
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input) {
    ProgramRun run;
    Pipe toProgram;
    Pipe fromProgram;
    std::wstring line;
    if (!joinWords(words, line)) {
        run.failure = ERROR_NO_UNICODE_TRANSLATION;
        return run;
    }
    PROCESS_INFORMATION started = {};
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    const bool ready =
        open(toProgram) && open(fromProgram) &&
        // The program must not hold our own ends, or neither of us would see the other's end.
        SetHandleInformation(toProgram.writeEnd.get(), HANDLE_FLAG_INHERIT, 0) &&
        SetHandleInformation(fromProgram.readEnd.get(), HANDLE_FLAG_INHERIT, 0);
    start.hStdInput = toProgram.readEnd.get();
    start.hStdOutput = fromProgram.writeEnd.get();
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    if (!ready || !CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                  &start, &started)) {
        run.failure = lastSystemCode();
        return run;
    }
    const ProcessHandle process(started.hProcess);
    CloseHandle(started.hThread);
    toProgram.readEnd.reset();
    fromProgram.writeEnd.reset();
    std::thread writer([&] {
        writeWhole(toProgram.writeEnd.get(), input);
        toProgram.writeEnd.reset();
    });
    readWhole(fromProgram.readEnd.get(), run.output);
    writer.join();
    DWORD status = 0;
    if (WaitForSingleObject(process.get(), INFINITE) == WAIT_OBJECT_0 &&
        GetExitCodeProcess(process.get(), &status))
        run.exitStatus = static_cast<int>(status);
    return run;
}

} // namespace platform

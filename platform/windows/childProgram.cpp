#include "platform/childProgram.h"

#include "platform/text.h"
#include "platform/windows/commandLineText.h"
#include "platform/windows/uniqueHandle.h"

#include <algorithm>
#include <string_view>
#include <system_error>
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

bool isRooted(std::wstring_view folder) {
    const bool hasDrive = folder.size() > 2 && folder[1] == L':' && folder[2] == L'\\';
    return hasDrive || folder.starts_with(L"\\\\");
}

bool isFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::wstring searchedFolders() {
    std::wstring folders;
    DWORD size = GetEnvironmentVariableW(L"PATH", nullptr, 0);
    while (size > folders.size()) {
        folders.resize(size);
        size = GetEnvironmentVariableW(L"PATH", folders.data(), size);
    }
    folders.resize(size);
    return folders;
}

// The file of the program; empty when there is none. Only folders that are named from a root count:
// the system's own search begins in the folder that somebody works in.
std::wstring findProgram(const std::wstring& name) {
    const std::wstring file = name.ends_with(L".exe") ? name : name + L".exe";
    if (name.find_first_of(L"\\/:") != std::wstring::npos)
        return isRooted(name) ? file : std::wstring();
    const std::wstring folders = searchedFolders();
    for (std::size_t start = 0; start < folders.size();) {
        const std::size_t end = std::min(folders.find(L';', start), folders.size());
        std::wstring folder = folders.substr(start, end - start);
        start = end + 1;
        std::erase(folder, L'"');
        std::replace(folder.begin(), folder.end(), L'/', L'\\');
        if (!isRooted(folder))
            continue;
        const std::wstring path = folder + L"\\" + file;
        if (isFile(path))
            return path;
    }
    return {};
}

// Ends the program that is put into it when this process ends, however that comes about.
FileHandle makeJob() {
    FileHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
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
    std::wstring name;
    toWide(words.front(), name);
    const std::wstring file = findProgram(name);
    if (file.empty()) {
        run.failure = ERROR_FILE_NOT_FOUND;
        return run;
    }
    const FileHandle job = makeJob();
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
    if (!ready || !CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE,
                                  CREATE_SUSPENDED, nullptr, nullptr, &start, &started)) {
        run.failure = lastFailureCode();
        return run;
    }
    const ProcessHandle process(started.hProcess);
    AssignProcessToJobObject(job.get(), process.get());
    ResumeThread(started.hThread);
    CloseHandle(started.hThread);
    toProgram.readEnd.reset();
    fromProgram.writeEnd.reset();
    std::thread writer;
    try {
        writer = std::thread([&] {
            writeWhole(toProgram.writeEnd.get(), input);
            toProgram.writeEnd.reset();
        });
    } catch (const std::system_error&) {
        TerminateProcess(process.get(), 1);
        run.failure = ERROR_NO_SYSTEM_RESOURCES;
        return run;
    }
    readWhole(fromProgram.readEnd.get(), run.output);
    writer.join();
    DWORD status = 0;
    if (WaitForSingleObject(process.get(), INFINITE) == WAIT_OBJECT_0 &&
        GetExitCodeProcess(process.get(), &status))
        run.exitStatus = static_cast<int>(status);
    return run;
}

} // namespace platform

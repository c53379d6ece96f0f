#include "tests/support/program.h"

#include "platform/utf8Path.h"
#include "platform/windows/commandLineText.h"
#include "platform/windows/uniqueHandle.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/windows/startProcess.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace testsupport {

namespace {

platform::FileHandle create(const std::filesystem::path& file) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return platform::FileHandle(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                            &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                            nullptr));
}

} // namespace

struct RunningProgram::State {
    TemporaryFolder folder;
    platform::ProcessHandle process;
};

RunningProgram::RunningProgram(const std::filesystem::path& program,
                               const std::vector<std::string>& arguments)
    : state_(new State) {
    std::wstring line = platform::quotedWord(program.wstring());
    for (const std::string& argument : arguments)
        line.append(L" ").append(platform::quotedWord(platform::utf8Path(argument).wstring()));
    const auto output = create(state_->folder.path() / "output");
    const auto error = create(state_->folder.path() / "error");
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = output.get();
    start.hStdError = error.get();
    PROCESS_INFORMATION process = {};
    const DWORD code = startProcess(program.c_str(), line, start, process);
    if (code != ERROR_SUCCESS) {
        delete state_;
        throw std::runtime_error("cannot run " + program.string() + ": system error " +
                                 std::to_string(code));
    }
    CloseHandle(process.hThread);
    state_->process = platform::ProcessHandle(process.hProcess);
}

RunningProgram::~RunningProgram() {
    if (state_->process)
        wait();
    delete state_;
}

ProgramResult RunningProgram::wait() {
    DWORD status = 0;
    ProgramResult result;
    if (WaitForSingleObject(state_->process.get(), INFINITE) == WAIT_OBJECT_0 &&
        GetExitCodeProcess(state_->process.get(), &status))
        result.exitStatus = static_cast<int>(status);
    state_->process.reset();
    result.output = fileText(state_->folder.path() / "output");
    result.error = fileText(state_->folder.path() / "error");
    return result;
}

ProgramResult runProgram(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments) {
    return RunningProgram(program, arguments).wait();
}

} // namespace testsupport

#include "tests/support/windows/startProcess.h"

namespace testsupport {

DWORD startProcess(const wchar_t* program, const std::wstring& line, STARTUPINFOW& start,
                   PROCESS_INFORMATION& process) {
    // While other programs start and end, Wine now and then gives a process up before its program
    // begins, and calls that an internal error.
    constexpr int kTries = 5;
    DWORD code = ERROR_SUCCESS;
    for (int tried = 0; tried < kTries; ++tried) {
        std::wstring writable = line; // the call may change it
        if (CreateProcessW(program, writable.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                           &start, &process))
            return ERROR_SUCCESS;
        code = GetLastError();
        if (code != ERROR_INTERNAL_ERROR)
            break;
    }
    return code;
}

} // namespace testsupport

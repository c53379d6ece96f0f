// Starting a program, which Wine does not always manage at once.
#pragma once

#include <windows.h>

#include <string>

namespace testsupport {

// CreateProcessW with this command line, whose handles are inherited: ERROR_SUCCESS, with `process`
// filled in for the caller to close, or the code of the failure. `program` may be null: the line's
// first word names it then.
DWORD startProcess(const wchar_t* program, const std::wstring& line, STARTUPINFOW& start,
                   PROCESS_INFORMATION& process);

} // namespace testsupport

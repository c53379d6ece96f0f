// Text for whoever debugs the process: the debugger on Windows, standard error on Linux.
#pragma once

namespace platform {

// Writes the NUL-terminated text in one call, so that lines of several threads stay whole.
void writeDebugOutput(const char* text) noexcept;

} // namespace platform

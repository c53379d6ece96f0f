// What a program changes of the console that it shares with the programs before and after it.
// Private to this folder.
#pragma once

#include "platform/windows/systemHeaders.h"

namespace platform {

// Both put back by restoreConsole(), and without effect from then on.

// Lets what is written to the console be UTF-8.
void useUtf8OnConsole() noexcept;

// Lets a console take escape sequences. False where there is none behind the handle, and where it
// takes none.
bool useEscapesOnConsole(HANDLE output) noexcept;

// Puts back what has been changed. To be called however the program ends; once is enough.
void restoreConsole() noexcept;

} // namespace platform

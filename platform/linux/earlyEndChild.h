// The program that runs for this one, which is not to outlive it. Private to this folder.
#pragma once

#include <sys/types.h>

namespace platform {

// An early end (see platform/earlyEnd.h) ends this process too; 0: none. The process is there, or
// is a zombie, for as long as it is named here.
void setChildOfEarlyEnd(pid_t child) noexcept;

} // namespace platform

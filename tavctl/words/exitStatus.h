// What tavctl's exit status says.
#pragma once

namespace tavctl {

enum class ExitStatus {
    done = 0,
    problemFound = 1, // in the input: a lint error, a device that is not there
    wrongUsage = 2,
    failed = 3, // the plug-in or the system failed
};

} // namespace tavctl

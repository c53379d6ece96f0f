// The system calls that the product's side of the platform comes down to, and the errors that each
// of them can give.
#pragma once

#include "tests/faults/tracedRun.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace testfaults {

// One way in which a call can go wrong.
struct CallFault {
    Verdict verdict;
    std::string name; // "ENOSPC", "short"

    // A signal, a call that does only a part, or one that the file system does not have: nobody's
    // failure.
    [[nodiscard]] bool isHarmless() const {
        return name == "EINTR" || name == "short" || name == "EOPNOTSUPP";
    }
};

// "openat"; "system call 123" where the table has no name for it.
std::string nameOf(const SystemCall& call);

// What can be done to this call; nothing where it has no error that a machine in trouble gives.
std::vector<CallFault> faultsOf(const SystemCall& call);

// The calls of a run are numbered from 0, but for those that take or give back memory or have to do
// with threads: how often these happen depends on what the process did before. The others are the
// same in each run of one program on one machine.

// A decision about the call with this number, from 0; the others proceed.
Decide onlyCall(std::size_t number, const Verdict& verdict);

// Puts the counted calls of a run into the list and lets them be.
Decide listCalls(std::vector<SystemCall>& calls);

} // namespace testfaults

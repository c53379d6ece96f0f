// The JSON document that has a machine for each recording. It is printed as it is made.
#pragma once

#include "tavctl/recordings/recording.h"
#include "tavctl/words/failure.h"

#include <optional>
#include <string>

namespace tavctl {

class MachineDocument {
public:
    MachineDocument();

    // Prints the machine of a recording, with the `members` that it has beside machine, recording
    // and failure, as text. Raises FailureException when standard output did not take it.
    void add(const Recording& recording, const std::optional<Failure>& failure,
             const std::string& members);

    // Prints the end. There is at least one machine. Raises likewise.
    void end() const;

private:
    std::string begin_; // what stands before the next machine
};

} // namespace tavctl

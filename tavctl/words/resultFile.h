// Where a command's result goes: to a file that is named, else to standard output.
#pragma once

#include <string>

namespace tavctl {

struct ResultTarget {
    std::string file;     // empty or "-": standard output
    bool replace = false; // whether a file that is there may be replaced
    // Whether everybody may read the file, whoever might read the one of before: for what services
    // of other users collect.
    bool isPublic = false;

    [[nodiscard]] bool isStandardOutput() const { return file.empty() || file == "-"; }
};

// Raises FailureException when there is a file that may not be replaced: for commands that would
// otherwise tell so only after a long work.
void requireFree(const ResultTarget& target);

// Writes the whole text. A file is written beside its place and put there when it is whole: a
// failure leaves what was there before. A device, a pipe or a socket is written to as it is. Raises
// FailureException.
void writeResult(const std::string& text, const ResultTarget& target);

} // namespace tavctl

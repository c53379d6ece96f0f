// Finds out what was meant by a command line that the parser refuses.
#pragma once

#include "tavctl/options/commandWords.h"

#include <string>
#include <vector>

namespace tavctl {

// What was wrong with a command line.
struct Misuse {
    std::string word; // empty: no single one
    std::string reason;
    std::string command;               // whose help says more, such as "tavctl names"
    std::vector<std::string> commands; // that it has
};

// `words` are what was said, the program's own name first; `whole` is what may be said. The
// parser's own sentence names what it stumbled over, but not what was meant; it stands where the
// slip is none of the two common ones, a wrong command and a wrong option.
Misuse findMisuse(const CommandWords& whole, const std::vector<std::string>& words,
                  const std::string& parserSentence);

} // namespace tavctl

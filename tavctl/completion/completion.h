// Scripts by which shells complete tavctl's command line, made from the words of the command line
// itself, so that they know every command and option there is.
#pragma once

#include "tavctl/options/commandWords.h"

#include <string>

namespace tavctl {

std::string bashCompletion(const CommandWords& whole);
std::string zshCompletion(const CommandWords& whole);
std::string fishCompletion(const CommandWords& whole);
// For Windows PowerShell 5.1 and for PowerShell.
std::string powershellCompletion(const CommandWords& whole);

} // namespace tavctl

// tavctl completion: the script by which a shell completes tavctl's command line.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

// `wordsOfAll` tells the whole command line, of which the parser may have this command only.
Command addCompletionCommand(OptionParser& parser, CommandWords (*wordsOfAll)());

} // namespace tavctl

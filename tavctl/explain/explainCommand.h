// tavctl explain: why a model is listed or not.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addExplainCommand(OptionParser& parser);

} // namespace tavctl

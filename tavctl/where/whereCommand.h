// tavctl where: in which connector of which box something is, or what is behind a connector.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addWhereCommand(OptionParser& parser);

} // namespace tavctl

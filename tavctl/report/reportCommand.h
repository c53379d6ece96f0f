// tavctl report: recorded machines as a page of HTML.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addReportCommand(OptionParser& parser);

} // namespace tavctl

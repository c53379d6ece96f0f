// tavctl record: the bus as a dump that --dump and lspci read.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addRecordCommand(OptionParser& parser);

} // namespace tavctl

// The one way in for whoever has a path and wants its bus.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/functionSink.h"
#include "pcibus/leftOut.h"

#include <string>

namespace pcibus {

// A UTF-8 path: a folder stands for /sys, live or copied (see sysfs.h); anything else is a dump
// (see dump.h). `leftOut`, where somebody asks, is told what is passed over, and `sink` is given
// each function. Raises BusError and std::bad_alloc.
Bus readBus(const std::string& path, LeftOut* leftOut = nullptr, const FunctionSink& sink = {});

} // namespace pcibus

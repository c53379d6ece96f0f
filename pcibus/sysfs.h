// Reads the bus that sysfs publishes, live or from a copied tree of its files. It needs only what
// an ordinary user may read.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/functionSink.h"
#include "pcibus/leftOut.h"

#include <string>

namespace pcibus {

// `root` stands for /sys: the functions are the entries "DDDD:BB:DD.F" of bus/pci/devices below
// it. Domain 0 only; other entries are passed over, but for a `sink`, which is given what answers
// of every domain, in no particular order, and with what asks for the link that "max_link_width",
// "max_link_speed", "current_link_width" and "current_link_speed" tell, or the bytes of "config";
// while one of these is kept, so is one descriptor, of the folder that was read.
// Of each function the first 64 bytes of "config" are read, of a bridge also "subsystem_vendor",
// "subsystem_device", "max_link_width" and "max_link_speed", which count as 0 where they are
// missing, cannot be read, hold nothing of the kind or say that nothing is known.
//
// One damaged function does not take the others with it: one whose vendor identifier reads FFFF is
// passed over, and so is one whose "config" is missing, cannot be read or has fewer than 64 bytes.
// `leftOut`, where somebody asks, is told how many. A function that is unplugged meanwhile is left
// out and not counted.
//
// Raises BusError ("file or folder: reason") when there is no such folder or it cannot be listed,
// when no function's files can be opened for want of descriptors or memory, and for what no bus can
// be (see Bus). Raises std::bad_alloc; but some C++ libraries end the program when memory runs out
// while they list a folder.
Bus readSysfs(const std::string& root, LeftOut* leftOut = nullptr, const FunctionSink& sink = {});

} // namespace pcibus

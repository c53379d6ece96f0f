#include "pcibus/readBus.h"

#include "pcibus/dump.h"
#include "pcibus/sysfs.h"
#include "platform/entryType.h"

namespace pcibus {

Bus readBus(const std::string& path, LeftOut* leftOut, const FunctionSink& sink) {
    // A path that cannot be looked at is left to the reader of dumps, which says why.
    return platform::typeOfEntry(path) == std::filesystem::file_type::directory
               ? readSysfs(path, leftOut, sink)
               : readDump(path, leftOut, sink);
}

} // namespace pcibus

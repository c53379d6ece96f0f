#include "pcibus/readBus.h"

#include "pcibus/dump.h"
#include "pcibus/sysfs.h"

#include <system_error>

namespace pcibus {

Bus readBus(const std::filesystem::path& path, LeftOut* leftOut, const FunctionSink& sink) {
    // A path that cannot be looked at is left to the reader of dumps, which says why.
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored) ? readSysfs(path, leftOut, sink)
                                                        : readDump(path, leftOut, sink);
}

} // namespace pcibus

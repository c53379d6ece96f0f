#include "platform/bus/machineBus.h"

#include "pcibus/readBus.h"
#include "platform/file.h"
#include "platform/utf8Path.h"

#include <new>
#include <stdexcept>
#include <system_error>

namespace platform {

SystemCode readMachineBus(const std::string& location, std::shared_ptr<const MachineBus>& result) {
    try {
        std::filesystem::path path;
        try {
            path = utf8Path(location);
            result = std::make_shared<const MachineBus>(MachineBus{path, pcibus::readBus(path)});
            return kNoSystemError;
        } catch (const std::runtime_error&) { // of the bus, or no path at all
            std::error_code ignored;
            const bool isThere = std::filesystem::is_directory(path, ignored) ||
                                 openStream(location.c_str(), "rb") != nullptr;
            return isThere ? malformedDataCode() : lastSystemCode();
        }
    } catch (const std::bad_alloc&) {
        return outOfMemoryCode();
    }
}

} // namespace platform

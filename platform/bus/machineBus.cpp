#include "platform/bus/machineBus.h"

#include "pcibus/readBus.h"
#include "platform/file.h"

#include <new>

namespace platform {

SystemCode readMachineBus(const std::string& location, std::shared_ptr<const MachineBus>& result) {
    try {
        try {
            result =
                std::make_shared<const MachineBus>(MachineBus{location, pcibus::readBus(location)});
            return kNoSystemError;
        } catch (const pcibus::BusError&) {
            return openStream(location.c_str(), "rb") ? malformedDataCode() : lastSystemCode();
        }
    } catch (const std::bad_alloc&) {
        return outOfMemoryCode();
    }
}

} // namespace platform

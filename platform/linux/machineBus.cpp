#include "platform/linux/machineBus.h"

#include "pcibus/readBus.h"
#include "platform/busLocation.h"

#include <unistd.h>

#include <cerrno>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace platform {

SystemCode readMachineBus(std::shared_ptr<const MachineBus>& result) {
    try {
        const std::optional<std::string> location = busLocation();
        if (!location)
            return ENODEV;
        try {
            result = std::make_shared<const MachineBus>(
                MachineBus{*location, pcibus::readBus(*location)});
            return kNoSystemError;
        } catch (const pcibus::BusError&) {
            return access(location->c_str(), R_OK) != 0 ? lastSystemCode() : SystemCode{EBADMSG};
        }
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

} // namespace platform

#include "machine/machineBus.h"

#include "pcibus/readBus.h"
#include "platform/entryType.h"
#include "platform/file.h"

#include <new>
#include <stdexcept>

namespace machine {

using platform::SystemCode;

SystemCode readMachineBus(const std::string& location, std::shared_ptr<const MachineBus>& result) {
    try {
        try {
            result =
                std::make_shared<const MachineBus>(MachineBus{location, pcibus::readBus(location)});
            return platform::kNoSystemError;
        } catch (const std::runtime_error&) { // of the bus
            const bool isThere =
                platform::typeOfEntry(location) == std::filesystem::file_type::directory ||
                platform::openStream(location.c_str(), "rb") != nullptr;
            return isThere ? platform::malformedDataCode() : platform::lastSystemCode();
        }
    } catch (const std::bad_alloc&) {
        return platform::outOfMemoryCode();
    }
}

} // namespace machine

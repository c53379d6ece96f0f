#include "machine/machineBus.h"

#include "pcibus/readBus.h"
#include "platform/file.h"
#include "platform/utf8Path.h"

#include <new>
#include <stdexcept>
#include <system_error>

namespace machine {

using platform::SystemCode;

SystemCode readMachineBus(const std::string& location, std::shared_ptr<const MachineBus>& result) {
    try {
        std::filesystem::path path;
        try {
            path = platform::utf8Path(location);
            result = std::make_shared<const MachineBus>(MachineBus{path, pcibus::readBus(path)});
            return platform::kNoSystemError;
        } catch (const std::runtime_error&) { // of the bus, or no path at all
            std::error_code ignored;
            const bool isThere = std::filesystem::is_directory(path, ignored) ||
                                 platform::openStream(location.c_str(), "rb") != nullptr;
            return isThere ? platform::malformedDataCode() : platform::lastSystemCode();
        }
    } catch (const std::bad_alloc&) {
        return platform::outOfMemoryCode();
    }
}

} // namespace machine

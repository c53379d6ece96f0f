#include "tavctl/bus/busFile.h"

#include "pcibus/readBus.h"
#include "platform/utf8Path.h"
#include "tavctl/words/failure.h"

namespace tavctl {

pcibus::Bus readBusFile(const std::string& location) {
    try {
        return pcibus::readBus(platform::utf8Path(location));
    } catch (const pcibus::BusError& error) {
        throw FailureException({"read the bus", location, error.what(), {}, {}});
    }
}

} // namespace tavctl

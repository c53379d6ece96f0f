#include "tavctl/bus/busFile.h"

#include "pcibus/readBus.h"
#include "tavctl/bus/busFailure.h"

#include <utility>

namespace tavctl {

ReadBus readBusFile(const std::string& location) {
    try {
        pcibus::LeftOut leftOut;
        pcibus::Bus bus = pcibus::readBus(location, &leftOut);
        return {std::move(bus), leftOut};
    } catch (const pcibus::BusError& error) {
        throw FailureException(busFailure(location, error.what()));
    }
}

} // namespace tavctl

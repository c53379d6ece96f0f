#include "pcibus/pciFunction.h"

#include <cstdio>

namespace pcibus {

std::string addressTextOf(unsigned bus, unsigned device, unsigned function) {
    char text[32]; // wider than an address: numbers that are none are written too
    std::snprintf(text, sizeof text, "%02x:%02x.%x", bus, device, function);
    return text;
}

std::string addressText(const PciFunction& function) {
    return addressTextOf(function.bus, function.device, function.function);
}

} // namespace pcibus

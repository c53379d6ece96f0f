#include "pcibus/pciFunction.h"

#include <cstdio>

namespace pcibus {

std::string addressText(const PciFunction& function) {
    char text[16];
    std::snprintf(text, sizeof text, "%02x:%02x.%x", unsigned{function.bus},
                  unsigned{function.device}, unsigned{function.function});
    return text;
}

} // namespace pcibus

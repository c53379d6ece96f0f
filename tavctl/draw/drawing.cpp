#include "tavctl/draw/drawing.h"

#include "tavctl/draw/deviceDrawing.h"
#include "tavctl/draw/frontDrawing.h"
#include "tavctl/draw/machineDrawing.h"

namespace tavctl {

std::string drawingAsDot(std::span<const BusTreeView> domains, const PciNames& names,
                         const DrawingOptions& options) {
    switch (options.kind) {
    case DrawingOptions::Kind::devices:
        return devicesAsDot(domains.front(), names, options.title);
    case DrawingOptions::Kind::machine:
        return machineAsDot(domains, names, options.title);
    case DrawingOptions::Kind::fronts:
        break;
    }
    return frontsAsDot(domains.front(), names, options.title);
}

} // namespace tavctl

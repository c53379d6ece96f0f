// What the page of tavctl report knows of recorded machines, as JSON with short names: a page has
// thousands of machines.
//
//   title     of the page
//   models    and texts: what is named by its position there
//   ids       of the texts' functions, "8086:10d3"
//   machines  one for each recording:
//     n  machine   r  recording   f  why it could not be read, or null   x  what was left out, or
//     "" g  absent boxes, each [name, model, slot path, what stands nearest to where it stood or
//     ""] b  boxes, as the plug-in lists them:
//       n  name   s  1 when it is stored   m  model, in models   a  address   p  slot path or ""
//       i  the connector that it is plugged into ("TAV1 connector 2"), or ""
//       u  the link upstream
//       k  connectors, in label order:
//         l  labels   w  the link   x  1 when the port is described and not there
//         b  boxes in it, by their positions   f  other functions in it, each [address, in texts]
//
// A link is [lanes, lanes that both ends can, speed, speed that both ends can, 1 when one of them
// is less than it could be], with speeds by their numbers and 0 for what is not known; null where
// nothing is known.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/match/placedDevices.h"
#include "tavctl/view/machineState.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/json.h"

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tavctl {

// One machine of the page.
struct ReportedMachine {
    std::string machine;
    std::string recording;
    std::optional<Failure> failure; // why there is nothing else
    WholeBus bus;
    std::vector<PlacedDevice> devices;
    std::vector<AbsentDevice> absent;
};

class ReportData {
public:
    explicit ReportData(const PciNames& names) : names_(names) {}

    void add(ReportedMachine machine);

    // The whole as JSON that can stand in a page: it has no "<".
    [[nodiscard]] std::string text(const std::string& title) const;

    // A row of HTML for each machine: recording, boxes, absent ones.
    [[nodiscard]] const std::string& rows() const { return rows_; }

private:
    // Texts that stand once, each with its position.
    class Texts {
    public:
        std::size_t positionOf(const std::string& text);
        [[nodiscard]] const std::vector<std::string>& all() const { return all_; }

    private:
        std::unordered_map<std::string, std::size_t> positions_;
        std::vector<std::string> all_;
    };

    Json boxes(const ReportedMachine& machine);
    std::size_t positionOf(const SeenFunction& function);

    const PciNames& names_;
    Texts models_;
    Texts functions_; // by their identifiers
    std::vector<std::string> functionNames_;
    std::string machines_; // with a comma behind each
    std::string rows_;
};

// A text as HTML has it between tags and within quotes, with what cannot be seen by its number.
std::string asHtml(const std::string& text);

} // namespace tavctl

// Looks at the machine again and again, as a host does each time.
#pragma once

#include "platform/fileMark.h"
#include "tavctl/bus/pciNames.h"
#include "tavctl/host/deviceLook.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/view/machineState.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tavctl::monitor {

class Looker {
public:
    // Stores names with every look, or never. The options must outlive it. Raises FailureException.
    Looker(const CommonOptions& options, bool stores, const std::string& pciIds);

    // Says on standard error what the look before has not said already. A name that is given and
    // not stored stays its device's for as long as the names that are stored do not change. Raises
    // FailureException.
    MachineState look();

    // What can be told at little cost of all that a look depends on, of a recorded bus: it is
    // another text when something of that has changed. Of the machine's own bus it is so when a
    // function came or went.
    [[nodiscard]] std::string mark() const;

private:
    MachineState lookOnce();
    MachineState lookAt(const HostSetup& setup, Devices devices) const;
    const HostSetup& setupOfCopy();
    void keepMarks(std::vector<ListedDevice>& devices);
    void say(const std::vector<std::string>& pieces);

    const CommonOptions& options_;
    bool stores_;
    NamedDump dump_; // standard input is there once only
    PciNames names_;
    std::unique_ptr<const HostSetup> setup_;              // with a copy of the names
    std::optional<platform::FileMark> copiedNames_;       // of the names when they were copied
    std::set<std::pair<std::string, std::string>> given_; // names, with models, that are not stored
    std::vector<std::string> said_;
};

} // namespace tavctl::monitor

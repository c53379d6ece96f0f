// A machine for the plug-in to look at: a recorded bus, description files, a name file, and the
// configuration that names them, all in a temporary folder.
#pragma once

#include "tests/support/busBuilder.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <cstddef>
#include <string>

namespace bench {

// A description file (2 kB) of a switch that is recognised by its upstream port, with 23 downstream
// ports; those of testsupport::bigBus() have the subsystem identifiers 0x0100 to 0x0109.
std::string switchDescription(std::size_t number, unsigned subsystem);

// One of a card that is recognised by one of its functions; it has a connector at the port above.
// Those of bigBus() have the functions 0 to 5 and the subsystem identifiers 0 to 229.
std::string cardDescription(std::size_t number, unsigned function, unsigned subsystem);

class Machine {
public:
    explicit Machine(const testsupport::BusBuilder& bus) : Machine(bus.dump()) {}
    // On a recorded bus of another make.
    explicit Machine(const std::string& dump);

    // `models` description files, of which every fourth is on bigBus(), once each: first its ten
    // switches, then cards, as far as there are any: from 5,560 models on, further ones are for
    // cards that are not there. Of the others a third have an anchor that is on the bus.
    void describe(std::size_t models);
    // One description file more.
    void describe(const std::string& description);
    [[nodiscard]] std::size_t devices() const { return devices_; }

    // The name file: `names` other devices that were there once, and none that is there now.
    // Without a call there is no name file.
    void remember(std::size_t names);
    // Puts the name file back to what remember() wrote.
    void forgetNewNames() const;

    struct Result {
        double seconds;
        double processorSeconds; // without what other programs were given meanwhile
        std::size_t devices;
    };
    // The plug-in's initialize in a fresh process. Raises std::runtime_error when it fails.
    [[nodiscard]] Result initializeOnce() const;

private:
    testsupport::TemporaryFolder folder_;
    testsupport::EnvironmentValue dump_;
    testsupport::EnvironmentValue configuration_;
    std::size_t files_ = 0;
    std::size_t devices_ = 0;
    std::string names_;
};

} // namespace bench

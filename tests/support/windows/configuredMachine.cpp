#include "tests/support/configuredMachine.h"

#include "pcibus/busError.h"
#include "pcibus/readBus.h"
#include "platform/utf8Path.h"
#include "tests/support/environmentValue.h"
#include "tests/support/windows/presentDevice.h"

#include <vector>

namespace testsupport {

namespace {

constexpr const char* kKey = "SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion";

} // namespace

struct ConfiguredMachine::State {
    State(const std::filesystem::path& dump, const Configuration& values)
        : location("TAV_PCI_DUMP", platform::utf8Text(dump)), configuration(kKey, KEY_WOW64_32KEY) {
        configuration.set("", "Path", REG_SZ, values.path + '\0');
        configuration.set("", "ConfigPath", REG_SZ, values.configPath + '\0');
        try {
            const pcibus::Bus bus = pcibus::readBus(platform::utf8Text(dump));
            for (const pcibus::PciFunction& function : bus.functions())
                devices.push_back(makePresentDevice(function));
        } catch (const pcibus::BusError&) {
            // A bus that cannot be read has no devices; the product says so itself.
        }
    }

    EnvironmentValue location;
    RegistryTree configuration;
    std::vector<RegistryTree> devices;
};

ConfiguredMachine::ConfiguredMachine(const std::filesystem::path& dump,
                                     const Configuration& configuration)
    : state_(std::make_unique<State>(dump, configuration)) {}

ConfiguredMachine::~ConfiguredMachine() = default;

} // namespace testsupport

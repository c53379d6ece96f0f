#include "tests/support/configuredMachine.h"

#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

namespace testsupport {

namespace {

// As an administrator writes it.
std::string textOf(const Configuration& configuration) {
    std::string text = "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n";
    text.append("Path = ").append(configuration.path).append("\n");
    text.append("ConfigPath = ").append(configuration.configPath).append("\n");
    return text;
}

} // namespace

struct ConfiguredMachine::State {
    State(const std::filesystem::path& dump, const Configuration& configuration)
        : bus("TAV_PCI_DUMP", dump.string()),
          file("TAV_MANAGER_CONF", folder.file("tav.conf", textOf(configuration)).string()) {}

    TemporaryFolder folder;
    EnvironmentValue bus;
    EnvironmentValue file;
};

ConfiguredMachine::ConfiguredMachine(const std::filesystem::path& dump,
                                     const Configuration& configuration)
    : state_(std::make_unique<State>(dump, configuration)) {}

ConfiguredMachine::~ConfiguredMachine() = default;

} // namespace testsupport

// A machine of the test's own, for this process and the programs that it starts: a recorded bus and
// a configuration, in the places where this system has them.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace testsupport {

// The values "Path" and "ConfigPath", each ending with a separator as a folder's prefix must.
struct Configuration {
    std::string path;
    std::string configPath;
};

// Puts both in force, and takes them back at the end. On Linux a configuration file and the
// variables of the environment; on Windows the registry: the configuration's key in its 32-bit
// view, and a present device with its "BusProperties" for each function of the bus. One at a time
// on one system: tests that use it hold ctest's lock "machine".
class ConfiguredMachine {
public:
    ConfiguredMachine(const std::filesystem::path& dump, const Configuration& configuration);
    ~ConfiguredMachine();
    ConfiguredMachine(const ConfiguredMachine&) = delete;
    ConfiguredMachine& operator=(const ConfiguredMachine&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace testsupport

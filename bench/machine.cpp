#include "bench/machine.h"

#include "bench/require.h"
#include "tests/support/command.h"

#include <cstdio>
#include <tuple>

namespace bench {

namespace {

constexpr unsigned kSwitches = 10;
constexpr unsigned kPorts = 23;    // of each switch
constexpr unsigned kFunctions = 6; // behind each port
constexpr unsigned kFirstSwitchSubsystem = 0x0100;

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[256];
    const int length = std::snprintf(text, sizeof text, format, values...);
    require(length >= 0 && static_cast<std::size_t>(length) < sizeof text, "text too long");
    return text;
}

std::string header(std::size_t number, const std::string& labels, const std::string& ports,
                   unsigned headerType, unsigned vendor, unsigned device, unsigned subsystem) {
    return formatted("[UpstreamTAV]\nModel = Model %zu\nDeviceCategory = SwitchboxTav\n"
                     "InternalBridges = \"\"\n",
                     number) +
           "ConnectorLabels = " + labels + "\nDownstreamPorts = " + ports +
           formatted("\nHasUpstreamPort = 1\n\n[Anchor]\nPciHeaderType = %X\nVid = %04X\n"
                     "Pid = %04X\nSsVid = 1234\nSsPid = %04X\n",
                     headerType, vendor, device, subsystem);
}

} // namespace

std::string switchDescription(std::size_t number, unsigned subsystem) {
    std::string numbers;
    std::string sections;
    for (unsigned port = 0; port < kPorts; ++port) {
        numbers += formatted(port == 0 ? "%u" : ",%u", port);
        sections += formatted("\n[DownstreamPort%u]\nIDsSameAs = DownstreamPort\n"
                              "TraversalMapFromAnchor = d%uf0\n",
                              port, port);
    }
    return header(number, "HOST," + numbers, numbers, 1, 0x10B5, 0x8749, subsystem) +
           "\n[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n"
           "\n[DownstreamPort]\nVid = 10B5\nPid = 8749\nSsVid = 1234\nSsPid = 0200\n" +
           sections;
}

std::string cardDescription(std::size_t number, unsigned function, unsigned subsystem) {
    return header(number, "HOST", "\"\"", 0, 0x1172, 0xE000 + function, subsystem) +
           "\n[UpstreamPort]\nVid = 10B5\nPid = 8749\nSsVid = 1234\nSsPid = 0200\n"
           "TraversalMapFromAnchor = -\n";
}

Machine::Machine(const std::string& dump)
    : dump_("TAV_PCI_DUMP", folder_.file("bus.dump", dump).string()),
      configuration_("TAV_MANAGER_CONF",
                     folder_
                         .file("host.conf", "[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\n"
                                            "Path = " +
                                                folder_.path().string() + "/\nConfigPath = " +
                                                folder_.path().string() + "/\n")
                         .string()) {}

void Machine::describe(const std::string& description) {
    std::ignore =
        folder_.file(formatted("PCI Hardware Descriptions/%04zu.ini", files_++), description);
}

void Machine::describe(std::size_t models) {
    // No such subsystem identifiers on the bus.
    constexpr unsigned kAbsent = 0x8000;
    constexpr unsigned kAbsentCards = 0xC000;
    for (unsigned model = 0; model < models; ++model) {
        const unsigned quarter = model / 4;
        if (model % 4 == 0) {
            const unsigned card = quarter - kSwitches; // when it is not below 0
            const bool isSwitch = quarter < kSwitches;
            require(quarter < kAbsentCards - kAbsent, "too many models");
            if (!isSwitch && card >= kSwitches * kPorts * kFunctions) {
                describe(cardDescription(model, 0, kAbsentCards + quarter));
                continue;
            }
            describe(isSwitch ? switchDescription(model, kFirstSwitchSubsystem + quarter)
                              : cardDescription(model, card % kFunctions, card / kFunctions));
            ++devices_;
        } else if (model % 4 == 1) {
            // The switch is there, but one port of this model is not.
            std::string description =
                switchDescription(model, kFirstSwitchSubsystem + quarter % kSwitches);
            description += "\n[InternalBridge1]\nIDsSameAs = Anchor\n"
                           "TraversalMapFromAnchor = d30f0\n";
            const std::string none = "InternalBridges = \"\"";
            description.replace(description.find(none), none.size(), "InternalBridges = 1");
            describe(description);
        } else if (model % 4 == 2) {
            describe(switchDescription(model, kAbsent + quarter));
        } else {
            describe(cardDescription(model, 0, kAbsent + quarter));
        }
    }
}

void Machine::remember(std::size_t names) {
    names_.clear();
    // Slots below root bus 1, where there is nothing.
    for (std::size_t name = 0; name < names; ++name)
        names_ += formatted("[MR01:%02zX,%02zX,%02zX]\r\nModel = Model %zu\r\n"
                            "TerminalName = TAV%zu\r\n\r\n",
                            name & 0xFF, name >> 8 & 0xFF, name >> 16, name % 200, name + 1);
    forgetNewNames();
}

void Machine::forgetNewNames() const {
    std::ignore = folder_.file("zotavpci.ini", names_);
}

Machine::Result Machine::initializeOnce() const {
    const testsupport::CommandResult run =
        testsupport::runCommand(std::string("exec '") + TAV_BENCH_INITIALIZE_ONCE + "'");
    Result result{};
    require(run.exitStatus == 0 && std::sscanf(run.output.c_str(), "%lf %lf %zu", &result.seconds,
                                               &result.processorSeconds, &result.devices) == 3,
            run.output);
    return result;
}

} // namespace bench

#include "tavctl/monitor/monitorCommand.h"

#include "platform/busLocation.h"
#include "tavctl/monitor/looker.h"
#include "tavctl/monitor/monitor.h"
#include "tavctl/words/print.h"

#include <memory>
#include <optional>
#include <string>

namespace tavctl {

namespace {

using platform::DeviceEvents;
using std::chrono::seconds;

constexpr int kNotGiven = -1;
constexpr int kUsualPeriod = 5;
constexpr int kLongestPeriod = 86400;
constexpr int kLongestWatch = 100'000'000;

struct MonitorOptions {
    CommonOptions common;
    std::string pciIds;
    int every = kNotGiven;
    int length = kNotGiven;
    bool store = false;
};

std::optional<seconds> ifGiven(int number) {
    return number == kNotGiven ? std::nullopt : std::optional(seconds(number));
}

ExitStatus runMonitor(const MonitorOptions& options) {
    using namespace monitor;
    const auto every = ifGiven(options.every);
    const seconds period = every.value_or(seconds(kUsualPeriod));
    // Before the first look, so that nothing is missed in between. Nobody tells of a recorded bus.
    const bool isRecorded = !options.common.dump.empty() || platform::isBusRecorded();
    SystemSource system(isRecorded ? DeviceEvents::Listening::no : DeviceEvents::Listening::yes);
    Looker looker(options.common, options.store, options.pciIds);
    Rhythm rhythm;
    rhythm.every = isRecorded ? std::nullopt : every;
    rhythm.retry = period;
    rhythm.length = ifGiven(options.length);
    std::optional<PolledSource> polled;
    if (isRecorded || (!every && !system.isWoken())) {
        polled.emplace(system, period, [&] { return looker.mark(); });
        rhythm.toldEvery = period;
    }
    ChangeSource& source = polled ? static_cast<ChangeSource&>(*polled) : system;
    Monitor watch(
        source, [&] { return looker.look(); },
        [&](const std::vector<Event>& events) {
            const Event::Time now = std::chrono::system_clock::now();
            std::string text;
            for (const Event& event : events)
                text += options.common.json ? eventAsJson(event, now) : eventAsText(event, now);
            print(text);
        },
        rhythm);
    watch.run();
    return ExitStatus::done;
}

} // namespace

Command addMonitorCommand(OptionParser& parser) {
    auto options = std::make_shared<MonitorOptions>();
    CommandOptions command = parser.command("monitor", "Stay, and tell what changes");
    command.number("--every", options->every, "SECONDS", 1, kLongestPeriod,
                   "Look so often, too (1-86400)");
    command.number("--for", options->length, "SECONDS", 0, kLongestWatch,
                   "End after so long (0-100000000)");
    command.flag("--store", options->store, "Store the names, as list does");
    command.value("--pci-ids", options->pciIds, ValueForm::file(),
                  "Names of vendors and devices (pci.ids)");
    options->common.addTo(command);
    command.footer("Writes: nothing; with --store, the terminal names.\n"
                   "Ctrl-C and a request to end it end it with status 0.\n"
                   "Example: tavctl monitor --json");
    return makeCommand(command, std::move(options), runMonitor);
}

} // namespace tavctl

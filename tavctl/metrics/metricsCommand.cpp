#include "tavctl/metrics/metricsCommand.h"

#include "tavctl/host/deviceLook.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/metrics/deviceMetrics.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/resultFile.h"

#include <chrono>
#include <cmath>
#include <exception>
#include <memory>
#include <utility>

namespace tavctl {

namespace {

struct MetricsOptions {
    CommonOptions common;
    ResultTarget output{.file = {}, .replace = true, .isPublic = true};
    bool store = false;
    bool openMetrics = false;
};

MetricText newText(const MetricsOptions& options) {
    return MetricText(options.openMetrics ? MetricText::Form::openMetrics
                                          : MetricText::Form::prometheus);
}

void addDevicesOf(const MetricsOptions& options, MetricText& text) {
    const NamedDump dump(options.common.dump); // standard input is there once only
    HostLook look = lookAsHost(options.common, options.store);
    const auto bus = wholeBusIfReadable();
    const WholeBus* const known = bus ? &*bus : nullptr;
    addDeviceMetrics(text, makeListing(look.devices.present, std::move(look.devices.absent), known),
                     known);
}

// To the thousandth of a second.
double rounded(double seconds) {
    constexpr double kThousand = 1000;
    return std::round(seconds * kThousand) / kThousand;
}

ExitStatus runMetrics(const MetricsOptions& options) {
    using Seconds = std::chrono::duration<double>;
    LookTaken look;
    look.at = rounded(Seconds(std::chrono::system_clock::now().time_since_epoch()).count());
    const auto start = std::chrono::steady_clock::now();
    MetricText text = newText(options);
    std::exception_ptr failure;
    try {
        addDevicesOf(options, text);
    } catch (const FailureException&) {
        // Told with the others; a collector is told first.
        failure = std::current_exception();
        text = newText(options);
    }
    look.success = failure == nullptr;
    look.took = rounded(Seconds(std::chrono::steady_clock::now() - start).count());
    addLookMetrics(text, look);
    writeResult(text.take(), options.output);
    if (failure != nullptr)
        std::rethrow_exception(failure);
    return ExitStatus::done;
}

} // namespace

Command addMetricsCommand(OptionParser& parser) {
    auto options = std::make_shared<MetricsOptions>();
    CommandOptions command =
        parser.command("metrics", "Print the devices as metrics for Prometheus");
    command.flag("--openmetrics", options->openMetrics, "In the form of OpenMetrics");
    command.flag("--store", options->store, "Store names, as list does");
    command.value("-o,--output", options->output.file, ValueForm::newFile(),
                  "File to write or replace, for everybody to read");
    options->common.addBusTo(command);
    command.footer("A look that fails is a metric too; the exit status tells it.\n"
                   "Writes: the file of -o; the terminal names with --store only.\n"
                   "Example: tavctl metrics -o /var/lib/prometheus/node-exporter/tav.prom");
    return makeCommand(command, std::move(options), runMetrics);
}

} // namespace tavctl

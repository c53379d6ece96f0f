#include "tavctl/report/reportCommand.h"

#include "tavctl/host/descriptionFiles.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/recordings/machineLook.h"
#include "tavctl/recordings/recordingRun.h"
#include "tavctl/report/reportPage.h"
#include "tavctl/view/markedBus.h"
#include "tavctl/words/print.h"

#include <memory>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct ReportOptions {
    CommonOptions common;
    std::vector<std::string> recordings; // none: the bus at hand
    std::string title;
    ResultTarget output;
};

// The bus at hand, with the names in force.
void addMachine(const CommonOptions& options, ReportData& data) {
    const HostSetup setup(options, Names::copied);
    const auto marked = std::make_unique<MarkedBus>(options, setup);
    ReportedMachine machine;
    machine.machine =
        options.dump.empty() ? "This machine" : recordingsAt({options.dump}).front().machine;
    machine.recording = options.dump;
    machine.absent = absentDevices(setup, marked->listed());
    machine.devices = std::move(marked->devices);
    machine.bus = std::move(marked->whole);
    data.add(std::move(machine));
}

ReportedMachine reportOf(const Recording& recording, const Models& models) {
    MachineLook look = lookAt(recording, models);
    ReportedMachine machine{
        recording.machine,     recording.name, std::move(look.failure), std::move(look.bus), {},
        std::move(look.absent)};
    if (!machine.failure)
        machine.devices = placeDevices(look.devices, look.survey, *machine.bus.searched);
    return machine;
}

// Whether each could be read.
bool addRecordings(const ReportOptions& options, ReportData& data) {
    const auto recordings = recordingsAt(options.recordings);
    const HostSetup setup(optionsForMany(options.common, "report"));
    const Models models = modelsInForce();
    if (models->GetModelCount() == 0)
        explainNoDescriptions();
    bool isWhole = true;
    resultsOf<ReportedMachine>(
        recordings, "looking at recordings",
        [&](const Recording& recording) { return reportOf(recording, models); },
        [&](const Recording&, ReportedMachine machine, Progress& progress) {
            if (machine.failure) {
                const Progress::Hidden hidden(progress);
                isWhole = false;
                complain(machine.failure->sentence());
            }
            data.add(std::move(machine));
        });
    return isWhole;
}

ExitStatus runReport(const ReportOptions& given) {
    ReportOptions options = given;
    requireFree(options.output);
    // A folder of recordings is no bus, wherever it is named.
    if (options.recordings.empty() && isCollection(options.common.dump))
        options.recordings.push_back(options.common.dump);
    const PciNames names = PciNames::load({});
    ReportData data(names);
    bool isWhole = true;
    if (options.recordings.empty())
        addMachine(options.common, data);
    else
        isWhole = addRecordings(options, data);
    writeResult(reportPage(data, options.title), options.output);
    return isWhole ? ExitStatus::done : ExitStatus::failed;
}

} // namespace

Command addReportCommand(OptionParser& parser) {
    auto options = std::make_shared<ReportOptions>();
    options->title = "TAV hardware";
    CommandOptions command =
        parser.command("report", "Make a page of recorded machines for browsers");
    command.arguments(options->recordings, ValueForm::file("RECORDING"),
                      "Recorded buses, or folders of them (default: this bus)");
    command.value("--title", options->title, ValueForm::text("TEXT"), "What stands above the page");
    tavctl::addTo(command, options->output);
    options->common.addBusTo(command);
    command.footer("One HTML file that needs nothing else. Names are read from rack7.ini beside\n"
                   "rack7.dump; recordings of one name are of one machine, in that order.\n"
                   "Writes: the file of -o only.\n"
                   "Example: tavctl report samples/*.dump -o lab.html");
    return makeCommand(command, std::move(options), runReport);
}

} // namespace tavctl

#include "tavctl/record/recordCommand.h"

#include "pcibus/busError.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/busFailure.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/record/busRecording.h"
#include "tavctl/words/progress.h"

namespace tavctl {

namespace {

struct RecordOptions {
    CommonOptions common;
    bool scrub = false;
    ResultTarget output;
};

BusRecording recordChosenBus() {
    const std::string location = chosenBusLocation();
    const Progress progress("recording the bus");
    try {
        return recordBus(platform::utf8Path(location));
    } catch (const pcibus::BusError& error) {
        throw FailureException(busFailure(location, error.what()));
    }
}

ExitStatus runRecord(const RecordOptions& options) {
    const HostSetup setup(options.common);
    requireFree(options.output);
    BusRecording recording = recordChosenBus();
    tellLeftOut(recording.leftOut);
    if (options.scrub)
        recording = scrubbedRecording(recording);
    writeResult(recordingText(recording, "tavctl " TAVCTL_VERSION), options.output);
    return ExitStatus::done;
}

} // namespace

Command addRecordCommand(OptionParser& parser) {
    auto options = std::make_shared<RecordOptions>();
    CommandOptions command = parser.command("record", "Write the bus as a dump");
    command.flag("--scrub", options->scrub, "Leave out what does not matter to matching");
    tavctl::addTo(command, options->output);
    options->common.addBusTo(command);
    command.footer("Writes: the file of -o only.\n"
                   "Example: tavctl record --scrub -o bus.txt");
    return makeCommand(command, std::move(options), runRecord);
}

} // namespace tavctl

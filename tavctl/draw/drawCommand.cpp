#include "tavctl/draw/drawCommand.h"

#include "platform/childProgram.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/draw/drawing.h"
#include "tavctl/draw/svgTitles.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/view/partOptions.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

#include <memory>

namespace tavctl {

namespace {

constexpr const char* kLayoutProgram = "dot";

struct DrawOptions {
    CommonOptions common;
    PartOptions part;
    std::string format = "svg";
    ResultTarget output;
    bool all = false;
    bool front = false;
};

[[noreturn]] void fail(const std::string& reason) {
    throw FailureException({"lay out the drawing",
                            kLayoutProgram,
                            reason + "; Graphviz does this, --format dot works without it",
                            {},
                            {}});
}

std::string laidOut(const std::string& dot) {
    const Progress progress("laying out the drawing");
    const platform::ProgramRun run = platform::runProgram({kLayoutProgram, "-Tsvg"}, dot);
    if (run.failure != platform::kNoSystemError)
        fail(platform::systemMessage(run.failure));
    if (run.exitStatus != 0 || run.output.empty())
        fail("it ended with status " + std::to_string(run.exitStatus));
    return run.output;
}

ExitStatus runDraw(const DrawOptions& options) {
    const HostSetup setup(options.common, Names::copied);
    requireFree(options.output);
    const PciNames names = PciNames::load(options.part.pciIds);
    const auto marked = std::make_unique<MarkedBus>(options.common, setup);
    tellLeftOut(marked->whole.leftOut);
    auto views = marked->views();
    showPart(options.part, *marked, views);
    DrawingOptions drawing;
    drawing.title =
        options.common.dump.empty() ? "This machine" : NamedDump::titleOf(options.common.dump);
    if (options.all || options.front)
        drawing.kind = options.all ? DrawingOptions::Kind::machine : DrawingOptions::Kind::fronts;
    const std::string dot = drawingAsDot(views, names, drawing);
    writeResult(options.format == "dot" ? dot : withTitles(laidOut(dot), drawing.title),
                options.output);
    return ExitStatus::done;
}

} // namespace

Command addDrawCommand(OptionParser& parser) {
    auto options = std::make_shared<DrawOptions>();
    CommandOptions command = parser.command("draw", "Draw the devices and their connectors");
    tavctl::addTo(command, options->output);
    command.value("--format", options->format, ValueForm::choice("FORMAT", {"svg", "dot"}),
                  "svg (by Graphviz) or dot (for Graphviz)");
    command.flag("--all", options->all, "The whole machine, described or not");
    command.flag("--front", options->front, "The devices as front plates, without lines");
    command.excludes("--front", "--all");
    options->part.addTo(command);
    options->common.addBusTo(command);
    command.footer("Writes: the file of -o only.\n"
                   "Example: tavctl draw -o bus.svg");
    return makeCommand(command, std::move(options), runDraw);
}

} // namespace tavctl

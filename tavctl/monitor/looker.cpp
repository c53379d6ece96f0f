#include "tavctl/monitor/looker.h"

#include "platform/busLocation.h"
#include "platform/folderReader.h"
#include "platform/utf8Path.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/match/deviceSurvey.h"
#include "tavctl/match/placedDevices.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <algorithm>
#include <exception>
#include <filesystem>

namespace tavctl::monitor {

namespace {

namespace fs = std::filesystem;

std::string markText(const fs::path& path) {
    const auto mark = platform::markOfFile(path);
    return mark ? fmt::format("{} {} {}\n", mark->written, mark->size, mark->identity) : "none\n";
}

// The functions of a tree like /sys. The times of a live one's files say nothing: they are made as
// they are looked at.
std::string markOfTree(const fs::path& root, bool isLive) {
    const fs::path folder = root / "bus" / "pci" / "devices";
    std::vector<std::string> names;
    if (platform::FolderReader(platform::utf8Text(folder)).list(names) != 0)
        return "none\n";
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) {
        const fs::path function = folder / platform::utf8Path(name);
        text += name + " ";
        if (!isLive) {
            text += markText(function / "config");
        } else if (const auto mark = platform::markOfFile(function)) {
            text += fmt::format("{}\n", mark->identity);
        }
    }
    return text;
}

std::string markOfBus() {
    const auto location = platform::busLocation();
    if (!location)
        return {};
    const fs::path path = platform::utf8Path(*location);
    std::error_code ignored;
    return fs::is_directory(path, ignored) ? markOfTree(path, !platform::isBusRecorded())
                                           : markText(path);
}

std::string markOfDescriptions() {
    try {
        std::string text;
        for (const std::string& file : descriptionFiles())
            text += file + " " + markText(platform::utf8Path(file));
        return text;
    } catch (const FailureException& exception) {
        return exception.what();
    }
}

} // namespace

Looker::Looker(const CommonOptions& options, bool stores, const std::string& pciIds)
    : options_(options), stores_(stores), dump_(options.dump), names_(PciNames::load(pciIds)) {
    if (!stores)
        setupOfCopy();
}

// Copied anew when the names have changed, and when the copy has gone: systems remove what stays
// long in folders for temporary files.
const HostSetup& Looker::setupOfCopy() {
    std::error_code ignored;
    const bool isGood = setup_ != nullptr &&
                        platform::markOfFile(setup_->nameFile()) == copiedNames_ &&
                        fs::exists(setup_->nameFileInForce(), ignored);
    if (isGood)
        return *setup_;
    setup_.reset(); // one at a time
    given_.clear();
    setup_ = std::make_unique<const HostSetup>(options_, Names::copied);
    copiedNames_ = platform::markOfFile(setup_->nameFile());
    return *setup_;
}

// In the copy a name that was given before is a stored one.
void Looker::keepMarks(std::vector<ListedDevice>& devices) {
    for (ListedDevice& device : devices) {
        if (!device.isStored)
            given_.emplace(device.terminalName, device.model);
        else
            device.isStored = !given_.contains({device.terminalName, device.model});
    }
}

void Looker::say(const std::vector<std::string>& pieces) {
    for (const std::string& piece : pieces) {
        if (std::find(said_.begin(), said_.end(), piece) == said_.end())
            complainInLines(piece);
    }
    said_ = pieces;
}

MachineState Looker::lookAt(const HostSetup& setup, Devices devices) const {
    if (!options_.json)
        explainMarks(devices.present);
    const WholeBus whole = machineBus();
    return makeState(placeDevices(devices.present, surveyDevices(setup), *whole.searched),
                     std::move(devices.absent), whole, names_);
}

MachineState Looker::lookOnce() {
    if (stores_) {
        HostLook look = lookAsHost(options_, true);
        return lookAt(*look.setup, std::move(look.devices));
    }
    const HostSetup& setup = setupOfCopy();
    Devices devices = lookForDevices(options_, setup);
    keepMarks(devices.present);
    return lookAt(setup, std::move(devices));
}

// What is said before a look fails may be why it does.
MachineState Looker::look() {
    MachineState state;
    std::exception_ptr failure;
    std::vector<std::string> pieces;
    {
        const HeldComplaints held;
        try {
            state = lookOnce();
        } catch (const FailureException&) {
            failure = std::current_exception();
        }
        pieces = held.pieces();
    }
    say(pieces);
    if (failure != nullptr)
        std::rethrow_exception(failure);
    return state;
}

std::string Looker::mark() const {
    return markOfBus() + markOfDescriptions() +
           (setup_ == nullptr ? std::string() : markText(setup_->nameFile()));
}

} // namespace tavctl::monitor

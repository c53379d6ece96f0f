#include "tavctl/recordings/machineLook.h"

#include "platform/utf8Path.h"
#include "source/cPciModelInfoDb.h"
#include "source/cPciTavFilesystem.h"
#include "source/exceptionStatus.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/modelMatcher.h"

#include <set>
#include <utility>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;

// The plug-in's interface tells 0 as an attribute that the device does not carry.
std::optional<std::int32_t> unlessZero(std::uint32_t value) {
    return value == 0 ? std::nullopt : std::optional(static_cast<std::int32_t>(value));
}

ListedDevice listedDevice(const MatchedDevice& matched, bool isStored) {
    const tDeviceRecord& record = matched.record;
    ListedDevice device;
    device.model = record.modelName;
    device.category = static_cast<std::int32_t>(record.deviceCategory);
    device.bus = record.bus;
    device.device = record.device;
    device.function = record.function;
    if (record.walkValue != kNoWalkValue)
        device.upstreamBus = static_cast<std::int32_t>(record.walkValue);
    device.linkWidthPerLabel = unlessZero(record.linkWidthPerLabel);
    device.terminalName = record.terminalName;
    for (const tPortEntry& port : record.ports)
        device.ports.push_back({port.connectorLabel, static_cast<std::int32_t>(port.first),
                                unlessZero(port.second), unlessZero(port.third)});
    device.isStored = isStored;
    device.slotPath = matched.slotPath;
    return device;
}

void fill(MachineLook& look, const Recording& recording, const Models& models) {
    look.bus = readWholeBus(recording.dump.path());
    look.survey = surveyOf(recording, look.bus, models);
    const NameFile names = namesOf(recording);
    std::set<std::pair<std::string, std::string>> stored;
    for (const NameEntry& entry : names.entries())
        stored.emplace(entry.terminalName, entry.model);
    for (const MatchedDevice& device : look.survey)
        look.devices.push_back(listedDevice(
            device, stored.contains({device.record.terminalName, device.record.modelName})));
    look.absent = absentDevices(names, look.devices);
}

} // namespace

Models modelsInForce() {
    try {
        cPciTavFilesystem filesystem;
        cPciModelInfoDb loaded;
        loaded.LoadDescriptions(filesystem);
        std::vector<tModelDescription> models;
        for (std::uint32_t index = 0; index < loaded.GetModelCount(); ++index)
            models.push_back(loaded.GetModel(index));
        return std::make_shared<ModelList>(std::move(models));
    } catch (...) {
        throw FailureException(diagnoseInitialize(statusOfCurrentException(), "this program"));
    }
}

NameFile namesOf(const Recording& recording) {
    return recording.nameFile.empty() ? NameFile()
                                      : NameFile(platform::utf8Path(recording.nameFile), false);
}

Survey surveyOf(const Recording& recording, const WholeBus& bus, const Models& models) {
    return ModelMatcher(recordedBus(bus.searched)).match(*models, recording.nameFile);
}

MachineLook lookAt(const Recording& recording, const Models& models) {
    MachineLook seen;
    seen.failure = recording.failure;
    if (seen.failure)
        return seen;
    try {
        fill(seen, recording, models);
    } catch (const FailureException& exception) {
        seen = {};
        seen.failure = exception.failure();
    }
    return seen;
}

} // namespace tavctl

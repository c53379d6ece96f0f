#include "tavctl/match/modelMatcher.h"

#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "platform/dynamicLibrary.h"
#include "quil/cQUILDeviceFinder.h"
#include "quil/zoerr.h"
#include "source/cPciTavPluginCache.h"
#include "source/exceptionStatus.h"
#include "source/modelList.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/match/deviceRecorder.h"
#include "tavctl/match/scratchNames.h"
#include "tavctl/words/failure.h"

namespace tavctl {

using namespace nZoTavManagerPciPlugin_15_0;

MatchBus hostBus() {
    nZOQUIL000::tErrorStatus status;
    auto wrapper = std::make_unique<nZoPciBrdWrapper_15_0::cPciBrdWrapper_ex>(status);
    if (status.failed())
        throw FailureException({"load bridge library",
                                platform::libraryFileName("zopcibrd"),
                                {},
                                status.code,
                                status.textOrEmpty()});
    auto finder = std::make_unique<cQUILDeviceFinder>(
        [of = wrapper.get()] { return of->SessionFunctions(); });
    return {std::move(finder), std::move(wrapper)};
}

std::vector<MatchedDevice> ModelMatcher::match(const std::vector<tModelDescription>& models) {
    DeviceRecorder recorder(*bus_.wrapper);
    ModelList list(models);
    observe(list, recorder);
    return recorder.takeDevices();
}

std::vector<MatchedDevice> ModelMatcher::match(iPciModelInfoDb& models,
                                               const std::string& nameFile) {
    DeviceRecorder recorder(*bus_.wrapper);
    if (nameFile.empty()) {
        observe(models, recorder);
    } else {
        UnsavedIniFile names(nameFile);
        build(models, recorder, names);
    }
    return recorder.takeDevices();
}

void ModelMatcher::observe(iPciModelInfoDb& models, MatchObserver& observer) {
    ScratchIniFile nameFile;
    build(models, observer, nameFile);
}

void ModelMatcher::build(iPciModelInfoDb& models, MatchObserver& observer,
                         nZoPxiDriverTools_1_0::cIniFile& nameFile) {
    ScratchFilesystem filesystem;
    cTerminalNameDb names(filesystem, nameFile);
    cPciTavPluginCache cache;
    try {
        cache.Build(*bus_.finder, *bus_.wrapper, filesystem, names, models, observer);
    } catch (const zoerr::Exception&) {
        throw FailureException(diagnoseInitialize(statusOfCurrentException(), {}));
    }
}

} // namespace tavctl

#include "tavctl/match/deviceSurvey.h"

#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/cIniFile.h"
#include "quil/cQUILDeviceFinder.h"
#include "source/cPciModelInfoDb.h"
#include "source/cPciTavFilesystem.h"
#include "source/cPciTavPluginCache.h"
#include "source/cTerminalNameDb.h"
#include "source/exceptionStatus.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/namesCopy.h"
#include "tavctl/host/scratchFolder.h"
#include "tavctl/match/deviceRecorder.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::cPciBrdWrapper_ex;
using nZoPxiDriverTools_1_0::cIniFile;

// Names and lock live in the scratch folder; descriptions are where the configuration says.
class SurveyFilesystem : public cPciTavFilesystem {
public:
    explicit SurveyFilesystem(const fs::path& folder) : folder_(platform::utf8Text(folder / "")) {}
    std::string GetConfigPath() override { return folder_; }

private:
    std::string folder_;
};

Survey build(SurveyFilesystem& filesystem) {
    nZOQUIL000::tErrorStatus status;
    cPciBrdWrapper_ex bridgeWrapper(status);
    zoerr::raiseIfFailed(status);
    cQUILDeviceFinder deviceFinder([&] { return bridgeWrapper.SessionFunctions(); });
    cIniFile nameFile;
    cTerminalNameDb terminalNames(filesystem, nameFile);
    cPciModelInfoDb models;
    cPciTavPluginCache cache;
    DeviceRecorder recorder(bridgeWrapper);
    cache.Build(deviceFinder, bridgeWrapper, filesystem, terminalNames, models, recorder);
    return recorder.takeDevices();
}

} // namespace

Survey surveyDevices(const HostSetup& setup) {
    const Progress progress("looking for devices");
    const ScratchFolder folder;
    if (!setup.nameFileInForce().empty())
        copyNames(setup.nameFileInForce(), folder.path() / kNameFile);

    SurveyFilesystem filesystem(folder.path());
    try {
        return build(filesystem);
    } catch (...) {
        throw FailureException(diagnoseInitialize(statusOfCurrentException(), "this program"));
    }
}

} // namespace tavctl

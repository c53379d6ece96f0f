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
#include "tavctl/host/nameFile.h"
#include "tavctl/host/scratchFolder.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

#include <system_error>

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

// The base is asked for once for each device, right before its name is looked up.
class SurveyModels : public cPciModelInfoDb {
public:
    [[nodiscard]] const std::string& GetTerminalNameBase(std::uint32_t index) const override {
        lastNamed = index;
        return cPciModelInfoDb::GetTerminalNameBase(index);
    }

    mutable std::uint32_t lastNamed = 0;
};

// The model of a slot is read once for each device, when its name is looked up.
class SurveyNames : public cIniFile {
public:
    struct LookUp {
        std::string slotPath;
        std::uint32_t model;
    };

    explicit SurveyNames(const SurveyModels& models) : models_(models) {}

    using cIniFile::getString;
    void getString(const std::string& section, const std::string& key, std::string& value,
                   nZOQUIL000::tFixedStatus& status) override {
        if (key == kNameKeyModel)
            lookUps.push_back({section, models_.lastNamed});
        cIniFile::getString(section, key, value, status);
    }

    std::vector<LookUp> lookUps;

private:
    const SurveyModels& models_;
};

void build(cPciTavPluginCache& cache, SurveyFilesystem& filesystem, SurveyNames& names,
           SurveyModels& models) {
    nZOQUIL000::tErrorStatus status;
    cQUILDeviceFinder deviceFinder;
    cPciBrdWrapper_ex bridgeWrapper(status);
    zoerr::raiseIfFailed(status);
    cTerminalNameDb terminalNames(filesystem, names);
    cache.Build(deviceFinder, bridgeWrapper, filesystem, terminalNames, models);
}

// While nobody writes them.
void copyNames(const fs::path& names, const fs::path& copy) {
    const NameLock lock(names, NameLock::Purpose::reading);
    std::error_code error;
    if (fs::exists(names, error))
        fs::copy_file(names, copy, error);
    if (error)
        throw FailureException(
            {"read terminal names", platform::utf8Text(names), error.message(), {}, {}});
}

} // namespace

Survey surveyDevices(const fs::path& names) {
    const Progress progress("looking for devices");
    const ScratchFolder folder;
    copyNames(names, folder.path() / kNameFile);

    SurveyFilesystem filesystem(folder.path());
    SurveyModels models;
    SurveyNames observed(models);
    cPciTavPluginCache cache;
    try {
        build(cache, filesystem, observed, models);
    } catch (...) {
        throw FailureException(diagnoseInitialize(statusOfCurrentException(), "this program"));
    }

    Survey survey;
    for (std::uint32_t i = 0; i < models.GetModelCount(); ++i)
        survey.models.push_back(models.GetModel(i));
    for (std::uint32_t i = 0; i < cache.Count(); ++i) {
        const SurveyNames::LookUp& lookUp = observed.lookUps.at(i);
        survey.devices.push_back({cache.RecordAt(i), lookUp.slotPath, lookUp.model});
    }
    return survey;
}

} // namespace tavctl

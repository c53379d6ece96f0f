#include "tavctl/host/diagnosis.h"

#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "pcibus/readBus.h"
#include "platform/busLocation.h"
#include "platform/configurationValue.h"
#include "platform/directorySearch.h"
#include "platform/text.h"
#include "pxidrivertools/configuration.h"
#include "quil/cQUILDeviceFinder.h"
#include "source/cPciModelInfoDb.h"
#include "source/cPciTavFilesystem.h"
#include "source/cPciTavPluginCache.h"
#include "source/cTerminalNameDb.h"
#include "source/descriptionLoader.h"
#include "source/exceptionStatus.h"
#include "tavctl/bus/busFailure.h"
#include "tavctl/description/loadFailure.h"
#include "tavctl/host/configuredFolder.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/words/json.h"

#include <fmt/core.h>

#include <boost/interprocess/exceptions.hpp>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::cPciBrdDynLib;
using nZoPciBrdWrapper_15_0::cPciBrdWrapper_ex;
using nZoPxiDriverTools_1_0::kConfigPathValue;
using nZoPxiDriverTools_1_0::kConfigurationKey;
using nZoPxiDriverTools_1_0::kPathValue;
using nZOQUIL000::tErrorStatus;

// The system's own words in an error record; empty when there are none.
std::string systemWordsOf(const std::string& record) {
    const auto parsed = Json::parsedObject(record);
    if (!parsed)
        return {};
    for (const auto& [name, value] : parsed->leaves()) {
        if (name == "internal_error.string")
            return value;
    }
    return {};
}

// The failure of the exception in flight.
Failure currentFailure(const std::string& operation, const std::string& object) {
    Failure failure{operation, object, {}, statusOfCurrentException(), {}};
    try {
        throw;
    } catch (const zoerr::Exception& exception) {
        failure.record = exception.text();
        failure.reason = systemWordsOf(failure.record);
    } catch (const boost::interprocess::interprocess_exception& exception) {
        failure.reason = platform::systemMessage(
            static_cast<platform::SystemCode>(exception.get_native_error()));
    } catch (const std::exception& exception) {
        failure.reason = exception.what();
    }
    return failure;
}

// Runs one step; what it raises is the answer.
std::optional<Failure> tryStep(const std::string& operation, const std::string& object,
                               const std::function<void()>& step) {
    try {
        step();
        return std::nullopt;
    } catch (...) {
        return currentFailure(operation, object);
    }
}

std::optional<Failure> tryBridgeLibrary() {
    tErrorStatus status;
    const cPciBrdDynLib library(status);
    if (!status.failed())
        return std::nullopt;
    return Failure{"load bridge library",
                   platform::libraryFileName("zopcibrd"),
                   {},
                   status.code,
                   status.textOrEmpty()};
}

std::optional<Failure> tryConfiguration(const char* name) {
    return tryStep(fmt::format("read configuration value \"{}\"", name),
                   platform::configurationOrigin(kConfigurationKey), [&] {
                       tErrorStatus status;
                       nZoPxiDriverTools_1_0::readConfiguration(name, status);
                       zoerr::raiseIfFailed(status);
                   });
}

std::optional<Failure> tryNames() {
    if (auto failure = tryConfiguration(kConfigPathValue))
        return failure;
    cPciTavFilesystem filesystem;
    const std::string folder = filesystem.GetConfigPath();
    const std::string lockFile = folder + kNameLockFile;
    const int made = filesystem.EnsureFileExists(lockFile);
    if (auto failure = tryStep("lock terminal names", platform::readableText(lockFile),
                               [&] { filesystem.LockFile(lockFile); })) {
        // That there is no such file is not the reason where one could not be made.
        if (made > 0 && failure->reason == platform::systemMessage(platform::kNotFound))
            failure->reason = platform::systemMessage(static_cast<platform::SystemCode>(made));
        return failure;
    }
    filesystem.UnlockFile();
    return tryStep("read terminal names", platform::readableText(folder + kNameFile), [&] {
        nZoPxiDriverTools_1_0::cIniFile file;
        cTerminalNameDb(filesystem, file).Load();
    });
}

std::optional<Failure> tryDescription(const std::string& path) {
    auto failure = tryStep("load description", path, [&] {
        nZoPxiDriverTools_1_0::cIniFile file;
        DescriptionLoader<nZoPxiDriverTools_1_0::cIniFile>(file).load(path);
    });
    if (!failure)
        return std::nullopt;
    if (const lint::Description description(path); !description.loads()) {
        Failure told = lint::loadFailure(description);
        failure->object = std::move(told.object);
        failure->reason = std::move(told.reason);
        failure->hint = std::move(told.hint);
    }
    return failure;
}

std::optional<Failure> tryDescriptions() {
    if (auto failure = tryConfiguration(kPathValue))
        return failure;
    cPciTavFilesystem filesystem;
    const std::string pattern = filesystem.GetDescriptionFilePattern();
    std::vector<std::string> files;
    if (auto failure = tryStep("list descriptions", platform::readableText(pattern),
                               [&] { filesystem.ListFiles(pattern, files); })) {
        failure->reason = whyNotListed(pattern);
        return failure;
    }
    for (const std::string& path : files) {
        if (auto failure = tryDescription(path))
            return failure;
    }
    return std::nullopt;
}

// What the substitute bridge library would trip over, in words that its status cannot carry.
std::string busTrouble(const std::string& location) {
    try {
        pcibus::readBus(location);
        return {};
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

std::optional<Failure> trySession() {
    const std::string bus = platform::busLocation().value_or("no recorded bus");
    auto failure = tryStep("open bridge session", bus, [] {
        tErrorStatus status;
        cPciBrdWrapper_ex bridgeWrapper(status);
        zoerr::raiseIfFailed(status);
        bridgeWrapper.OpenSession(0);
    });
    if (failure) {
        failure->reason = busTrouble(bus);
        failure->hint = hintForFolder(bus);
    }
    return failure;
}

// Everything once more in this process, where the record of what fails is to be had. A disk that is
// still full is left as it is.
std::optional<Failure> trySave(std::int32_t status) {
    if (status != nZoPxiDriverTools_1_0::kIniFileErrNotStored)
        return std::nullopt;
    cPciTavFilesystem filesystem;
    const std::string nameFile = platform::readableText(filesystem.GetConfigPath() + kNameFile);
    auto failure = tryStep("save terminal names", nameFile, [&] {
        tErrorStatus loaded;
        cQUILDeviceFinder deviceFinder;
        cPciBrdWrapper_ex bridgeWrapper(loaded);
        nZoPxiDriverTools_1_0::cIniFile file;
        cTerminalNameDb names(filesystem, file);
        cPciTavPluginCache().Build(deviceFinder, bridgeWrapper, filesystem, names, modelDatabase());
    });
    if (failure && failure->status == status)
        return failure;
    return Failure{"save terminal names", nameFile, {}, status, {}};
}

} // namespace

Failure diagnoseInitialize(std::int32_t status, const std::string& pluginPath) {
    const std::function<std::optional<Failure>()> steps[] = {
        tryBridgeLibrary, tryNames, tryDescriptions, trySession, [&] { return trySave(status); }};
    for (const auto& step : steps) {
        const auto failure = step();
        if (failure && failure->status == status)
            return *failure;
    }
    return {"initialize plug-in", pluginPath, {}, status, {}};
}

} // namespace tavctl

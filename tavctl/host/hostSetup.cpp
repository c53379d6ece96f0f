#include "tavctl/host/hostSetup.h"

#include "platform/directorySearch.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/configuration.h"
#include "quil/systemStatus.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <filesystem>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

// Configured folders are prefixes of file names: they end with a separator.
std::string asPrefix(std::string folder) {
    if (platform::lastSeparator(folder) + 1 != folder.size())
        folder += platform::pathSeparator();
    return folder;
}

// The value to present: what the option gives, or what the machine is configured with, if anything.
void addValue(platform::HostConfiguration::Values& values, const char* name,
              const std::string& option) {
    if (!option.empty()) {
        values.emplace_back(name, asPrefix(option));
        return;
    }
    nZOQUIL000::tErrorStatus status;
    std::string configured = readConfiguration(name, status);
    if (!status.failed())
        values.emplace_back(name, std::move(configured));
}

[[noreturn]] void fail(const char* operation, const std::string& object,
                       platform::SystemCode code) {
    throw FailureException({operation,
                            object,
                            platform::systemMessage(code),
                            nZOQUIL000::statusFromSystemCode(code),
                            {}});
}

void requireFolder(const char* option, const std::string& folder) {
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(platform::utf8Path(folder), error);
    if (!isFolder)
        throw FailureException(
            {fmt::format("use {}", option), folder, "there is no such folder", {}, {}});
}

} // namespace

HostSetup::HostSetup(const CommonOptions& options) {
    if (!options.descriptions.empty())
        requireFolder("--descriptions", options.descriptions);
    if (!options.state.empty())
        requireFolder("--state", options.state);
    if (!options.descriptions.empty() || !options.state.empty()) {
        platform::HostConfiguration::Values values;
        addValue(values, kPathValue, options.descriptions);
        addValue(values, kConfigPathValue, options.state);
        configuration_ = std::make_unique<platform::HostConfiguration>(kConfigurationKey, values);
        if (configuration_->code() != platform::kNoSystemError)
            fail("configure", "this process", configuration_->code());
    }
    if (!options.dump.empty()) {
        const platform::SystemCode code = platform::useRecordedBus(options.dump);
        if (code != platform::kNoSystemError)
            fail("use --dump", options.dump, code);
    }
}

} // namespace tavctl

#include "tavctl/host/hostSetup.h"

#include "platform/configurationValue.h"
#include "platform/directorySearch.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/configuration.h"
#include "quil/systemStatus.h"
#include "source/cTerminalNameDb.h"
#include "tavctl/host/configuredFolder.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/namesCopy.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/shownName.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace tavctl {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

// Configured folders are prefixes of file names: they end with a separator.
std::string asPrefix(std::string folder) {
    if (platform::lastSeparator(folder) + 1 != folder.size())
        folder += platform::pathSeparator();
    return folder;
}

// What the option gives, or what the machine is configured with, if anything.
std::optional<std::string> valueOf(const char* name, const std::string& option) {
    if (!option.empty())
        return asPrefix(option);
    nZOQUIL000::tErrorStatus status;
    std::string configured = readConfiguration(name, status);
    return status.failed() ? std::nullopt : std::optional(std::move(configured));
}

[[noreturn]] void fail(const char* operation, const std::string& object,
                       platform::SystemCode code) {
    throw FailureException({operation,
                            object,
                            platform::systemMessage(code),
                            nZOQUIL000::statusFromSystemCode(code),
                            {}});
}

// Of the machine's own configuration: what is put in its place would be named as the origin.
void requireDescriptions(const CommonOptions& options) {
    nZOQUIL000::tErrorStatus status;
    if (options.descriptions.empty())
        readConfiguration(kPathValue, status);
    if (status.failed())
        throw FailureException({fmt::format("read configuration value \"{}\"", kPathValue),
                                platform::configurationOrigin(kConfigurationKey),
                                {},
                                status.code,
                                status.textOrEmpty()});
}

void requireStateFolder(const std::string& folder) {
    if (const std::string trouble = troubleOfFolder(folder); !trouble.empty())
        throw FailureException({"use --state", folder, trouble, {}, {}});
}

} // namespace

HostSetup::HostSetup(const CommonOptions& options, Names names) {
    if (!options.descriptions.empty())
        requireDescriptionFolder(options.descriptions);
    if (!options.state.empty())
        requireStateFolder(options.state);
    auto state = valueOf(kConfigPathValue, options.state);
    if (state)
        nameFile_ = configuredPath(*state + nZoTavManagerPciPlugin_15_0::kNameFile);
    if (names == Names::copied) {
        requireDescriptions(options);
        copyNameFile();
        state = platform::utf8Text(scratch_->path() / "");
    }
    if (!options.descriptions.empty() || !options.state.empty() || names == Names::copied) {
        platform::HostConfiguration::Values values;
        if (auto descriptions = valueOf(kPathValue, options.descriptions))
            values.emplace_back(kPathValue, std::move(*descriptions));
        if (state)
            values.emplace_back(kConfigPathValue, std::move(*state));
        configuration_ = std::make_unique<platform::HostConfiguration>(kConfigurationKey, values);
        if (configuration_->code() != platform::kNoSystemError)
            fail("configure", "this process", configuration_->code());
    }
    if (!options.dump.empty()) {
        dump_.emplace(options.dump);
        const platform::SystemCode code = platform::useRecordedBus(dump_->path());
        if (code != platform::kNoSystemError)
            fail("use --dump", options.dump, code);
    }
}

void HostSetup::copyNameFile() {
    scratch_ = std::make_unique<ScratchFolder>();
    if (nameFile_.empty())
        return;
    whyNotCopied_ = copyNames(nameFile_, nameFileInForce());
    // What is said of the copy from now on is meant of the names.
    showAs(platform::utf8Text(scratch_->path() / ""),
           platform::utf8Text(nameFile_.parent_path() / ""));
}

std::filesystem::path HostSetup::nameFileInForce() const {
    return scratch_ ? scratch_->path() / nZoTavManagerPciPlugin_15_0::kNameFile : nameFile_;
}

} // namespace tavctl

// What the options that every command takes change for this process.
#pragma once

#include "platform/hostConfiguration.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/host/scratchFolder.h"
#include "tavctl/options/commonOptions.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tavctl {

// Which name file the plug-in and its code work on: the one that is configured, as for a host, or a
// copy of it that goes with the setup, for a look that changes nothing. A copy is of nothing where
// no folder is configured, or where this user may not read the file; the folder of the descriptions
// must be configured.
enum class Names { configured, copied };

// Puts the options into force for this process and what it loads. Must live as long as the plug-in
// is used. One at a time. Raises FailureException.
class HostSetup {
public:
    explicit HostSetup(const CommonOptions& options, Names names = Names::configured);

    // The configured name file, copied or not; empty where no folder is configured.
    [[nodiscard]] const std::filesystem::path& nameFile() const { return nameFile_; }

    // The one in force; empty where there is none.
    [[nodiscard]] std::filesystem::path nameFileInForce() const;

    // Why the names could not be copied, in the system's words; empty when they could.
    [[nodiscard]] const std::string& whyNotCopied() const { return whyNotCopied_; }

private:
    void copyNameFile();

    std::filesystem::path nameFile_;
    std::unique_ptr<ScratchFolder> scratch_; // goes after what names it
    std::string whyNotCopied_;
    std::unique_ptr<platform::HostConfiguration> configuration_;
    std::optional<NamedDump> dump_;
};

} // namespace tavctl

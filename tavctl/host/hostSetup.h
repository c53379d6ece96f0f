// What the options that every command takes change for this process.
#pragma once

#include "platform/hostConfiguration.h"
#include "tavctl/options/commonOptions.h"

#include <memory>

namespace tavctl {

// Puts the options into force for this process and what it loads. Must live as long as the plug-in
// is used. Raises FailureException.
class HostSetup {
public:
    explicit HostSetup(const CommonOptions& options);

private:
    std::unique_ptr<platform::HostConfiguration> configuration_;
};

} // namespace tavctl

// The configuration of a machine without a registry: a text file whose sections are named like
// registry keys.
#include "platform/configurationValue.h"

#include "platform/configurationText.h"
#include "platform/linux/environmentVariable.h"

#include <cstdlib>

namespace platform {

namespace {

const char* configurationFile() noexcept {
    const char* const named = secure_getenv(kConfigurationVariable);
    return named != nullptr && *named != '\0' ? named : "/etc/tav-manager.conf";
}

} // namespace

ConfigurationValue readConfigurationValue(const char* key, const char* name,
                                          ConfigurationTextReader readText) noexcept {
    return readConfigurationText(openStream(configurationFile(), "re"), key, name, readText);
}

std::string configurationOrigin(const char*) {
    return configurationFile();
}

} // namespace platform

// The configuration of a machine without a registry: a text file whose sections are named like
// registry keys.
#include "platform/configurationValue.h"

#include "platform/file.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace platform {

namespace {

const char* configurationFile() noexcept {
    const char* const named = secure_getenv("TAV_MANAGER_CONF");
    return named != nullptr && *named != '\0' ? named : "/etc/tav-manager.conf";
}

ConfigurationValue failure(ConfigurationOutcome outcome, SystemCode code) {
    ConfigurationValue result;
    result.outcome = isOutOfMemory(code) ? ConfigurationOutcome::outOfMemory : outcome;
    result.code = code;
    return result;
}

ConfigurationValue read(const char* section, const char* name, ConfigurationTextReader readText) {
    const Stream stream(std::fopen(configurationFile(), "re"));
    if (!stream)
        return failure(ConfigurationOutcome::keyMissing, lastSystemCode());
    ConfigurationValue result;
    errno = 0;
    switch (readText(stream.get(), section, name, result.text)) {
    case ConfigurationLookup::found:
        result.outcome = ConfigurationOutcome::found;
        result.text.resize(result.text.find('\0') == std::string::npos ? result.text.size()
                                                                       : result.text.find('\0'));
        return result;
    case ConfigurationLookup::sectionMissing:
        return failure(ConfigurationOutcome::keyMissing, ENOENT);
    case ConfigurationLookup::valueMissing:
        return failure(ConfigurationOutcome::valueFailed, ENOENT);
    case ConfigurationLookup::outOfMemory:
        return failure(ConfigurationOutcome::outOfMemory, ENOMEM);
    case ConfigurationLookup::unreadable:
        break;
    }
    // A text that was read but makes no sense leaves no system error behind.
    const SystemCode code = lastSystemCode();
    return failure(ConfigurationOutcome::keyMissing, code == kNoSystemError ? EIO : code);
}

} // namespace

ConfigurationValue readConfigurationValue(const char* key, const char* name,
                                          ConfigurationTextReader readText) noexcept {
    try {
        return read(key, name, readText);
    } catch (const std::bad_alloc&) {
        return failure(ConfigurationOutcome::outOfMemory, ENOMEM);
    }
}

std::string configurationOrigin(const char*) {
    return configurationFile();
}

} // namespace platform

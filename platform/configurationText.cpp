#include "platform/configurationText.h"

#include <cerrno>
#include <new>
#include <string_view>

namespace platform {

namespace {

using namespace std::string_view_literals;
// What would make another line, or another thing, of the line that a text is put into.
constexpr std::string_view kNotInValues = "\r\n\0"sv;
constexpr std::string_view kNotInKeys = "\r\n\0[]"sv;
constexpr std::string_view kNotInNames = "\r\n\0[;=:"sv;

bool fits(std::string_view text, std::string_view excluded) {
    return text.find_first_of(excluded) == std::string_view::npos;
}

ConfigurationValue failure(ConfigurationOutcome outcome, SystemCode code) {
    ConfigurationValue result;
    result.outcome = isOutOfMemory(code) ? ConfigurationOutcome::outOfMemory : outcome;
    result.code = code;
    return result;
}

ConfigurationValue read(std::FILE* stream, const char* key, const char* name,
                        ConfigurationTextReader readText) {
    ConfigurationValue result;
    errno = 0;
    switch (readText(stream, key, name, result.text)) {
    case ConfigurationLookup::found:
        result.outcome = ConfigurationOutcome::found;
        if (const std::size_t end = result.text.find('\0'); end != std::string::npos)
            result.text.resize(end);
        return result;
    case ConfigurationLookup::sectionMissing:
        return failure(ConfigurationOutcome::keyMissing, kNotFound);
    case ConfigurationLookup::valueMissing:
        return failure(ConfigurationOutcome::valueFailed, kNotFound);
    case ConfigurationLookup::outOfMemory:
        return failure(ConfigurationOutcome::outOfMemory, outOfMemoryCode());
    case ConfigurationLookup::unreadable:
        break;
    }
    // A text that was read but makes no sense leaves no system error behind.
    const SystemCode code = errno == 0 ? malformedDataCode() : lastSystemCode();
    return failure(ConfigurationOutcome::keyMissing, code);
}

} // namespace

ConfigurationValue readConfigurationText(const Stream& stream, const char* key, const char* name,
                                         ConfigurationTextReader readText) noexcept {
    if (!stream)
        return failure(ConfigurationOutcome::keyMissing, lastSystemCode());
    try {
        return read(stream.get(), key, name, readText);
    } catch (const std::bad_alloc&) {
        return failure(ConfigurationOutcome::outOfMemory, outOfMemoryCode());
    }
}

bool writeConfigurationText(const std::string& key, const HostConfiguration::Values& values,
                            std::string& text) {
    if (key.empty() || !fits(key, kNotInKeys))
        return false;
    text.append("[").append(key).append("]\n");
    for (const auto& [name, value] : values) {
        if (name.empty() || !fits(name, kNotInNames) || !fits(value, kNotInValues))
            return false;
        text.append(name).append("=\"").append(value).append("\"\n");
    }
    return true;
}

} // namespace platform

// The configuration of the machine is the 32-bit view of the registry, read with the narrow
// functions. A host program may put a text of its own in its place, for itself.
#include "platform/configurationValue.h"

#include "platform/configurationText.h"
#include "platform/windows/hostVariable.h"
#include "platform/windows/uniqueHandle.h"

#include <exception>

namespace platform {

namespace {

constexpr REGSAM kAccess = KEY_READ | KEY_WOW64_32KEY;
static_assert(kAccess == 0x20219);

bool isText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Whoever stored the value need not have stored its terminating zeros.
void terminate(DWORD type, std::string& data) {
    if (!isText(type) || data.empty())
        return;
    if (data.back() != '\0')
        data.push_back('\0');
    if (type == REG_MULTI_SZ && (data.size() < 2 || data[data.size() - 2] != '\0'))
        data.push_back('\0');
}

ConfigurationValue failure(ConfigurationOutcome outcome, LSTATUS code) {
    ConfigurationValue result;
    result.outcome = outcome;
    result.code = static_cast<SystemCode>(code);
    return result;
}

ConfigurationValue readRegistry(const char* keyPath, const char* name) {
    RegistryKey key;
    const LSTATUS opened = RegOpenKeyExA(HKEY_LOCAL_MACHINE, keyPath, 0, kAccess, key.out());
    if (opened != ERROR_SUCCESS)
        return failure(ConfigurationOutcome::keyMissing, opened);
    DWORD size = 0;
    const LSTATUS sized = RegQueryValueExA(key.get(), name, nullptr, nullptr, nullptr, &size);
    if (sized != ERROR_SUCCESS)
        return failure(ConfigurationOutcome::valueFailed, sized);

    ConfigurationValue result;
    result.text.resize(size);
    DWORD type = REG_NONE;
    const LSTATUS queried = RegQueryValueExA(key.get(), name, nullptr, &type,
                                             reinterpret_cast<BYTE*>(result.text.data()), &size);
    if (queried != ERROR_SUCCESS)
        return failure(ConfigurationOutcome::valueFailed, queried);
    result.outcome = ConfigurationOutcome::found;
    result.text.resize(size);
    terminate(type, result.text);
    const std::size_t end = result.text.find('\0');
    if (end != std::string::npos)
        result.text.resize(end);
    return result;
}

} // namespace

ConfigurationValue readConfigurationValue(const char* key, const char* name,
                                          ConfigurationTextReader readText) noexcept {
    try {
        if (const auto file = hostVariable(kHostConfigurationFile))
            return readConfigurationText(openStream(file->c_str(), "rb"), key, name, readText);
        return readRegistry(key, name);
    } catch (const std::exception&) { // memory ran out, or the registry told an absurd size
        return failure(ConfigurationOutcome::outOfMemory, ERROR_OUTOFMEMORY);
    }
}

std::string configurationOrigin(const char* key) {
    if (const auto file = hostVariable(kHostConfigurationFile))
        return *file;
    return std::string("HKEY_LOCAL_MACHINE\\") + key + " (32-bit view)";
}

} // namespace platform

#include "pxidrivertools/configuration.h"

#include "platform/configurationValue.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "quil/memberWriter.h"
#include "quil/systemStatus.h"

#include <new>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

using nZOQUIL000::JsonMember;
using nZOQUIL000::MemberWriter;
using nZOQUIL000::setError;
using nZOQUIL000::siteHere;
using nZOQUIL000::tErrorStatus;
using platform::ConfigurationLookup;

constexpr const char* kFile = "pxidrivertools\\registryhelper";

// What the platform layer calls where the configuration is a text file.
ConfigurationLookup readText(std::FILE* stream, const char* section, const char* name,
                             std::string& text) {
    const IniFileOwner file(createIniFile());
    if (!file)
        return ConfigurationLookup::outOfMemory;
    file->caseSensitive = true;
    const IniStatus status = loadIni(*file, stream);
    if (status == kIniOutOfMemory)
        return ConfigurationLookup::outOfMemory;
    if (status < 0)
        return ConfigurationLookup::unreadable;
    IniSection* found = findSection(*file, section);
    if (!found)
        return ConfigurationLookup::sectionMissing;
    const IniKey* key = findKey(*file, *found, name);
    if (!key)
        return ConfigurationLookup::valueMissing;
    text = key->value.view();
    return ConfigurationLookup::found;
}

// Adds to the record which value was asked for, where, and what the system said.
void describe(tErrorStatus& status, const char* name, platform::SystemCode code) {
    try {
        const std::string origin = platform::configurationOrigin(kConfigurationKey);
        const std::string message = platform::systemMessage(code);
        const JsonMember api{"api", platform::systemCodeOrigin()};
        MemberWriter(status)
            .append({"configuration", {{"value", name}, {"origin", origin.c_str()}}})
            .append({"internal_error", {api, {"code", code}, {"string", message.c_str()}}});
    } catch (const std::bad_alloc&) {
        // The code and its place say enough.
    }
}

} // namespace

std::string readConfiguration(const char* name, tErrorStatus& status) {
    if (status.failed())
        return {};
    platform::ConfigurationValue value =
        platform::readConfigurationValue(kConfigurationKey, name, &readText);
    switch (value.outcome) {
    case platform::ConfigurationOutcome::found:
        return std::move(value.text);
    case platform::ConfigurationOutcome::keyMissing:
        if (setError(status, kConfigurationErrNoKey, siteHere(kFile, "kConfigurationErrNoKey")))
            describe(status, name, value.code);
        break;
    case platform::ConfigurationOutcome::valueFailed:
        if (nZOQUIL000::setSystemError(status, value.code, siteHere(kFile, "systemError")))
            describe(status, name, value.code);
        break;
    case platform::ConfigurationOutcome::outOfMemory:
        setError(status, nZOQUIL000::zoquilerr_memoryFull, siteHere(kFile, "zoquilerr_memoryFull"));
        break;
    }
    return {};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

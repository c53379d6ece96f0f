// Configuration kept as text, for the sides of the configuration services that have it so: sections
// named like registry keys, with one value a line.
#pragma once

#include "platform/configurationValue.h"
#include "platform/file.h"
#include "platform/hostConfiguration.h"

#include <string>

namespace platform {

// Reads one value from an open text; a stream that could not be opened reads as a missing key, with
// the reason from lastSystemCode(). Does not raise.
ConfigurationValue readConfigurationText(const Stream& stream, const char* key, const char* name,
                                         ConfigurationTextReader readText) noexcept;

// Writes values so that they are read back as they are. False when a text among them cannot be.
// Raises std::bad_alloc.
bool writeConfigurationText(const std::string& key, const HostConfiguration::Values& values,
                            std::string& text);

} // namespace platform

// A plug-in of one device that fails at what FAULTY_PLUGIN says: "initialize=-5", "count=-5",
// "integer=-5" or "text=-5".
#include "include/tavPlugin.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::int32_t statusOf(const std::string& function) {
    const char* const value = std::getenv("FAULTY_PLUGIN");
    const std::string fault = value != nullptr ? value : "";
    return fault.starts_with(function + "=") ? std::stoi(fault.substr(function.size() + 1)) : 0;
}

} // namespace

extern "C" {

std::int32_t tavPlugin_initialize(void) {
    return statusOf("initialize");
}

void tavPlugin_finalize(void) {}

std::int32_t tavPlugin_getDeviceCount(std::uint32_t* count) {
    *count = 1;
    return statusOf("count");
}

std::int32_t tavPlugin_getDeviceAttributeI32(std::uint32_t, std::uint32_t, std::int32_t* value) {
    *value = 0;
    return statusOf("integer");
}

std::int32_t tavPlugin_getDeviceAttributeUTF8(std::uint32_t, std::uint32_t, char* buffer) {
    std::strcpy(buffer, "TAV7");
    return statusOf("text");
}
}

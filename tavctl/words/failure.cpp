#include "tavctl/words/failure.h"

#include "pxidrivertools/configuration.h"
#include "tavctl/words/json.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

#include <cstdio>

namespace tavctl {

namespace {

std::string plainText(const Failure& failure) {
    std::string text = fmt::format("tavctl: {}\n", failure.sentence());
    if (failure.status)
        text += fmt::format("  status {}\n", describeStatus(*failure.status));
    if (failure.status ==
        nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationErrNoKey)
        text += "  --descriptions and --state take the place of the configuration\n";
    const auto record = Json::parsedObject(failure.record);
    if (record && !record->empty()) {
        text += "  error record\n";
        for (const auto& [name, value] : record->leaves())
            text += fmt::format("    {} = {}\n", name, value);
    }
    return text;
}

std::string jsonText(const Failure& failure) {
    Json error{
        {"operation", failure.operation}, {"object", failure.object}, {"reason", failure.reason}};
    if (failure.status) {
        error.add("status", *failure.status);
        error.add("statusHex", hexadecimalStatus(*failure.status));
        error.add("statusWords", statusWords(*failure.status));
    }
    if (auto record = Json::parsedObject(failure.record))
        error.add("record", std::move(*record));
    return Json{{"error", std::move(error)}}.line();
}

} // namespace

std::string Failure::sentence() const {
    std::string text = operation;
    if (!object.empty())
        text += fmt::format(" ({})", object);
    if (!reason.empty())
        text += ": " + reason;
    else if (status)
        text += ": " + statusWords(*status);
    return text;
}

std::string failureText(const Failure& failure, bool asJson) {
    return asJson ? jsonText(failure) : plainText(failure);
}

void printFailure(const Failure& failure, bool asJson) {
    // In one piece: lines of other programs on the same terminal do not come in between.
    const std::string text = failureText(failure, asJson);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace tavctl

#include "tavctl/words/failure.h"

#include "pxidrivertools/configuration.h"
#include "tavctl/words/json.h"
#include "tavctl/words/print.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

std::string plainText(const Failure& failure, bool debug) {
    std::string text = fmt::format("tavctl: {}\n", printable(failure.sentence()));
    if (failure.status)
        text += fmt::format("  status {}\n", describeStatus(*failure.status));
    if (failure.status ==
        nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationErrNoKey)
        text += "  --descriptions and --state take the place of the configuration\n";
    if (!failure.hint.empty())
        text += fmt::format("  see: {}\n", printable(failure.hint));
    const auto record = debug ? Json::parsedObject(failure.record) : std::nullopt;
    if (record && !record->empty()) {
        text += "  error record; file and line are of the plug-in's own sources\n";
        for (const auto& [name, value] : record->leaves())
            text += fmt::format("    {} = {}\n", printable(name), printable(value));
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
    if (!failure.hint.empty())
        error.add("see", failure.hint);
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

std::string Failure::sentenceAndHint() const {
    return hint.empty() ? sentence() : fmt::format("{}; see: {}", sentence(), hint);
}

std::string failureText(const Failure& failure, FailureForm form) {
    return form.json ? jsonText(failure) : plainText(failure, form.debug);
}

void printFailure(const Failure& failure, FailureForm form) {
    complainInLines(failureText(failure, form));
}

} // namespace tavctl

#include "tavctl/words/failure.h"

#include "pxidrivertools/configuration.h"
#include "tavctl/words/document.h"
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
    Json whole = newDocument();
    whole.add("error", failureJson(failure));
    return whole.line();
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

void failBySystem(const char* operation, const std::string& object, platform::SystemCode code) {
    throw FailureException({operation, object, platform::systemMessage(code), {}, {}});
}

Json failureJson(const Failure& failure) {
    const auto& status = failure.status;
    auto record = Json::parsedObject(failure.record);
    return Json{{"operation", failure.operation},
                {"object", failure.object},
                {"reason", failure.reason},
                {"status", status ? Json(*status) : Json(nullptr)},
                {"statusHex", status ? Json(hexadecimalStatus(*status)) : Json(nullptr)},
                {"statusWords", status ? Json(statusWords(*status)) : Json(nullptr)},
                {"see", textOrNull(failure.hint)},
                {"record", record ? std::move(*record) : Json(nullptr)}};
}

std::string failureText(const Failure& failure, FailureForm form) {
    return form.json ? jsonText(failure) : plainText(failure, form.debug);
}

void printFailure(const Failure& failure, FailureForm form) {
    complainInLines(failureText(failure, form));
}

} // namespace tavctl

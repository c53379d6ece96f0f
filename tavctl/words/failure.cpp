#include "tavctl/words/failure.h"

#include "pxidrivertools/configuration.h"
#include "tavctl/words/statusText.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace tavctl {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void addMembers(std::string& text, const Json& record, const std::string& prefix) {
    for (const auto& [key, value] : record.items()) {
        if (value.is_object())
            addMembers(text, value, prefix + key + ".");
        else
            text.append("    " + prefix).append(key + " = ").append(textOf(value)).append("\n");
    }
}

Json parsedRecord(const std::string& record) {
    return record.empty() ? Json() : Json::parse(record, nullptr, false);
}

std::string plainText(const Failure& failure) {
    std::string text = "tavctl: " + failure.sentence() + "\n";
    if (failure.status)
        text += "  status " + describeStatus(*failure.status) + "\n";
    if (failure.status ==
        nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationErrNoKey)
        text += "  --descriptions and --state take the place of the configuration\n";
    const Json record = parsedRecord(failure.record);
    if (record.is_object() && !record.empty()) {
        text += "  error record\n";
        addMembers(text, record, "");
    }
    return text;
}

std::string jsonText(const Failure& failure) {
    Json error;
    error["operation"] = failure.operation;
    error["object"] = failure.object;
    error["reason"] = failure.reason;
    if (failure.status) {
        error["status"] = *failure.status;
        error["statusHex"] = hexadecimalStatus(*failure.status);
        error["statusWords"] = statusWords(*failure.status);
    }
    if (const Json record = parsedRecord(failure.record); record.is_object())
        error["record"] = record;
    const Json whole{{"error", error}};
    return whole.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

std::string Failure::sentence() const {
    std::string text = operation;
    if (!object.empty())
        text += " (" + object + ")";
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

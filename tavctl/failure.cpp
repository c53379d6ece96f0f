#include "tavctl/failure.h"

#include "pxidrivertools/configuration.h"
#include "tavctl/statusText.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace tavctl {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void printMembers(const Json& record, const std::string& prefix) {
    for (const auto& [key, value] : record.items()) {
        if (value.is_object())
            printMembers(value, prefix + key + ".");
        else
            std::fprintf(stderr, "    %s%s = %s\n", prefix.c_str(), key.c_str(),
                         textOf(value).c_str());
    }
}

Json parsedRecord(const std::string& record) {
    return record.empty() ? Json() : Json::parse(record, nullptr, false);
}

void printPlain(const Failure& failure) {
    std::fprintf(stderr, "tavctl: %s\n", failure.sentence().c_str());
    if (failure.status)
        std::fprintf(stderr, "  status %s\n", describeStatus(*failure.status).c_str());
    if (failure.status ==
        nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kConfigurationErrNoKey)
        std::fputs("  --descriptions and --state take the place of the configuration\n", stderr);
    const Json record = parsedRecord(failure.record);
    if (record.is_object() && !record.empty()) {
        std::fprintf(stderr, "  error record\n");
        printMembers(record, "");
    }
}

void printJson(const Failure& failure) {
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
    std::fprintf(stderr, "%s\n",
                 whole.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
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

void printFailure(const Failure& failure, bool asJson) {
    if (asJson)
        printJson(failure);
    else
        printPlain(failure);
}

} // namespace tavctl

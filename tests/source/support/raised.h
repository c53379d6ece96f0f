// What a call raised, with the members of its error record, so that tests compare in one place.
#pragma once

#include "quil/zoerr.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace testsupport {

struct Raised {
    std::int32_t code = 0; // 0: nothing was raised
    nlohmann::json record = nlohmann::json::object();

    // A member's text; empty when the record has none of this name.
    [[nodiscard]] std::string member(const std::string& name) const {
        return record.value(name, std::string());
    }
    // The record names a place of this component in the source.
    [[nodiscard]] bool hasSite(const std::string& file, const std::string& constant) const {
        return member("file") == file && member("error_constant") == constant &&
               member("component") == "zotavpci" && record.value("line", 0) > 0;
    }
};

// Runs `call`. Whatever it raises but zoerr::Exception passes through and fails the test; so does a
// record that is no JSON object.
template <class Call>
Raised raisedBy(Call call) {
    try {
        call();
    } catch (const zoerr::Exception& exception) {
        const std::string text = exception.text();
        Raised raised{exception.status().code, nlohmann::json::object()};
        if (!text.empty())
            raised.record = nlohmann::json::parse(text);
        if (!raised.record.is_object())
            throw std::logic_error("the error record is no object: " + text);
        return raised;
    }
    return {};
}

} // namespace testsupport

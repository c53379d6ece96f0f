// Runs an operation of the wrapper and tells how it ended.
#pragma once

#include "quil/zoerr.h"

#include <cstdint>
#include <string>

struct Raised {
    bool raised = false;
    std::int32_t status = 0; // that of the exception, or the returned one
    std::string record;      // of the exception
};

template <typename Operation>
Raised outcomeOf(const Operation& operation) {
    try {
        return {false, operation(), {}};
    } catch (const zoerr::Exception& exception) {
        return {true, exception.status().code, exception.what()};
    }
}

// The record of a failure that the wrapper raises at `line`.
inline std::string wrapperRecord(std::int32_t line) {
    return R"({"error_constant":"l_MacroStatus",)"
           R"("file":"dep_mirror\\deps\\pciBrdWrapperMock\\includes\\cpcibrdwrapper_ex",)"
           R"("line":)" +
           std::to_string(line) + R"(,"component":"zotavpci"})";
}

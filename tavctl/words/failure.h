// What tavctl tells a person, or a script, when something failed.
#pragma once

#include "platform/systemCode.h"
#include "tavctl/words/exitStatus.h"
#include "tavctl/words/json.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace tavctl {

// One failure: what was being done, to which object, why it failed.
struct Failure {
    std::string operation;
    std::string object;
    std::string reason;                 // empty: the status says it
    std::optional<std::int32_t> status; // none: no status was involved
    std::string record;                 // the error record's JSON text; empty when there is none
    std::string hint = {};              // what helps, such as another command; may be empty

    // "operation (object): reason"
    [[nodiscard]] std::string sentence() const;
    // The same, and behind it what helps, for a sentence of which it is a part.
    [[nodiscard]] std::string sentenceAndHint() const;
};

// Carries a failure to main(), with the exit status that the program ends with.
class FailureException : public std::exception {
public:
    explicit FailureException(Failure failure, ExitStatus exitStatus = ExitStatus::failed)
        : failure_(std::move(failure)), text_(failure_.sentenceAndHint()), exitStatus_(exitStatus) {
    }
    [[nodiscard]] const Failure& failure() const noexcept { return failure_; }
    [[nodiscard]] ExitStatus exitStatus() const noexcept { return exitStatus_; }
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    Failure failure_;
    std::string text_;
    ExitStatus exitStatus_;
};

// Raises a failure with the system's reason.
[[noreturn]] void failBySystem(const char* operation, const std::string& object,
                               platform::SystemCode code);

struct FailureForm {
    bool json = false;  // one JSON object in one line, with the error record
    bool debug = false; // with the error record, which names places in the plug-in's sources
};

// A failure in lines: the sentence, the status in decimal, hexadecimal and words, and, for whoever
// asks, the members of the error record, one a line; or the same as JSON.
[[nodiscard]] std::string failureText(const Failure& failure, FailureForm form = {});

// The members of that object's "error".
[[nodiscard]] Json failureJson(const Failure& failure);

// Writes that text to standard error.
void printFailure(const Failure& failure, FailureForm form = {});

} // namespace tavctl

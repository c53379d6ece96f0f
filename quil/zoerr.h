// The one exception type raised inside the plug-in, and the ways to raise it. The exported
// functions turn it into a status (source/exceptionStatus.h); it never leaves the library.
#pragma once

#include "quil/tErrorSite.h"
#include "quil/tErrorStatus.h"
#include "quil/tFixedStatus.h"

#include <cstdint>
#include <exception>

namespace zoerr {

class ExceptionBase {
public:
    virtual ~ExceptionBase() = default; // the status releases its text

    // The record's JSON text; an empty string when the status has none.
    [[nodiscard]] virtual const char* text() const noexcept { return status_.textOrEmpty(); }

    [[nodiscard]] nZOQUIL000::tErrorStatus& status() const noexcept { return status_; }

protected:
    ExceptionBase() = default;
    explicit ExceptionBase(nZOQUIL000::tErrorStatus& status) noexcept { status_.takeFrom(status); }
    // A copy takes the text away from its source: an exception is copied only into the thrown
    // object, and its text must not be allocated a second time on the way.
    ExceptionBase(const ExceptionBase& other) noexcept { status_.takeFrom(other.status_); }
    ExceptionBase& operator=(const ExceptionBase&) = delete;

private:
    mutable nZOQUIL000::tErrorStatus status_;
};

class Exception : public virtual ExceptionBase, public virtual std::exception {
public:
    // Code 0 and no text.
    Exception() = default;

    // Takes code and text of the status: its buffer when it uses the default reallocator (the
    // status is left with capacity 0 and no text), otherwise a copy.
    explicit Exception(nZOQUIL000::tErrorStatus& status) noexcept : ExceptionBase(status) {}

    Exception(const Exception& other) noexcept : ExceptionBase(other), std::exception(other) {}
    Exception& operator=(const Exception&) = delete;

    [[nodiscard]] const char* what() const noexcept override { return text(); }
};

// Raises `code` with the record of `site` and, when given, the member "Message".
[[noreturn]] void raise(std::int32_t code, const nZOQUIL000::tErrorSite& site,
                        const char* message = nullptr);

// Stands in a function that the host calls: exceptions that are in flight then are the host's,
// which may call from a destructor while one of its own passes, and do not count for
// raiseIfFailed(). One at a time.
class HostCall {
public:
    HostCall() noexcept;
    ~HostCall();
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;
};

// Raises an Exception with the status when it holds an error and no exception of ours is in flight.
void raiseIfFailed(nZOQUIL000::tErrorStatus& status);

// The same for the status of an INI file operation, whose detail becomes the error record. With the
// file's path, that is added as "path", and what the system said, where it did.
void raiseIfFailed(const nZOQUIL000::tFixedStatus& status, const char* path = nullptr);

} // namespace zoerr

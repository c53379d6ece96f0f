#include "quil/tTrace.h"

#include "quil/debugPrinter.h"
#include "quil/tracePrefix.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace nZOQUIL000 {

namespace {

// What a destination that prints takes without cutting, so that the line end arrives.
constexpr std::size_t kLineSize = kDebugTextSize;

// The longest line without its line end and its NUL.
constexpr std::size_t kLongest = kLineSize - 2;

constinit tTrace theTrace;

} // namespace

tTrace::~tTrace() {
    destination_ = nullptr;
    if (initialised_ != 0 && lock_) {
        lock_.reset();
        initialised_ = 0;
    }
}

void tTrace::setDestination(iTraceDestination* destination) noexcept {
    if (!lock_)
        lock_.emplace();
    initialised_ = 1;
    const std::lock_guard guard(*lock_);
    destination_ = destination;
}

void tTrace::write(const char* file, std::int32_t line, const char* format, ...) noexcept {
    // Costs nothing while the trace is silent, and shows the lock to a thread that sees a
    // destination.
    if (destination_ == nullptr)
        return;
    char text[kLineSize];
    tTracePrefix prefix;
    prefix.file = file;
    prefix.line = line;
    char* const message = writeTracePrefix(text, sizeof text, prefix);
    const std::size_t room = kLongest - static_cast<std::size_t>(message - text);

    // Its result says nothing of a format that fails; the text that is there by then does.
    message[0] = '\0';
    std::va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(message, room + 1, format, arguments));
    va_end(arguments);
    message[room] = '\0'; // not every C library ends a text that it has cut
    char* end = message + std::strlen(message);
    if (end == message || end[-1] != '\n')
        *end++ = '\n';
    *end = '\0';

    const std::lock_guard guard(*lock_);
    iTraceDestination* const destination = destination_;
    if (destination != nullptr && destination->isAvailable())
        destination->write(text);
}

tTrace& trace() noexcept {
    return theTrace;
}

} // namespace nZOQUIL000

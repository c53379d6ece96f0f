// The trace of the plug-in: lines with the place that they come from, sent to one destination.
// Without a destination, as at the start, it is silent. Part of the foundation's interface: nothing
// in the plug-in attaches a destination or writes, which is for whoever looks for a fault in it.
#pragma once

#include "quil/iTraceDestination.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>

namespace nZOQUIL000 {

// Any thread may write. Nothing raises, and nothing is taken from the heap.
class tTrace {
public:
    constexpr tTrace() noexcept = default;
    virtual ~tTrace();
    tTrace(const tTrace&) = delete;
    tTrace& operator=(const tTrace&) = delete;

    // Attaches a destination, which must outlive its use here; null makes the trace silent again.
    // Afterwards the destination attached before is no longer in use. The first call makes the lock
    // and must be over before another thread attaches one.
    void setDestination(iTraceDestination* destination) noexcept;

    // Writes one line: the prefix, the message formatted as std::printf does, and a line end when
    // the message has none. The line is cut to 511 bytes with its line end. Of a message whose
    // format cannot be carried out to its end, the text up to there is written. The destination
    // must not write to the trace itself.
    [[gnu::format(printf, 4, 5)]] void write(const char* file, std::int32_t line,
                                             const char* format, ...) noexcept;

private:
    std::atomic<iTraceDestination*> destination_ = nullptr;
    std::uint8_t initialised_ = 0; // a destination has been set
    std::optional<std::mutex> lock_;
};

// The one trace of this module, there before its first use until the module is unloaded.
tTrace& trace() noexcept;

} // namespace nZOQUIL000

// Sends trace text to whoever debugs the process. Without state; may be used by any thread, and
// each text arrives in one piece.
#pragma once

#include "quil/iTraceDestination.h"

namespace nZOQUIL000 {

// Texts beyond 511 bytes are cut.
class tConsoleTraceDestination : public iTraceDestination {
public:
    void writeCounted(const char* text, std::uint32_t length) noexcept override;
    void write(const char* text) noexcept override;
    void flush() noexcept override {}
    char* describe(char* buffer, std::int32_t capacity,
                   std::uint32_t* requiredSize) noexcept override;
    bool isAvailable() noexcept override { return true; }
    void reserved() noexcept override {}
    const char* name() noexcept override { return "zosdbg_printf"; }
};

} // namespace nZOQUIL000

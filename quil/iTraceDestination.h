// Where trace text goes. The virtual operations keep this order.
#pragma once

#include <cstdint>

namespace nZOQUIL000 {

// Nothing here raises. tTrace calls its destination from one thread at a time.
class iTraceDestination {
public:
    virtual ~iTraceDestination() = default;

    // Writes at most `length` bytes of the text, which may but need not end before.
    virtual void writeCounted(const char* text, std::uint32_t length) noexcept = 0;

    // Writes the NUL-terminated text.
    virtual void write(const char* text) noexcept = 0;

    // Hands on what is held back.
    virtual void flush() noexcept = 0;

    // Copies the command-line option that chooses this destination, cut to the capacity, which
    // includes the NUL that always ends it. Nothing is copied to a capacity of 0 or less. Answers
    // the position after the copied text; `requiredSize`, which may be null, gets the size of the
    // whole with its NUL.
    virtual char* describe(char* buffer, std::int32_t capacity,
                           std::uint32_t* requiredSize) noexcept = 0;

    // False while nothing that is written would arrive.
    virtual bool isAvailable() noexcept = 0;

    // Does nothing; keeps its place in the table.
    virtual void reserved() noexcept = 0;

    virtual const char* name() noexcept = 0;
};

} // namespace nZOQUIL000

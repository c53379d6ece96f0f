// Where the INI engine takes its memory from: one function, so that a caller can limit it, count
// it, or make it fail.
#pragma once

#include <cstddef>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniMemory {
    // As realloc: a null block allocates; null is returned when there is no memory, and the block
    // is then as it was. Size 0 frees the block and returns null.
    void* (*resize)(void* context, void* block, std::size_t size);
    void* context;

    void* allocate(std::size_t size) const noexcept { return resize(context, nullptr, size); }
    void* grow(void* block, std::size_t size) const noexcept {
        return resize(context, block, size);
    }
    void release(void* block) const noexcept {
        if (block != nullptr)
            resize(context, block, 0);
    }
};

// The C library's memory.
IniMemory systemIniMemory() noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

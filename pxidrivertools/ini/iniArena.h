// Where a file object's records live: slabs that grow with the file, so that a record costs no
// allocation of its own, and records that are used together lie together. Nothing is given back
// before everything is.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"

#include <cstddef>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

class IniArena {
public:
    // Room for records, which is good until release(). Null when there is no memory.
    void* take(const IniMemory& memory, std::size_t size) noexcept {
        const std::size_t whole = (size + kAlignment - 1) / kAlignment * kAlignment;
        if (whole > unused_ && !addSlab(memory, whole))
            return nullptr;
        void* const place = next_;
        next_ += whole;
        unused_ -= whole;
        return place;
    }

    // The room that will be needed, roughly: that of the next slab.
    void expect(std::size_t size) noexcept { nextSlab_ = size; }

    void release(const IniMemory& memory) noexcept;

private:
    struct Slab {
        Slab* next;
    };
    static constexpr std::size_t kAlignment = alignof(Slab);

    bool addSlab(const IniMemory& memory, std::size_t wanted) noexcept;

    Slab* slabs_ = nullptr;
    std::byte* next_ = nullptr;
    std::size_t unused_ = 0;
    std::size_t nextSlab_ = 0;
    std::size_t total_ = 0;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

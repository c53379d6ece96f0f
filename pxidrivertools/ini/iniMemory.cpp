#include "pxidrivertools/ini/iniMemory.h"

#include "platform/largeBlock.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

constexpr std::size_t kSmallestSlab = 1024;
constexpr std::size_t kLargestSlab = std::size_t{8} << 20;

} // namespace

IniMemory systemIniMemory() noexcept {
    const auto resize = [](void*, void* block, std::size_t size) -> void* {
        if (block == nullptr && size >= platform::kLargeBlock)
            return platform::allocateLargeBlock(size);
        if (size != 0)
            return std::realloc(block, size);
        std::free(block);
        return nullptr;
    };
    return {resize, nullptr};
}

// A slab has half the size of all before it, so that little of the last one stays unused.
bool IniArena::addSlab(const IniMemory& memory, std::size_t wanted) noexcept {
    const std::size_t size =
        std::max(std::clamp(nextSlab_, kSmallestSlab, kLargestSlab), sizeof(Slab) + wanted);
    void* const block = memory.allocate(size);
    if (block == nullptr)
        return false;
    slabs_ = ::new (block) Slab{slabs_};
    next_ = static_cast<std::byte*>(block) + sizeof(Slab);
    unused_ = size - sizeof(Slab);
    total_ += size;
    nextSlab_ = total_ / 2;
    return true;
}

void IniArena::release(const IniMemory& memory) noexcept {
    while (slabs_ != nullptr) {
        Slab* const slab = slabs_;
        slabs_ = slab->next;
        memory.release(slab);
    }
    *this = {};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

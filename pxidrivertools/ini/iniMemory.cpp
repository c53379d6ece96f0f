#include "pxidrivertools/ini/iniMemory.h"

#include "platform/largeBlock.h"

#include <cstdlib>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

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

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// An allocator whose memory comes zeroed from the system. A list whose length another library
// announces is thus never written to before that library has written to it: an absurd length costs
// address space, not memory.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0 {

template <typename T>
class ZeroedAllocator {
public:
    static_assert(std::is_integral_v<T>, "zero bytes must be a value-initialised element");
    using value_type = T;

    ZeroedAllocator() = default;
    template <typename U>
    explicit ZeroedAllocator(const ZeroedAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        void* memory = std::calloc(count, sizeof(T));
        if (!memory)
            throw std::bad_alloc();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) noexcept { std::free(memory); }

    // Freshly allocated elements are zero already.
    void construct(T*) noexcept {}
    template <typename... Arguments>
    void construct(T* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) T(std::forward<Arguments>(arguments)...);
    }

    bool operator==(const ZeroedAllocator&) const = default;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0

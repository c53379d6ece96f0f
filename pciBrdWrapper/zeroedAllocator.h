// An allocator whose memory comes zeroed from the system. A list whose length another library
// announces is thus never written to before that library has written to it: an absurd length costs
// address space, not memory.
//
// The price: an element that is made without a value has the bytes that its memory has. They are
// zero in a list made at its full length (zeroedList), but resize() and emplace_back() without a
// value show old elements again in a list that has been shorter.
#pragma once

#include <cstddef>
#include <cstdlib>
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
        // Asking for nothing may give null, which is no failure.
        void* memory = std::calloc(count == 0 ? 1 : count, sizeof(T));
        if (!memory)
            throw std::bad_alloc();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) noexcept { std::free(memory); }

    void construct(T*) noexcept {}
    template <typename... Arguments>
    void construct(T* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) T(std::forward<Arguments>(arguments)...);
    }

    bool operator==(const ZeroedAllocator&) const = default;
};

// A list of `count` zeros. Raises std::bad_alloc when there is no memory for it, also when it is
// longer than a list can ever be.
template <typename List>
List zeroedList(std::size_t count) {
    if (count > List().max_size())
        throw std::bad_alloc();
    return List(count);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0

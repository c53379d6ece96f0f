// The slot of a virtual operation, counted with the destructor as slot 0. A pointer to a virtual
// function holds its slot's offset in the Itanium C++ ABI, which GCC and Clang follow on both
// systems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace testsupport {

template <class Function>
std::size_t slotOf(Function function) {
    std::uintptr_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    if (words[0] % 2 != 1 || words[1] != 0)
        throw std::logic_error("not a virtual function of the first base");
    // The destructor is one operation and takes two entries of the table.
    return (words[0] - 1) / sizeof(void*) - 1;
}

} // namespace testsupport

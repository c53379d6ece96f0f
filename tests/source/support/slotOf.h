// Where a virtual operation stands. A pointer to a virtual function holds the offset of its entry
// in the Itanium C++ ABI, which GCC and Clang follow on both systems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace testsupport {

// The operation's entry in the table of its interface.
template <class Function>
std::size_t entryOf(Function function) {
    std::uintptr_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    if (words[0] % 2 != 1 || words[1] != 0)
        throw std::logic_error("not a virtual function of the first base");
    return (words[0] - 1) / sizeof(void*);
}

// The slot in an interface whose destructor is slot 0: it is one operation and takes two entries.
template <class Function>
std::size_t slotOf(Function function) {
    return entryOf(function) - 1;
}

} // namespace testsupport

// What the compiler's run-time keeps for each thread, in a library that a host loads and unloads.
// Private to this folder.
#pragma once

namespace platform::hosted {

// The library is loaded: takes the one slot that the system must give. False when there is none.
bool takeThreadSlot() noexcept;

// The calling thread ends: destroys its value.
void destroyThreadValue() noexcept;

// The library is unloaded: destroys the values of all threads, which may live on, and gives the
// slot back. Nothing of the library's may raise afterwards.
void returnThreadSlot() noexcept;

} // namespace platform::hosted

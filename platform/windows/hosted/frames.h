// Where the unwinder learns how this library's functions are left when something is raised. Private
// to this folder.
#pragma once

namespace platform::hosted {

// Both do nothing where the system itself knows it.
void registerFrames() noexcept;
void deregisterFrames() noexcept;

} // namespace platform::hosted

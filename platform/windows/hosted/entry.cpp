// Where Windows enters a library that hosts load and unload for months: around the compiler's own
// start and end, so that what its run-time has taken is given back after everything else.
#include "platform/windows/hosted/frames.h"
#include "platform/windows/hosted/threadValues.h"
#include "platform/windows/systemHeaders.h"

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE library, DWORD reason, void* reserved);

namespace __gnu_cxx {

// Of the C++ library: frees what it keeps for raising when there is no memory left.
void __freeres();

} // namespace __gnu_cxx

namespace platform::hosted {

namespace {

// Without a slot the first exception would end the host; so it cannot load the library, and is told
// so. The number that the stack is checked with changes while this runs.
[[gnu::no_stack_protector]] BOOL load(HINSTANCE library, void* reserved) noexcept {
    if (!takeThreadSlot())
        return FALSE;
    registerFrames();
    return DllMainCRTStartup(library, DLL_PROCESS_ATTACH, reserved);
}

// Also after a load that failed.
BOOL unload(HINSTANCE library, void* reserved) noexcept {
    const BOOL result = DllMainCRTStartup(library, DLL_PROCESS_DETACH, reserved);
    deregisterFrames();
    __gnu_cxx::__freeres();
    returnThreadSlot();
    return result;
}

} // namespace

} // namespace platform::hosted

extern "C" [[gnu::no_stack_protector]] BOOL WINAPI tavLibraryEntry(HINSTANCE library, DWORD reason,
                                                                   void* reserved) {
    using namespace platform::hosted;
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        return load(library, reserved);
    case DLL_PROCESS_DETACH:
        // With the process everything goes at once. Its other threads were stopped wherever they
        // were, with locks that nobody will give back.
        return reserved != nullptr ? TRUE : unload(library, reserved);
    default: {
        const BOOL result = DllMainCRTStartup(library, reason, reserved);
        if (reason == DLL_THREAD_DETACH)
            destroyThreadValue();
        return result;
    }
    }
}

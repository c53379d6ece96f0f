#include "tests/windows/hosting/processResources.h"

#include "platform/windows/systemHeaders.h"

#include <psapi.h>

#include <array>
#include <cstdint>

namespace testwindows {

namespace {

std::size_t freeSlots() {
    std::array<DWORD, 2000> taken = {};
    std::size_t count = 0;
    while (count < taken.size() && (taken[count] = TlsAlloc()) != TLS_OUT_OF_INDEXES)
        ++count;
    for (std::size_t i = 0; i < count; ++i)
        TlsFree(taken[i]);
    return count;
}

std::size_t handles() {
    // Wine does not count them, but the numbers are given out from the lowest on, in steps of four.
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kLooked = 4096;
    std::size_t count = 0;
    for (std::uintptr_t number = 1; number <= kLooked; ++number) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(number * kStep), &flags) ? 1 : 0;
    }
    return count;
}

std::size_t modules() {
    std::array<HMODULE, 1> room = {};
    DWORD bytes = 0;
    EnumProcessModules(GetCurrentProcess(), room.data(), sizeof room, &bytes);
    return bytes / sizeof(HMODULE);
}

std::size_t heapBytes() {
    std::array<HANDLE, 64> heaps = {};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
        HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
                bytes += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

std::size_t privateBytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* address = nullptr; VirtualQuery(address, &region, sizeof region) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    }
    return bytes;
}

} // namespace

ProcessResources processResources() {
    return {freeSlots(), handles(), modules(), heapBytes(), privateBytes()};
}

} // namespace testwindows

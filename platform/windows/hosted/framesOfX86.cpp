// 32-bit Windows knows nothing of unwinding, so the compiler's start code announces a library's
// tables to the compiler's unwinder. But to which? Where the process has libgcc_s_dw2-1.dll, to
// that one, for libraries that share it. This library raises through an unwinder of its own, linked
// into it, which would then find no table, and end the host with the first exception.
//
// So the tables are announced to the own unwinder in any case. When the start code has done so too,
// it was from a later place in them, which the unwinder keeps apart.
#include "platform/windows/hosted/frames.h"
#include "platform/windows/systemHeaders.h"

#include <cstdint>

extern "C" {

extern const IMAGE_DOS_HEADER __ImageBase;

// Of the unwinder, whose headers do not declare them. It uses the room until the tables are
// deregistered.
void __register_frame_info(const void* tables, void* room);
void* __deregister_frame_info(const void* tables);

} // extern "C"

namespace platform::hosted {

namespace {

// Empty, somewhere among the tables: tells their section, whose name depends on how the file was
// stripped.
__extension__ [[gnu::section(".eh_frame")]] alignas(4) const char amongTables[0] = {};

// What the unwinder takes is six words.
void* room[8] = {};

const char* tables = nullptr;

const char* sectionOf(const char* address) noexcept {
    const char* const base = reinterpret_cast<const char*>(&__ImageBase);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + __ImageBase.e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (WORD left = headers->FileHeader.NumberOfSections; left != 0; --left, ++section) {
        const char* const start = base + section->VirtualAddress;
        if (address >= start && address < start + section->Misc.VirtualSize)
            return start;
    }
    return nullptr;
}

} // namespace

void registerFrames() noexcept {
    tables = sectionOf(amongTables);
    if (tables != nullptr)
        __register_frame_info(tables, room);
}

void deregisterFrames() noexcept {
    if (tables != nullptr)
        __deregister_frame_info(tables);
    tables = nullptr;
}

} // namespace platform::hosted

#include "tests/windows/importedFunction.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>

namespace testwindows {

namespace {

template <typename Pointed>
Pointed* inThisProgram(std::uintptr_t offset) {
    return reinterpret_cast<Pointed*>(reinterpret_cast<std::uintptr_t>(GetModuleHandleW(nullptr)) +
                                      offset);
}

std::vector<void**> placesOf(const std::string& name) {
    std::vector<void**> places;
    const auto* const dos = inThisProgram<IMAGE_DOS_HEADER>(0);
    const auto* const headers =
        inThisProgram<IMAGE_NT_HEADERS>(static_cast<std::uintptr_t>(dos->e_lfanew));
    const auto* library = inThisProgram<IMAGE_IMPORT_DESCRIPTOR>(
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; library->Name != 0; ++library) {
        const auto* entry = inThisProgram<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto* address = inThisProgram<void*>(library->FirstThunk);
        for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
            if (!IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal) &&
                name == reinterpret_cast<const char*>(
                            inThisProgram<IMAGE_IMPORT_BY_NAME>(
                                static_cast<std::uintptr_t>(entry->u1.AddressOfData))
                                ->Name))
                places.push_back(address);
        }
    }
    return places;
}

void store(void** place, void* address) {
    DWORD before = 0;
    VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before);
    *place = address;
    VirtualProtect(place, sizeof *place, before, &before);
}

} // namespace

ImportedFunction::ImportedFunction(const std::string& name, void* replacement)
    : places_(placesOf(name)) {
    if (places_.empty())
        throw std::runtime_error("this program does not import " + name);
    real_ = *places_.front();
    for (void** const place : places_)
        store(place, replacement);
}

ImportedFunction::~ImportedFunction() {
    for (void** const place : places_)
        store(place, real_);
}

} // namespace testwindows

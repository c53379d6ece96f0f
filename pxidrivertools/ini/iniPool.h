// Records of one kind: new ones from the file object's arena, and those given back first.
#pragma once

#include "pxidrivertools/ini/iniArena.h"

#include <new>
#include <type_traits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

template <class Record>
class IniPool {
    static_assert(std::is_trivially_destructible_v<Record>);

public:
    // A new record, or null when there is no memory.
    Record* take(IniArena& arena, const IniMemory& memory) noexcept {
        void* place = free_;
        if (free_ != nullptr)
            free_ = free_->next;
        else
            place = arena.take(memory, sizeof(Record));
        return place == nullptr ? nullptr : ::new (place) Record{};
    }

    // What the record owns has been released.
    void giveBack(Record* record) noexcept {
        free_ = ::new (static_cast<void*>(record)) Free{free_};
    }

    // Before the arena is released.
    void forget() noexcept { free_ = nullptr; }

private:
    struct Free {
        Free* next;
    };
    static_assert(sizeof(Record) >= sizeof(Free) && alignof(Record) <= alignof(Free));

    Free* free_ = nullptr;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// Where a file object's records of one kind live: slabs that grow with the file, so that a record
// costs no allocation of its own, and a chain of the records given back.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

template <class Record>
class IniPool {
    static_assert(std::is_trivially_destructible_v<Record>);

public:
    // A new record, or null when there is no memory.
    Record* take(const IniMemory& memory) noexcept {
        if (free_ != nullptr) {
            Free* const record = free_;
            free_ = record->next;
            return ::new (static_cast<void*>(record)) Record{};
        }
        if (unused_ == 0 && !addSlab(memory))
            return nullptr;
        --unused_;
        void* const place = nextUnused_;
        nextUnused_ += sizeof(Record);
        return ::new (place) Record{};
    }

    // What the record owns has been released.
    void giveBack(Record* record) noexcept {
        free_ = ::new (static_cast<void*>(record)) Free{free_};
    }

    // Ends every record.
    void release(const IniMemory& memory) noexcept {
        while (slabs_ != nullptr) {
            Slab* const slab = slabs_;
            slabs_ = slab->next;
            memory.release(slab);
        }
        *this = {};
    }

private:
    struct Free {
        Free* next;
    };
    struct alignas(std::max_align_t) Slab {
        Slab* next;
    };
    static_assert(sizeof(Record) >= sizeof(Free) && alignof(Record) <= alignof(Slab));

    static constexpr std::size_t kFirstSlab = 16;
    static constexpr std::size_t kLargestSlab = 4096;

    bool addSlab(const IniMemory& memory) noexcept {
        const std::size_t records = std::clamp(slabRecords_ * 2, kFirstSlab, kLargestSlab);
        void* const block = memory.allocate(sizeof(Slab) + records * sizeof(Record));
        if (block == nullptr)
            return false;
        slabs_ = ::new (block) Slab{slabs_};
        nextUnused_ = static_cast<std::byte*>(block) + sizeof(Slab);
        slabRecords_ = records;
        unused_ = records;
        return true;
    }

    Slab* slabs_ = nullptr;
    Free* free_ = nullptr;
    std::byte* nextUnused_ = nullptr;
    std::size_t unused_ = 0;
    std::size_t slabRecords_ = 0;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

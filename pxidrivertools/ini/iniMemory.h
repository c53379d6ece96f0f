// The memory of the INI engine: where it is taken from, and how records live in it.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// One function, so that a caller can limit memory, count it, or make it fail.
struct IniMemory {
    // As realloc: a null block allocates; null is returned when there is no memory, and the block
    // is then as it was. Size 0 frees the block and returns null.
    void* (*resize)(void* context, void* block, std::size_t size);
    void* context;

    void* allocate(std::size_t size) const noexcept { return resize(context, nullptr, size); }
    void* grow(void* block, std::size_t size) const noexcept {
        return resize(context, block, size);
    }
    void release(void* block) const noexcept {
        if (block != nullptr)
            resize(context, block, 0);
    }
};

// The C library's memory.
IniMemory systemIniMemory() noexcept;

// Where a file object's records live: slabs that grow with the file, so that a record costs no
// allocation of its own, and records that are used together lie together. Nothing is given back
// before everything is.
class IniArena {
public:
    // Room for records, which is good until release(). Null when there is no memory.
    void* take(const IniMemory& memory, std::size_t size) noexcept {
        const std::size_t whole = (size + kAlignment - 1) / kAlignment * kAlignment;
        if (whole > unused_ && !addSlab(memory, whole))
            return nullptr;
        void* const place = next_;
        next_ += whole;
        unused_ -= whole;
        return place;
    }

    // The room that will be needed, roughly: that of the next slab.
    void expect(std::size_t size) noexcept { nextSlab_ = size; }

    void release(const IniMemory& memory) noexcept;

private:
    struct Slab {
        Slab* next;
    };
    static constexpr std::size_t kAlignment = alignof(Slab);

    bool addSlab(const IniMemory& memory, std::size_t wanted) noexcept;

    Slab* slabs_ = nullptr;
    std::byte* next_ = nullptr;
    std::size_t unused_ = 0;
    std::size_t nextSlab_ = 0;
    std::size_t total_ = 0;
};

// Records of one kind: new ones from the file object's arena, and those given back first.
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

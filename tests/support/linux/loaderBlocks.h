// The memory of the system's loader, which keeps some of it for later and gives it back in its own
// time: who balances what others allocate and free leaves it out.
#pragma once

#include <elf.h>
#include <sys/auxv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace testsupport {

class LoaderBlocks {
public:
    // From now on blocks are told apart by who asks for them.
    void findLoader() noexcept {
        if (begin_ != 0)
            return;
        begin_ = getauxval(AT_BASE);
        const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(begin_);
        const auto* const parts = reinterpret_cast<const Elf64_Phdr*>(begin_ + header->e_phoff);
        for (std::size_t i = 0; i < header->e_phnum; ++i) {
            if (parts[i].p_type == PT_LOAD)
                end_ = std::max(end_, begin_ + parts[i].p_vaddr + parts[i].p_memsz);
        }
    }

    // Notes a block that the loader asks for; false for those of others, and where there are more
    // than can be noted.
    bool arrived(const void* block, const void* caller) noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(caller);
        if (address < begin_ || address >= end_ || count_ == blocks_.size())
            return false;
        blocks_[count_++] = block;
        return true;
    }

    // Forgets a block; false where it is none of these.
    bool left(const void* block) noexcept {
        const auto end = blocks_.begin() + static_cast<std::ptrdiff_t>(count_);
        const auto found = std::find(blocks_.begin(), end, block);
        if (found == end)
            return false;
        *found = blocks_[--count_];
        return true;
    }

private:
    std::uintptr_t begin_ = 0;
    std::uintptr_t end_ = 0;
    std::size_t count_ = 0;
    std::array<const void*, 4096> blocks_{};
};

} // namespace testsupport

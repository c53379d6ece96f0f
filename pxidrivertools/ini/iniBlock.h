// The whole input of a load in one piece of memory, so that names and values need no copies; and
// where it comes from.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <cstddef>
#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Bytes asked for at a time.
inline constexpr std::uint32_t kReadChunk = 2084;

// Puts up to `size` bytes into `buffer` and returns how many; 0 at the end, negative on an error.
// Fewer than asked for does not mean the end. Must not throw.
struct IniReader {
    std::int32_t (*read)(void* context, char* buffer, std::uint32_t size);
    void* context;
};

struct IniBlock {
    // A NUL byte stands behind the last one, so that a search for a line's end needs no other
    // bound. Null when there was no memory at all.
    char* data = nullptr;
    std::size_t size = 0;
};

// Reads to the end. On a failure (kIniReadFailed, kIniOutOfMemory) the block holds what was read
// before it. The block is the caller's to release in any case.
IniStatus readBlock(const IniMemory& memory, const IniReader& reader, IniBlock& block) noexcept;

// What a block is filled from; it stands where reading starts.
class IniSource {
public:
    // Reads until there are `size` bytes, or to the end or a failure.
    virtual std::size_t read(char* to, std::size_t size) noexcept = 0;
    virtual bool hasFailed() noexcept = 0;
    // Whether it is known without a further read that nothing is left.
    virtual bool isAtKnownEnd() noexcept = 0;
    // How many bytes are left, as far as that is known before anything is read; otherwise 0.
    virtual std::size_t sizeOfAll() noexcept = 0;
    // The same after a read, where it may cost something to learn it.
    virtual std::size_t sizeOfRest() noexcept = 0;
    virtual ~IniSource() = default;

protected:
    IniSource() = default;
    IniSource(const IniSource&) = default;
    IniSource& operator=(const IniSource&) = default;
};

// The same from a source, in two steps: its beginning, which is the whole of most files, and the
// rest, which is read straight into the block. A failure of the first step need not be followed by
// the second.
class IniSourceBlock {
public:
    IniSourceBlock(const IniMemory& memory, IniSource& source, IniBlock& block) noexcept
        : memory_(memory), source_(source), block_(block) {}

    IniStatus readBeginning() noexcept;
    IniStatus readRest() noexcept;

private:
    // Reads until the room that there is is full or the source ends.
    IniStatus fill() noexcept;
    bool makeRoom(std::size_t capacity) noexcept;

    const IniMemory& memory_;
    IniSource& source_;
    IniBlock& block_;
    std::size_t capacity_ = 0;
    bool ended_ = false;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

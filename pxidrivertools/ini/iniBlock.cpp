#include "pxidrivertools/ini/iniBlock.h"

#include <cstring>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// With its closing NUL byte.
constexpr std::size_t kBeginning = 16384;

// Makes room for one more chunk and the closing NUL byte, doubling. The first room is for two,
// since the end of a short file shows at the second read.
bool makeChunkRoom(const IniMemory& memory, IniBlock& block, std::size_t& capacity) noexcept {
    const std::size_t wanted = block.size + kReadChunk + 1;
    if (wanted <= capacity)
        return true;
    const std::size_t size = (capacity == 0 ? wanted : capacity) * 2;
    void* const grown = memory.grow(block.data, size);
    if (grown == nullptr)
        return false;
    block.data = static_cast<char*>(grown);
    capacity = size;
    return true;
}

// Gives back what the text does not need.
void fit(const IniMemory& memory, IniBlock& block, std::size_t capacity) noexcept {
    if (block.data == nullptr || block.size + 1 == capacity)
        return;
    if (void* const fitted = memory.grow(block.data, block.size + 1))
        block.data = static_cast<char*>(fitted);
}

} // namespace

IniStatus readBlock(const IniMemory& memory, const IniReader& reader, IniBlock& block) noexcept {
    IniStatus status = kIniDone;
    std::size_t capacity = 0;
    for (;;) {
        if (!makeChunkRoom(memory, block, capacity)) {
            status = kIniOutOfMemory;
            break;
        }
        const std::int32_t got = reader.read(reader.context, block.data + block.size, kReadChunk);
        if (got < 0 || static_cast<std::uint32_t>(got) > kReadChunk)
            status = kIniReadFailed;
        if (got == 0 || status != kIniDone)
            break;
        block.size += static_cast<std::size_t>(got);
    }
    if (block.data != nullptr)
        block.data[block.size] = '\0';
    fit(memory, block, capacity);
    return status;
}

// A file that tells its size gets the room that it needs, and no more is asked for.
IniStatus IniSourceBlock::readBeginning() noexcept {
    const std::size_t all = source_.sizeOfAll();
    return makeRoom(all != 0 && all < kBeginning ? all + 1 : kBeginning) ? fill() : kIniOutOfMemory;
}

IniStatus IniSourceBlock::readRest() noexcept {
    IniStatus status = kIniDone;
    // One byte more than there should be shows the end in the same read.
    if (!ended_ && !makeRoom(capacity_ + source_.sizeOfRest() + 1))
        status = kIniOutOfMemory;
    while (status == kIniDone && !ended_) {
        status = fill();
        if (status == kIniDone && !ended_ && !makeRoom(capacity_ * 2))
            status = kIniOutOfMemory;
    }
    fit(memory_, block_, capacity_);
    return status;
}

IniStatus IniSourceBlock::fill() noexcept {
    const std::size_t room = capacity_ - 1 - block_.size;
    const std::size_t got = source_.read(block_.data + block_.size, room);
    block_.size += got;
    block_.data[block_.size] = '\0';
    ended_ = got < room || source_.isAtKnownEnd();
    return ended_ && source_.hasFailed() ? kIniReadFailed : kIniDone;
}

bool IniSourceBlock::makeRoom(std::size_t capacity) noexcept {
    // A new block instead of a grown one, so that a large one may be of large pages from the start.
    char* const wider = static_cast<char*>(memory_.allocate(capacity));
    if (wider == nullptr)
        return false;
    if (block_.data != nullptr)
        std::memcpy(wider, block_.data, block_.size);
    memory_.release(block_.data);
    block_.data = wider;
    block_.data[block_.size] = '\0';
    capacity_ = capacity;
    return true;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

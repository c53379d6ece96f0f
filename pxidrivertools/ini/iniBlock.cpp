#include "pxidrivertools/ini/iniBlock.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// Makes room for one more chunk and the closing NUL byte, doubling. The first room is for two,
// since the end of a short file shows at the second read.
bool makeRoom(const IniMemory& memory, IniBlock& block, std::size_t& capacity) noexcept {
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

} // namespace

IniStatus readBlock(const IniMemory& memory, const IniReader& reader, IniBlock& block) noexcept {
    IniStatus status = kIniDone;
    std::size_t capacity = 0;
    for (;;) {
        if (!makeRoom(memory, block, capacity)) {
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
    if (block.data == nullptr)
        return status;
    block.data[block.size] = '\0';
    if (void* const fitted = memory.grow(block.data, block.size + 1))
        block.data = static_cast<char*>(fitted);
    return status;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

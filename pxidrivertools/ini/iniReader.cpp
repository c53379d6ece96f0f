#include "pxidrivertools/ini/iniReader.h"

#include "platform/stream.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

std::int32_t readStream(void* context, char* buffer, std::uint32_t size) noexcept {
    std::FILE* const stream = static_cast<std::FILE*>(context);
    // What came before an error has been handed out by the call before.
    if (std::ferror(stream) != 0)
        return -1;
    const std::size_t got = platform::readStream(stream, buffer, size);
    if (got == 0 && std::ferror(stream) != 0)
        return -1;
    return static_cast<std::int32_t>(got);
}

} // namespace

IniReader streamReader(std::FILE* stream) noexcept {
    return {readStream, stream};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

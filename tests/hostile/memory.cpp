#include "tests/hostile/memory.h"

#include "tests/support/effort.h"

#include <malloc.h>
#include <sys/resource.h>

#if defined(TAV_SANITIZED)
// Not every package of the compiler has the header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace testhostile {

std::size_t liveBytes() {
#if defined(TAV_SANITIZED)
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto information = mallinfo2();
    return information.uordblks + information.hblkhd;
#endif
}

std::size_t peakResidentBytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

std::size_t memoryBound(std::size_t inputBytes, std::size_t perByte) {
    // Freed memory stays with the sanitizer for a while (a quarter of a gigabyte), and every
    // allocation has zones around it.
    const bool isSanitized = testsupport::isSanitized();
    const std::size_t own = isSanitized ? 768 * kMegabyte : 64 * kMegabyte;
    return own + inputBytes * perByte * (isSanitized ? 3 : 1);
}

} // namespace testhostile

// The list of all functions, which only the library that answers as scripted has.
#include "tests/pciBrdWrapper/libraries/serve.h"
#include "zopcibrd/zopcibrd.h"

#include <algorithm>

namespace library = nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;

std::int32_t ZoPciBrd_GetFunctions(std::uint32_t, tZoPciBrdFunction* functions,
                                   std::uint32_t* count) {
    std::optional<scripted::FunctionList>& list = scripted::script().functions;
    if (!list)
        return library::kPciBrdErrUnavailable;
    if (functions == nullptr) {
        *count = list->announced;
        return library::kPciBrdErrBufferTooSmall;
    }
    ++list->fetched;
    std::copy_n(list->given.begin(), std::min<std::size_t>(*count, list->given.size()), functions);
    *count = static_cast<std::uint32_t>(list->given.size());
    return 0;
}

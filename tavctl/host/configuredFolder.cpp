#include "tavctl/host/configuredFolder.h"

#include "platform/text.h"
#include "platform/utf8.h"
#include "platform/utf8Path.h"

#include <fmt/core.h>

namespace tavctl {

std::filesystem::path configuredPath(const std::string& text) {
    return platform::utf8Path(platform::readableText(text));
}

std::string whyNotSearchable(const std::string& text) {
    if (platform::isValidUtf8(text))
        return {};
    const std::string characterSet = platform::narrowCharacterSet();
    return characterSet.empty()
               ? "the name is not UTF-8"
               : fmt::format(
                     "a host gets this name in {}, and the plug-in lists folders whose names "
                     "are UTF-8; use one with an ASCII name",
                     characterSet);
}

} // namespace tavctl

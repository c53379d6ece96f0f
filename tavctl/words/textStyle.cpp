#include "tavctl/words/textStyle.h"

#include "platform/terminal.h"

#include <fmt/core.h>

#include <cstdlib>

namespace tavctl {

TextStyle TextStyle::forStream(std::FILE* stream) {
    const char* const noColour = std::getenv("NO_COLOR");
    const bool spared = noColour != nullptr && *noColour != '\0';
    return TextStyle(!spared && platform::takesEscapes(stream));
}

std::string TextStyle::dress(const char* code, const std::string& text) const {
    if (!colour_ || text.empty())
        return text;
    return fmt::format("\033[{}m{}\033[0m", code, text);
}

} // namespace tavctl

#include "tavctl/words/characters.h"

#include <algorithm>

namespace tavctl {

std::size_t characterCount(std::string_view text) {
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continuesCharacter));
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) {
        ++end;
        while (end < text.size() && continuesCharacter(text[end]))
            ++end;
    }
    return text.substr(0, end);
}

} // namespace tavctl

// One line of text for the words of a program, as programs take it apart again. Private to this
// folder.
#pragma once

#include <string>

namespace platform {

// A word in quotes. Backslashes count double before a quote only.
inline std::wstring quotedWord(const std::wstring& word) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : word) {
        if (character == L'"')
            result.append(backslashes + 1, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        result.push_back(character);
    }
    return result.append(backslashes, L'\\').append(L"\"");
}

} // namespace platform

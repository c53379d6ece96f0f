#include "platform/filePattern.h"

#include "platform/file.h"
#include "platform/namePattern.h"
#include "platform/text.h"
#include "platform/windows/longPath.h"
#include "platform/windows/uniqueHandle.h"

#include <algorithm>

namespace platform {

namespace {

// Empty for what is no text.
std::string inLowerCase(std::wstring text) {
    std::wstring lower = text;
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, text.data(),
                  static_cast<int>(text.size()), lower.data(), static_cast<int>(lower.size()),
                  nullptr, nullptr, 0);
    std::string result;
    static_cast<void>(toUtf8(lower, result));
    return result;
}

bool isThere(const std::wstring& path) {
    return GetFileAttributesW(withLongPrefix(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isItselfOrParent(const std::wstring& name) {
    return name == L"." || name == L"..";
}

} // namespace

// The system's own search also goes by short names, which nobody sees.
std::vector<std::string> filesOfPattern(const std::string& word) {
    const PathParts parts = splitPath(word);
    const std::string folder = parts.drive + parts.directory;
    std::wstring wideFolder;
    std::wstring pattern;
    if (toWide(folder, wideFolder) != Conversion::done ||
        toWide(parts.name + parts.extension, pattern) != Conversion::done ||
        pattern.find_first_of(L"*?") == std::wstring::npos || isThere(wideFolder + pattern))
        return {word};
    const std::string wanted = inLowerCase(pattern == L"*.*" ? L"*" : pattern);

    std::vector<std::wstring> found;
    WIN32_FIND_DATAW entry = {};
    const FileSearchHandle search(
        FindFirstFileW(withLongPrefix(wideFolder + L"*").c_str(), &entry));
    for (bool any = static_cast<bool>(search); any;
         any = FindNextFileW(search.get(), &entry) != 0) {
        const std::wstring name = entry.cFileName;
        if (!isItselfOrParent(name) && matchesNamePattern(inLowerCase(name), wanted))
            found.push_back(name);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> files;
    for (const std::wstring& name : found) {
        std::string text;
        if (toUtf8(name, text) == Conversion::done)
            files.push_back(folder + text);
    }
    return files;
}

} // namespace platform

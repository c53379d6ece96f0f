#include "platform/fileReplacement.h"

#include "platform/windows/uniqueHandle.h"
#include "platform/windows/widePath.h"

namespace platform {

namespace {

SystemCode codeOf(bool succeeded) noexcept {
    return succeeded ? kNoSystemError : lastFailureCode();
}

// Closed at once.
SystemCode create(const char* path) noexcept {
    constexpr DWORD kNotShared = 0;
    const WidePath wide(path);
    const FileHandle created(wide.needed()
                                 ? CreateFileW(wide.text(), GENERIC_WRITE, kNotShared, nullptr,
                                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)
                                 : CreateFileA(path, GENERIC_WRITE, kNotShared, nullptr, CREATE_NEW,
                                               FILE_ATTRIBUTE_NORMAL, nullptr));
    return codeOf(static_cast<bool>(created));
}

} // namespace

NewFile createExclusively(const char* path, NewFileAccess) noexcept {
    NewFile file;
    file.code = create(path);
    file.isThere = file.code == kNoSystemError;
    if (!file.isThere)
        return file;
    file.stream = openStream(path, "wb");
    if (!file.stream)
        file.code = lastFailureCode();
    return file;
}

bool isNameTaken(SystemCode code) noexcept {
    return code == ERROR_FILE_EXISTS;
}

SystemCode followLinks(std::string&) noexcept {
    return kNoSystemError;
}

SystemCode takeAccess(std::FILE*, std::FILE*) noexcept {
    return kNoSystemError;
}

SystemCode renameReplacing(const char* from, const char* to) noexcept {
    const WidePath wideFrom(from, to);
    const WidePath wideTo(to, from);
    if (wideFrom.needed() && wideTo.needed())
        return codeOf(MoveFileExW(wideFrom.text(), wideTo.text(), MOVEFILE_REPLACE_EXISTING) != 0);
    return codeOf(MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING) != 0);
}

} // namespace platform

#include "platform/entryType.h"

#include "platform/utf8Path.h"
#include "platform/windows/longPath.h"
#include "platform/windows/systemHeaders.h"

#include <system_error>

namespace platform {

// The library asks the C library, which takes the longer form for a pattern.
std::filesystem::file_type typeOfEntry(const std::string& utf8Path) {
    using std::filesystem::file_type;
    const std::filesystem::path path = platform::utf8Path(utf8Path);
    std::error_code ignored;
    if (!isLongPath(path.c_str()))
        return std::filesystem::status(path, ignored).type();
    const DWORD attributes = GetFileAttributesW(withLongPrefix(path.native()).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? file_type::directory
                                                            : file_type::regular;
    const DWORD code = GetLastError();
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ? file_type::not_found
                                                                        : file_type::none;
}

} // namespace platform

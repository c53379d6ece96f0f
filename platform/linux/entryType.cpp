#include "platform/entryType.h"

#include "platform/utf8Path.h"

#include <system_error>

namespace platform {

std::filesystem::file_type typeOfEntry(const std::string& utf8Path) {
    std::error_code ignored;
    return std::filesystem::status(platform::utf8Path(utf8Path), ignored).type();
}

} // namespace platform

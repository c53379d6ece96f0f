#include "platform/privateFolder.h"

#include "platform/windows/longPath.h"
#include "platform/windows/systemHeaders.h"

namespace platform {

SystemCode createPrivateFolder(const std::filesystem::path& path) {
    return CreateDirectoryW(withLongPrefix(path.native()).c_str(), nullptr) != 0
               ? kNoSystemError
               : lastFailureCode();
}

bool isFolderNameTaken(SystemCode code) noexcept {
    return code == ERROR_ALREADY_EXISTS;
}

} // namespace platform

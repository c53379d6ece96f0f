// A folder that nobody else may look into.
#pragma once

#include "platform/systemCode.h"

#include <filesystem>

namespace platform {

// Makes a folder, which must not be there yet, with access for its owner only from the start,
// whatever the process's mask; on Windows with that of the folder it is in. Raises std::bad_alloc
// only.
SystemCode createPrivateFolder(const std::filesystem::path& path);

// True for the code with which createPrivateFolder() says that the name is taken.
bool isFolderNameTaken(SystemCode code) noexcept;

} // namespace platform

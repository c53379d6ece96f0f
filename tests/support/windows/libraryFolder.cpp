#include "tests/support/libraryFolder.h"

#include <windows.h>

namespace testsupport {

void findLibrariesIn(const std::filesystem::path& folder) {
    SetDllDirectoryW(folder.c_str());
}

std::string libraryName(const std::string& name) {
    return name + ".dll";
}

std::string programName(const std::string& name) {
    return name + ".exe";
}

} // namespace testsupport

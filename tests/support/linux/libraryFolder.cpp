#include "tests/support/libraryFolder.h"

namespace testsupport {

void findLibrariesIn(const std::filesystem::path&) {}

std::string libraryName(const std::string& name) {
    return name + ".so";
}

std::string programName(const std::string& name) {
    return name;
}

} // namespace testsupport

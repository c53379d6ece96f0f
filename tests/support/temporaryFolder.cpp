#include "tests/support/temporaryFolder.h"

#include <fstream>

namespace testsupport {

std::filesystem::path TemporaryFolder::file(const std::string& name,
                                            const std::string& content) const {
    std::filesystem::path path = path_ / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary);
    stream << content;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + path.string());
    return path;
}

} // namespace testsupport

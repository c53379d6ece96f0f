#include "tests/support/temporaryFolder.h"

#include "platform/utf8Path.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <random>
#include <stdexcept>

namespace testsupport {

TemporaryFolder::TemporaryFolder() {
    constexpr int kTries = 100;
    std::random_device random;
    for (int tried = 0; tried < kTries; ++tried) {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "zotavpci-%08x", random());
        path_ = std::filesystem::temp_directory_path() / name.data();
        if (std::filesystem::create_directory(path_))
            return;
    }
    throw std::runtime_error("no temporary folder like " + path_.string());
}

std::filesystem::path TemporaryFolder::file(const std::string& name,
                                            const std::string& content) const {
    std::filesystem::path path = path_ / platform::utf8Path(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary);
    stream << content;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + path.string());
    return path;
}

} // namespace testsupport

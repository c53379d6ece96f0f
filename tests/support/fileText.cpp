#include "tests/support/fileText.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace testsupport {

std::string fileText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string fileTextIfAny(const std::filesystem::path& file) {
    return std::filesystem::exists(file) ? fileText(file) : std::string();
}

} // namespace testsupport

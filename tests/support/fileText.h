// A file's bytes as a text.
#pragma once

#include <filesystem>
#include <string>

namespace testsupport {

// Raises std::runtime_error when the file cannot be read.
std::string fileText(const std::filesystem::path& file);

// Empty when there is no such file.
std::string fileTextIfAny(const std::filesystem::path& file);

} // namespace testsupport

#include "tavctl/host/descriptionFiles.h"

#include "platform/directorySearch.h"
#include "platform/utf8Path.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "source/exceptionStatus.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <filesystem>

namespace tavctl {

namespace {

using nZoTavManagerPciPlugin_15_0::cPciTavFilesystem;

[[noreturn]] void fail(const std::string& object, const zoerr::Exception& exception) {
    throw FailureException(
        {"list descriptions", object, {}, exception.status().code, exception.text()});
}

std::vector<std::string> filesLike(cPciTavFilesystem& filesystem, const std::string& pattern) {
    std::vector<std::string> files;
    try {
        filesystem.ListFiles(pattern, files);
    } catch (const zoerr::Exception& exception) {
        fail(pattern, exception);
    }
    const std::string folder = pattern.substr(0, platform::lastSeparator(pattern) + 1);
    std::error_code error;
    if (files.empty() && !std::filesystem::is_directory(platform::utf8Path(folder), error))
        throw FailureException({"list descriptions", folder, "there is no such folder", {}, {}});
    return files;
}

} // namespace

std::vector<std::string> descriptionFiles() {
    cPciTavFilesystem filesystem;
    std::string pattern;
    try {
        pattern = filesystem.GetDescriptionFilePattern();
    } catch (const zoerr::Exception& exception) {
        fail("configuration", exception);
    }
    return filesLike(filesystem, pattern);
}

std::vector<std::string> descriptionFilesIn(const std::string& folder) {
    cPciTavFilesystem filesystem;
    const char separator = platform::pathSeparator();
    std::string prefix = folder;
    if (platform::lastSeparator(prefix) + 1 != prefix.size())
        prefix += separator;
    return filesLike(filesystem,
                     fmt::format("{}PCI Hardware Descriptions{}*.ini", prefix, separator));
}

} // namespace tavctl

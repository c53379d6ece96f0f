#include "tavctl/host/descriptionFiles.h"

#include "platform/directorySearch.h"
#include "platform/text.h"
#include "platform/utf8Path.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "source/exceptionStatus.h"
#include "tavctl/host/configuredFolder.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <filesystem>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using nZoTavManagerPciPlugin_15_0::cPciTavFilesystem;

constexpr const char* kInnerFolder = "PCI Hardware Descriptions";

[[noreturn]] void fail(const std::string& object, const zoerr::Exception& exception) {
    throw FailureException({"list descriptions", platform::readableText(object),
                            whyNotSearchable(object), exception.status().code, exception.text()});
}

std::string folderOf(const std::string& pattern) {
    return pattern.substr(0, platform::lastSeparator(pattern) + 1);
}

std::vector<std::string> filesLike(cPciTavFilesystem& filesystem, const std::string& pattern) {
    std::vector<std::string> files;
    try {
        filesystem.ListFiles(pattern, files);
    } catch (const zoerr::Exception& exception) {
        fail(pattern, exception);
    }
    const std::string folder = folderOf(pattern);
    std::error_code error;
    if (files.empty() && !fs::is_directory(platform::utf8Path(folder), error))
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
    return filesLike(filesystem, fmt::format("{}{}{}*.ini", prefix, kInnerFolder, separator));
}

void explainNoDescriptions() {
    try {
        if (descriptionFiles().empty())
            complain(fmt::format("there are no description files in {}",
                                 folderOf(cPciTavFilesystem().GetDescriptionFilePattern())));
    } catch (const FailureException& exception) {
        complain(exception.what());
    }
}

void requireDescriptionFolder(const std::string& folder) {
    const auto fail = [&](const std::string& reason) {
        throw FailureException({"use --descriptions", folder, reason, {}, {}});
    };
    std::error_code error;
    const fs::path path = platform::utf8Path(folder);
    if (!fs::is_directory(path, error))
        fail("there is no such folder");
    // What is there and is no folder is named where it is searched.
    if (fs::symlink_status(path / kInnerFolder, error).type() != fs::file_type::not_found)
        return;
    const fs::path whole = fs::absolute(path, error).lexically_normal();
    const fs::path last = whole.has_filename() ? whole : whole.parent_path();
    if (last.filename() == kInnerFolder)
        fail(fmt::format("this is the inner folder; the one that holds it is {}",
                         platform::utf8Text(last.parent_path())));
    fail(fmt::format("there is no folder \"{}\" in it", kInnerFolder));
}

} // namespace tavctl

#include "tavctl/descriptionFiles.h"

#include "platform/directorySearch.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "source/exceptionStatus.h"
#include "tavctl/failure.h"

#include <filesystem>

namespace tavctl {

std::vector<std::string> descriptionFiles() {
    using nZoTavManagerPciPlugin_15_0::cPciTavFilesystem;
    cPciTavFilesystem filesystem;
    std::string pattern;
    try {
        pattern = filesystem.GetDescriptionFilePattern();
        std::vector<std::string> files;
        filesystem.ListFiles(pattern, files);
        const std::string folder = pattern.substr(0, platform::lastSeparator(pattern) + 1);
        std::error_code error;
        if (files.empty() && !std::filesystem::is_directory(std::filesystem::u8path(folder), error))
            throw FailureException(
                {"list descriptions", folder, "there is no such folder", {}, {}});
        return files;
    } catch (const zoerr::Exception& exception) {
        throw FailureException({"list descriptions",
                                pattern,
                                {},
                                nZoTavManagerPciPlugin_15_0::statusOfCurrentException(),
                                exception.text()});
    }
}

} // namespace tavctl

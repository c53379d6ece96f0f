#include "tavctl/host/descriptionFiles.h"

#include "platform/directorySearch.h"
#include "platform/entryType.h"
#include "platform/systemCode.h"
#include "platform/text.h"
#include "platform/utf8Path.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "source/exceptionStatus.h"
#include "tavctl/description/oddNames.h"
#include "tavctl/host/configuredFolder.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>

namespace tavctl {

namespace {

namespace fs = std::filesystem;
using nZoTavManagerPciPlugin_15_0::cPciTavFilesystem;
using platform::SearchOutcome;

constexpr const char* kInnerFolder = "PCI Hardware Descriptions";

[[noreturn]] void fail(const std::string& object, const zoerr::Exception& exception) {
    throw FailureException(
        {"list descriptions", object, {}, exception.status().code, exception.text()});
}

std::string folderOf(const std::string& pattern) {
    return pattern.substr(0, platform::lastSeparator(pattern) + 1);
}

std::vector<std::string> filesLike(cPciTavFilesystem& filesystem, const std::string& pattern) {
    std::vector<std::string> files;
    try {
        filesystem.ListFiles(pattern, files);
    } catch (const zoerr::Exception& exception) {
        throw FailureException({"list descriptions", platform::readableText(pattern),
                                whyNotListed(pattern), exception.status().code, exception.text()});
    }
    const std::string folder = folderOf(pattern);
    const std::string trouble = files.empty() ? troubleOfFolder(folder) : std::string();
    if (!trouble.empty())
        throw FailureException({"list descriptions", folder, trouble, {}, {}});
    return files;
}

std::string patternInForce(cPciTavFilesystem& filesystem) {
    try {
        return filesystem.GetDescriptionFilePattern();
    } catch (const zoerr::Exception& exception) {
        fail("configuration", exception);
    }
}

std::string nameOf(const std::string& path) {
    return path.substr(folderOf(path).size());
}

std::vector<std::string> notCalledIni(const std::vector<std::string>& files) {
    std::vector<std::string> others;
    std::copy_if(files.begin(), files.end(), std::back_inserter(others),
                 [](const std::string& file) { return !lint::isDescriptionName(nameOf(file)); });
    return others;
}

// Every name in the folder; those that are no text are passed over.
std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const char* const pattern : {"*", ".*"}) {
        platform::DirectorySearch search;
        if (search.open(folder + pattern) != SearchOutcome::entry)
            continue;
        std::string name;
        for (auto outcome = search.next(name); outcome != SearchOutcome::end;
             outcome = search.next(name)) {
            if (outcome == SearchOutcome::entry)
                names.insert(name);
        }
    }
    return names;
}

} // namespace

std::vector<std::string> descriptionFiles() {
    cPciTavFilesystem filesystem;
    return filesLike(filesystem, patternInForce(filesystem));
}

DescriptionFolder descriptionFolder() {
    cPciTavFilesystem filesystem;
    const std::string pattern = patternInForce(filesystem);
    DescriptionFolder result;
    result.files = filesLike(filesystem, pattern);
    result.byShortName = notCalledIni(result.files);
    const std::set<std::string> loaded(result.byShortName.begin(), result.byShortName.end());
    for (const std::string& name : namesIn(folderOf(pattern))) {
        std::string path = folderOf(pattern) + name;
        if (lint::hasDescriptionShortName(name) && !loaded.contains(path))
            result.elsewhere.push_back(std::move(path));
    }
    return result;
}

void tellOfShortNames() {
    try {
        const auto files = notCalledIni(descriptionFiles());
        if (!files.empty())
            complain(fmt::format("loaded by a short name that ends in .INI: {}",
                                 separated(files, ", ")));
    } catch (const FailureException&) { // NOLINT(bugprone-empty-catch): the plug-in has listed them
    }
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

std::string whyNotListed(const std::string& pattern) {
    if (std::string reason = whyNotSearchable(pattern); !reason.empty())
        return reason;
    platform::DirectorySearch search;
    return search.open(pattern) == SearchOutcome::failed
               ? platform::systemMessage(platform::lastSystemCode())
               : std::string();
}

std::string troubleOfFolder(const std::string& folder) {
    if (platform::typeOfEntry(folder) == fs::file_type::directory)
        return {};
    platform::DirectorySearch search;
    const bool hasFailed =
        search.open(folder + platform::pathSeparator() + "*") == SearchOutcome::failed;
    const platform::SystemCode code = platform::lastSystemCode();
    return hasFailed && platform::isNameTooLong(code) ? platform::systemMessage(code)
                                                      : "there is no such folder";
}

void requireDescriptionFolder(const std::string& folder) {
    const auto fail = [&](const std::string& reason) {
        throw FailureException({"use --descriptions", folder, reason, {}, {}});
    };
    if (const std::string trouble = troubleOfFolder(folder); !trouble.empty())
        fail(trouble);
    // What is there and is no folder is named where it is searched.
    std::error_code error;
    const fs::path path = platform::utf8Path(folder);
    const fs::path inner = path / kInnerFolder;
    if (platform::typeOfEntry(platform::utf8Text(inner)) != fs::file_type::not_found ||
        fs::is_symlink(inner, error))
        return;
    const fs::path whole = fs::absolute(path, error).lexically_normal();
    const fs::path last = whole.has_filename() ? whole : whole.parent_path();
    if (last.filename() == kInnerFolder)
        fail(fmt::format("this is the inner folder; the one that holds it is {}",
                         platform::utf8Text(last.parent_path())));
    fail(fmt::format("there is no folder \"{}\" in it", kInnerFolder));
}

} // namespace tavctl

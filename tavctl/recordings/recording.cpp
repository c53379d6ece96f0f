#include "tavctl/recordings/recording.h"

#include "platform/entryType.h"
#include "platform/folderReader.h"
#include "platform/pathBelow.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/busFolder.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>
#include <utility>

namespace tavctl {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNamesEnd = ".ini";
// What recordings are called by habit; the rest of such a name is the machine's.
constexpr std::array<std::string_view, 3> kEnds{".dump", ".txt", ".lspci"};

std::string withoutEnd(const std::string& name) {
    for (const std::string_view end : kEnds) {
        if (name.size() > end.size() && name.ends_with(end))
            return name.substr(0, name.size() - end.size());
    }
    return name;
}

// "lab/rack7" for "lab/rack7/".
std::string withoutSeparators(std::string path) {
    while (path.size() > 1 &&
           (path.ends_with('/') || path.ends_with(fs::path::preferred_separator)))
        path.pop_back();
    return path;
}

Recording recordingAt(const std::string& path) {
    const std::string title = NamedDump::titleOf(withoutSeparators(path));
    Recording recording{path, withoutEnd(title), NamedDump(path), {}, {}};
    const std::string names = withoutEnd(withoutSeparators(path)) + std::string(kNamesEnd);
    if (platform::typeOfEntry(names) == fs::file_type::regular)
        recording.nameFile = names;
    return recording;
}

bool isLink(const std::string& path) {
    std::error_code ignored;
    return fs::is_symlink(fs::symlink_status(platform::utf8Path(path), ignored));
}

class FolderSearch {
public:
    std::vector<Recording> below(const std::string& top) {
        folders_.push_back(top);
        while (!folders_.empty()) {
            const std::string folder = std::exchange(folders_.back(), {});
            folders_.pop_back();
            search(folder);
        }
        std::sort(found_.begin(), found_.end(),
                  [](const Recording& a, const Recording& b) { return a.name < b.name; });
        return std::move(found_);
    }

private:
    void search(const std::string& folder) {
        std::vector<std::string> names;
        if (const int code = platform::FolderReader(folder).list(names)) {
            Recording unknown{folder,
                              NamedDump::titleOf(withoutSeparators(folder)),
                              NamedDump({}),
                              {},
                              Failure{"search for recordings", folder, {}, {}, {}}};
            unknown.failure->reason = std::generic_category().message(code);
            found_.push_back(std::move(unknown));
            return;
        }
        for (const std::string& name : names) {
            if (!name.starts_with('.'))
                look(platform::pathBelow(folder, name));
        }
    }

    void look(const std::string& path) {
        const fs::file_type type = platform::typeOfEntry(path);
        if (type == fs::file_type::regular) {
            if (!path.ends_with(kNamesEnd))
                found_.push_back(recordingAt(path));
        } else if (type == fs::file_type::directory) {
            if (standsForSys(path))
                found_.push_back(recordingAt(path));
            else if (!isLink(path))
                folders_.push_back(path);
        }
    }

    std::vector<std::string> folders_; // to be searched
    std::vector<Recording> found_;
};

} // namespace

bool isCollection(const std::string& path) {
    return path != "-" && isFolder(path) && !standsForSys(path);
}

std::vector<Recording> recordingsAt(const std::vector<std::string>& paths) {
    std::vector<Recording> recordings;
    for (const std::string& path : paths) {
        if (!isCollection(path)) {
            recordings.push_back(recordingAt(path));
            continue;
        }
        std::vector<Recording> found = FolderSearch().below(path);
        if (found.empty())
            throw FailureException(
                {"search for recordings", path, "no recorded bus is in this folder", {}, {}});
        recordings.insert(recordings.end(), std::make_move_iterator(found.begin()),
                          std::make_move_iterator(found.end()));
    }
    return recordings;
}

CommonOptions optionsForMany(const CommonOptions& options, const char* operation) {
    if (!options.state.empty())
        throw FailureException({operation,
                                "--state",
                                "many machines have no names in common; those of rack7.dump are "
                                "read from rack7.ini beside it",
                                {},
                                {}},
                               ExitStatus::wrongUsage);
    CommonOptions common = options;
    common.dump.clear();
    return common;
}

} // namespace tavctl

#include "platform/directorySearch.h"

#include "platform/linux/interruption.h"
#include "platform/namePattern.h"
#include "platform/utf8.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept {
        const int error = errno;
        closedir(directory);
        errno = error;
    }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

} // namespace

struct DirectorySearch::State {
    std::vector<std::string> names; // matching, in byte order
    std::size_t next = 0;
};

DirectorySearch::DirectorySearch() = default;
DirectorySearch::~DirectorySearch() = default;

SearchOutcome DirectorySearch::open(const std::string& utf8Pattern) {
    state_.reset();
    if (!isValidUtf8(utf8Pattern))
        return SearchOutcome::invalidText;
    const std::size_t separator = lastSeparator(utf8Pattern);
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    const std::string folder = nameStart == 0 ? "." : utf8Pattern.substr(0, nameStart);
    const std::string namePattern = utf8Pattern.substr(nameStart);

    const Directory directory(pastInterruptions([&] { return opendir(folder.c_str()); }));
    if (!directory)
        return errno == ENOENT ? SearchOutcome::nothingMatches : SearchOutcome::failed;
    auto state = std::make_unique<State>();
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(directory.get());
        if (entry == nullptr)
            break;
        if (matchesNamePattern(entry->d_name, namePattern))
            state->names.emplace_back(entry->d_name);
    }
    if (errno != 0)
        return SearchOutcome::failed;
    if (state->names.empty())
        return SearchOutcome::nothingMatches;
    std::sort(state->names.begin(), state->names.end());
    state_ = std::move(state);
    return SearchOutcome::entry;
}

SearchOutcome DirectorySearch::next(std::string& utf8Name) {
    if (!state_ || state_->next == state_->names.size())
        return SearchOutcome::end;
    const std::string& name = state_->names[state_->next++];
    if (!isValidUtf8(name))
        return SearchOutcome::invalidText;
    utf8Name = name;
    return SearchOutcome::entry;
}

char pathSeparator() noexcept {
    return '/';
}

std::size_t lastSeparator(const std::string& path) noexcept {
    return path.rfind('/');
}

} // namespace platform

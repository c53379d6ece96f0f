#include "platform/directorySearch.h"

#include "platform/text.h"
#include "platform/windows/longPath.h"
#include "platform/windows/uniqueHandle.h"

#include <utility>

namespace platform {

namespace {

SearchOutcome outcomeOf(Conversion conversion) {
    switch (conversion) {
    case Conversion::done:
        break;
    case Conversion::invalidText:
        return SearchOutcome::invalidText;
    case Conversion::failed:
        return SearchOutcome::conversionFailed;
    }
    return SearchOutcome::entry;
}

// The system says of a path that is too long for it, as of one that leads nowhere, that there is no
// such path.
SearchOutcome outcomeOfFailure(const std::wstring& pattern, DWORD code) {
    if (isTooLong(pattern))
        code = ERROR_FILENAME_EXCED_RANGE;
    SetLastError(code);
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND
               ? SearchOutcome::nothingMatches
               : SearchOutcome::failed;
}

} // namespace

struct DirectorySearch::State {
    FileSearchHandle handle;
    WIN32_FIND_DATAW entry = {}; // the one that next() gives
    bool ended = false;
};

DirectorySearch::DirectorySearch() = default;
DirectorySearch::~DirectorySearch() = default;

SearchOutcome DirectorySearch::open(const std::string& utf8Pattern) {
    state_.reset();
    std::wstring pattern;
    const SearchOutcome converted = outcomeOf(toWide(utf8Pattern, pattern));
    if (converted != SearchOutcome::entry)
        return converted;
    auto state = std::make_unique<State>();
    state->handle =
        FileSearchHandle(FindFirstFileW(withLongPrefix(pattern).c_str(), &state->entry));
    if (!state->handle)
        return outcomeOfFailure(pattern, GetLastError());
    state_ = std::move(state);
    return SearchOutcome::entry;
}

SearchOutcome DirectorySearch::next(std::string& utf8Name) {
    if (!state_ || state_->ended)
        return SearchOutcome::end;
    const SearchOutcome outcome = outcomeOf(toUtf8(state_->entry.cFileName, utf8Name));
    // Whatever ends the listing, it has ended.
    state_->ended = !FindNextFileW(state_->handle.get(), &state_->entry);
    return outcome;
}

char pathSeparator() noexcept {
    return '\\';
}

std::size_t lastSeparator(const std::string& path) noexcept {
    return path.rfind('\\');
}

} // namespace platform

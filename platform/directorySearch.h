// Lists the entries of a folder that match a pattern, in the system's order (Windows) or in byte
// order of the names (Linux, where the kernel's order means nothing).
#pragma once

#include "platform/systemCode.h"

#include <memory>
#include <string>

namespace platform {

enum class SearchOutcome {
    entry,            // a matching entry: its name without its folder, in UTF-8
    end,              // no further entries
    nothingMatches,   // from open(): no file matches, or the folder does not exist
    invalidText,      // the pattern or an entry's name is not valid UTF-8 / UTF-16
    conversionFailed, // the text could not be converted for another reason
    failed,           // the listing failed otherwise, a path that is too long included;
                      // from open(): lastSystemCode() says why
};

class DirectorySearch {
public:
    DirectorySearch();
    ~DirectorySearch();
    DirectorySearch(const DirectorySearch&) = delete;
    DirectorySearch& operator=(const DirectorySearch&) = delete;

    // Starts a listing of `utf8Pattern`: a folder, ending in pathSeparator(), and a pattern of "*"
    // and "?" for the names in it. `entry` when next() may be called; otherwise what went wrong.
    // Raises std::bad_alloc.
    SearchOutcome open(const std::string& utf8Pattern);

    // The next entry: `entry` with its name, `end`, or what is wrong with its name.
    SearchOutcome next(std::string& utf8Name);

private:
    struct State;
    std::unique_ptr<State> state_;
};

// The character that stands between a folder and a name in it.
char pathSeparator() noexcept;

// The position of the last character of `path` that separates folders; npos when there is none.
std::size_t lastSeparator(const std::string& path) noexcept;

} // namespace platform

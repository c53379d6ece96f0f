// One thing that is wrong, or odd, in a description file, with the place where it stands.
#pragma once

#include <string>
#include <string_view>

namespace tavctl::lint {

// A stretch of one line of a file. Line and column count from 1; 0 means that there is none: the
// finding is about the whole file (line 0) or the whole line (column 0). Columns and lengths are in
// characters, not in bytes.
struct Place {
    int line = 0;
    int column = 0;
    int length = 0;
};

enum class Severity { error, warning };

struct Finding {
    std::string_view rule; // the identifier of one of rules()
    Severity severity = Severity::error;
    std::string file;
    Place place;
    std::string text; // the line itself; empty without a line
    std::string found;
    std::string expected;
    // Whether loading the file fails by this, and with it that of every file.
    bool endsLoad = false;

    // "file:line:column", as far as the place has them.
    [[nodiscard]] std::string placeText() const;
    // What was found and what is expected, in one sentence.
    [[nodiscard]] std::string sentence() const;
};

} // namespace tavctl::lint

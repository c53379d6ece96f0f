// Recorded buses of many machines, as a command line names them: by files, and by folders of them.
#pragma once

#include "tavctl/host/namedDump.h"
#include "tavctl/options/commonOptions.h"
#include "tavctl/words/failure.h"

#include <optional>
#include <string>
#include <vector>

namespace tavctl {

struct Recording {
    std::string name;    // as it was named, or found below a folder that was
    std::string machine; // the last part of its name, without .dump, .txt or .lspci: see below
    NamedDump dump;      // where it is read
    // The terminal names stored beside it: "rack7.ini" of "rack7.dump". Empty: there are none.
    std::string nameFile;
    // Of a folder that could not be searched, which then stands for what may be in it.
    std::optional<Failure> failure;
};

// Whether a path names many recordings: a folder, unless it stands for /sys and is one itself.
[[nodiscard]] bool isCollection(const std::string& path);

// The recordings at these UTF-8 paths, in the order of the paths, those of a folder by their names.
// A folder is searched with the folders in it, but not through links to folders; every file in it
// is a recording unless its name begins with a dot or ends in ".ini", and so is every folder in it
// that stands for /sys. "-" is what is on standard input. Recordings that have one machine are of
// one machine, the later ones younger. Raises FailureException for a folder without recordings.
[[nodiscard]] std::vector<Recording> recordingsAt(const std::vector<std::string>& paths);

// The options without what one machine has of its own: for a look at many. Raises FailureException,
// with ExitStatus::wrongUsage, where they name a folder of terminal names; `operation` is what it
// is told of.
[[nodiscard]] CommonOptions optionsForMany(const CommonOptions& options, const char* operation);

} // namespace tavctl

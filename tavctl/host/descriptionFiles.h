// The description files that the plug-in would load.
#pragma once

#include <string>
#include <vector>

namespace tavctl {

// Full paths in the order of loading, by the configuration in force. Raises FailureException when
// the folder cannot be listed or is not there.
std::vector<std::string> descriptionFiles();

// The folder of descriptions by the names of what is in it; full paths.
struct DescriptionFolder {
    std::vector<std::string> files; // that the plug-in would load, in that order
    // Those of them that are not called *.ini: the system finds them by their short names.
    std::vector<std::string> byShortName;
    // Files that are not loaded here, but where the system finds them so; by name.
    std::vector<std::string> elsewhere;
};

// That of the configuration in force. Raises FailureException like descriptionFiles().
DescriptionFolder descriptionFolder();

// For a look that found devices: says in a line which files were loaded that are not called *.ini,
// if any.
void tellOfShortNames();

// The files for a folder that holds "PCI Hardware Descriptions".
std::vector<std::string> descriptionFilesIn(const std::string& folder);

// For a look that found no device: says in a line where the descriptions were looked for, if there
// are none there.
void explainNoDescriptions();

// Why the pattern is not listed: what whyNotSearchable() says of it, or the system in its own
// words; empty when it is, or when nothing is found.
std::string whyNotListed(const std::string& pattern);

// Why a folder cannot be looked into, for a person: there is none, or its path is longer than the
// system takes. Empty where there is one.
std::string troubleOfFolder(const std::string& folder);

// Refuses a folder that does not hold "PCI Hardware Descriptions", and says so where it is that
// folder itself. Raises FailureException.
void requireDescriptionFolder(const std::string& folder);

} // namespace tavctl

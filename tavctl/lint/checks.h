// What lint checks beyond whether a description loads, by what is looked at. Each check adds what
// it finds.
#pragma once

#include "tavctl/description/findings.h"

#include <string>

namespace tavctl::lint {

void checkSize(const Description& description, Findings& findings);     // of the file
void checkLines(const Description& description, Findings& findings);    // lines and names
void checkValues(const Description& description, Findings& findings);   // values that load
void checkLists(const Description& description, Findings& findings);    // items of lists
void checkMaps(const Description& description, Findings& findings);     // traversal maps
void checkPlaces(const Description& description, Findings& findings);   // bridges told apart
void checkMatching(const Description& description, Findings& findings); // the model as a whole

// What there is to say of a file that is not called *.ini: that the system loads it all the same,
// or that another one does.
Finding loadedByShortName(const std::string& file);
Finding shortName(const std::string& file);

} // namespace tavctl::lint

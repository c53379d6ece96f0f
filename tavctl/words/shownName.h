// What a file of the program's own stands for: whatever is said of it, by whomever, is said of
// that.
#pragma once

#include <string>

namespace tavctl {

// From here on everything that is printed (see print.h) has the name in place of the path: also
// what is said when the file is gone. The path must be one that no other text has in it.
void showAs(std::string path, std::string name);

// The text with every name in its path's place.
[[nodiscard]] std::string withShownNames(std::string text);

} // namespace tavctl

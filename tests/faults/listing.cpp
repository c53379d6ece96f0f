#include "tests/faults/listing.h"

#include <algorithm>
#include <sstream>

namespace testfaults {

Lines linesOf(const std::string& listing) {
    Lines lines;
    std::istringstream stream(listing);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

bool isPartOf(const Lines& part, const Lines& whole) {
    auto from = whole.begin();
    for (const std::string& line : part) {
        from = std::find(from, whole.end(), line);
        if (from == whole.end())
            return false;
        ++from;
    }
    return true;
}

// The second attribute of each line.
std::set<std::string> namesIn(const Lines& listing) {
    std::set<std::string> names;
    for (const std::string& line : listing) {
        const std::size_t start = line.find('|') + 1;
        names.insert(line.substr(start, line.find('|', start) - start));
    }
    return names;
}

} // namespace testfaults

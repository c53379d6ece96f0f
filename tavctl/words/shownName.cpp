#include "tavctl/words/shownName.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct ShownName {
    std::string path;
    std::string name;
};

std::vector<ShownName>& shownNames() {
    static std::vector<ShownName> names;
    return names;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// As it stands within a text of JSON.
std::string escaped(std::string path) {
    for (auto at = path.find('\\'); at != std::string::npos; at = path.find('\\', at + 2))
        path.insert(at, 1, '\\');
    return path;
}

} // namespace

// A program that goes on for long makes such files again and again: of the older ones nothing is
// said any more.
void showAs(std::string path, std::string name) {
    constexpr std::size_t kMost = 64;
    if (shownNames().size() == kMost)
        shownNames().erase(shownNames().begin());
    shownNames().push_back({std::move(path), std::move(name)});
}

std::string withShownNames(std::string text) {
    for (const ShownName& each : shownNames()) {
        replaceAll(text, each.path, each.name);
        replaceAll(text, escaped(each.path), each.name);
    }
    return text;
}

} // namespace tavctl

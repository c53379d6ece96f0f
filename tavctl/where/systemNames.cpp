#include "tavctl/where/systemNames.h"

#include "platform/utf8Path.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <set>
#include <system_error>

namespace tavctl {

namespace {

namespace fs = std::filesystem;

// The function nearest to what a path leads to: the last part of it that is an address.
std::optional<DomainAddress> functionOf(const fs::path& path) {
    std::optional<DomainAddress> found;
    for (const fs::path& part : path) {
        const std::string text = platform::utf8Text(part);
        // With its domain, as sysfs writes it; "1:0:0:0" and the like are none.
        if (std::count(text.begin(), text.end(), ':') != 2)
            continue;
        if (const auto address = readDomainAddress(text))
            found = address;
    }
    return found;
}

// A slash in /dev is an exclamation mark in sysfs.
std::string nameOf(const fs::path& entry) {
    std::string name = platform::utf8Text(entry.filename());
    std::replace(name.begin(), name.end(), '!', '/');
    return name;
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        entries.push_back(at->path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

// A disk to which several controllers lead is below none of them, but below a folder that has a
// link to each.
std::vector<fs::path> controllersOf(const fs::path& disk) {
    fs::path group = disk;
    while (group.has_relative_path() &&
           !platform::utf8Text(group.filename()).starts_with("nvme-subsys"))
        group = group.parent_path();
    std::vector<fs::path> controllers;
    if (!group.has_relative_path())
        return controllers;
    for (const fs::path& entry : entriesOf(group)) {
        std::error_code error;
        if (fs::is_symlink(entry, error) && platform::utf8Text(entry.filename()) != "subsystem")
            controllers.push_back(fs::canonical(entry, error));
    }
    return controllers;
}

std::vector<DomainAddress> functionsOf(const fs::path& target) {
    std::vector<DomainAddress> functions;
    if (const auto function = functionOf(target))
        return {*function};
    for (const fs::path& controller : controllersOf(target)) {
        if (const auto function = functionOf(controller))
            functions.push_back(*function);
    }
    return functions;
}

// One way to a disk that has several stands beside the disks, and nobody can open it.
bool isHidden(const fs::path& target) {
    return std::ifstream(target / "hidden").get() == '1';
}

} // namespace

SystemNames::SystemNames(fs::path root) : root_(std::move(root)) {
    for (const fs::path& kind : entriesOf(root_ / "class")) {
        for (const fs::path& entry : entriesOf(kind))
            addEntry(platform::utf8Text(kind.filename()), entry);
    }
}

void SystemNames::addEntry(const std::string& kind, const fs::path& entry) {
    std::error_code error;
    const fs::path target = fs::canonical(entry, error);
    if (error || kind == "pci_bus")
        return;
    const std::string name = nameOf(entry);
    const bool isPart =
        kind == "block" && (fs::exists(target / "partition", error) || isHidden(target));
    for (const DomainAddress& function : functionsOf(target)) {
        const Place place(function.domain, function.handle);
        byPlace_.emplace(place, SystemName{kind, name, isPart});
        byName_.emplace(name, place);
    }
}

std::vector<SystemName> SystemNames::of(const DomainAddress& address) const {
    std::vector<SystemName> names;
    const auto [first, last] = byPlace_.equal_range({address.domain, address.handle});
    for (auto at = first; at != last; ++at)
        names.push_back(at->second);
    return names;
}

std::vector<DomainAddress> SystemNames::find(const std::string& name) const {
    std::set<Place> places;
    const auto add = [&](const std::string& wanted) {
        const auto [first, last] = byName_.equal_range(wanted);
        for (auto at = first; at != last; ++at)
            places.insert(at->second);
    };
    constexpr std::string_view kDev = "/dev/";
    if (name.starts_with(kDev)) {
        add(name.substr(kDev.size()));
    } else if (name.find('/') != std::string::npos) {
        std::error_code error;
        const fs::path path = fs::canonical(platform::utf8Path(name), error);
        if (!error) {
            for (const DomainAddress& function : functionsOf(path))
                places.emplace(function.domain, function.handle);
        }
    }
    if (places.empty())
        add(name);
    std::vector<DomainAddress> found;
    found.reserve(places.size());
    for (const auto& [domain, handle] : places)
        found.push_back({domain, handle});
    return found;
}

std::vector<std::string> SystemNames::names() const {
    std::vector<std::string> names;
    names.reserve(byName_.size());
    for (const auto& [name, place] : byName_)
        names.push_back(name);
    return names;
}

} // namespace tavctl

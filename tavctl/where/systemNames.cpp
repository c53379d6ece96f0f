#include "tavctl/where/systemNames.h"

#include "platform/utf8Path.h"

#include <algorithm>
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
    const auto function = error ? std::nullopt : functionOf(target);
    if (!function || kind == "pci_bus")
        return;
    const Place place(function->domain, function->handle);
    const std::string name = nameOf(entry);
    const bool isPart = kind == "block" && fs::exists(target / "partition", error);
    byPlace_.emplace(place, SystemName{kind, name, isPart});
    byName_.emplace(name, place);
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
        if (const auto function = error ? std::nullopt : functionOf(path))
            places.emplace(function->domain, function->handle);
    }
    if (places.empty())
        add(name);
    std::vector<DomainAddress> found;
    for (const auto& [domain, handle] : places)
        found.push_back({domain, handle});
    return found;
}

std::vector<std::string> SystemNames::names() const {
    std::vector<std::string> names;
    for (const auto& [name, place] : byName_)
        names.push_back(name);
    return names;
}

} // namespace tavctl

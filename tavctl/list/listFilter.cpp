#include "tavctl/list/listFilter.h"

#include "tavctl/view/deviceWord.h"
#include "tavctl/words/failure.h"

#include <algorithm>
#include <set>

namespace tavctl {

namespace {

template <typename Item, typename Keep>
void keepOnly(std::vector<Item>& items, Keep keep) {
    std::erase_if(items, [&](const Item& item) { return !keep(item); });
}

// The positions of the devices that one of the words stands for.
using Wanted = std::set<std::size_t>;

std::vector<ListedDevice> presentDevices(const Listing& listing) {
    std::vector<ListedDevice> devices;
    for (const ListingEntry& entry : listing.devices)
        devices.push_back(entry.device);
    return devices;
}

// An absent device is known by its name alone.
bool isAbsent(const std::string& word, const Listing& listing) {
    return std::any_of(listing.absent.begin(), listing.absent.end(),
                       [&](const ListingAbsence& each) { return each.device.name == word; });
}

void keepWanted(const Wanted& wanted, const std::set<std::string>& absentNames, Listing& listing) {
    std::size_t position = 0;
    keepOnly(listing.devices, [&](const ListingEntry&) { return wanted.contains(position++); });
    keepOnly(listing.absent,
             [&](const ListingAbsence& each) { return absentNames.contains(each.device.name); });
}

} // namespace

void ListFilter::addTo(CommandOptions command) {
    command.arguments(devices, ValueForm::device(),
                      "Only these: name, address or model; or more dumps");
    command.value("--category", category,
                  ValueForm::choice("WORD", {"PCI", "Expresscard", "SwitchboxTav"}),
                  "PCI, Expresscard or SwitchboxTav");
    command.flag("--all", all, "Also those with a name that are not there");
    command.flag("--present", present, "Only those that are there");
    command.flag("--absent", absent, "Only those with a name that are not there");
    command.flag("--free-port", freePort, "Only those with an empty connector");
    command.flag("--degraded", degraded, "Only links below what both ends can; then exit 1");
}

bool ListFilter::isNarrow() const {
    return !devices.empty() || !category.empty() || absent || freePort || degraded;
}

void ListFilter::requireNoContradiction() const {
    if (present && (all || absent))
        throw FailureException({"list", "--present", "it excludes --all and --absent", {}, {}},
                               ExitStatus::wrongUsage);
}

void ListFilter::apply(Listing& listing) const {
    requireNoContradiction();
    if (!devices.empty()) {
        std::vector<std::string> presentWords;
        std::set<std::string> absentNames;
        for (const std::string& word : devices) {
            if (isAbsent(word, listing))
                absentNames.insert(word);
            else
                presentWords.push_back(word);
        }
        Wanted wanted;
        for (const DeviceWord& chosen : readDeviceWords(presentWords, presentDevices(listing))) {
            if (chosen.devices.empty())
                failWithoutDevice(chosen);
            wanted.insert(chosen.devices.begin(), chosen.devices.end());
        }
        keepWanted(wanted, absentNames, listing);
    }
    applyWithoutDevices(listing);
}

void ListFilter::applyToOneOfMany(Listing& listing, std::set<std::string>& found) const {
    requireNoContradiction();
    if (!devices.empty()) {
        const auto ofMachine = presentDevices(listing);
        std::set<std::string> absentNames;
        Wanted wanted;
        for (const std::string& word : devices) {
            if (isAbsent(word, listing)) {
                absentNames.insert(word);
                found.insert(word);
            } else if (const auto chosen = findDeviceWord(word, ofMachine);
                       chosen && !chosen->devices.empty()) {
                wanted.insert(chosen->devices.begin(), chosen->devices.end());
                found.insert(word);
            }
        }
        keepWanted(wanted, absentNames, listing);
    }
    applyWithoutDevices(listing);
}

void ListFilter::applyWithoutDevices(Listing& listing) const {
    keepOnly(listing.devices, [&](const ListingEntry& entry) {
        return !absent && (category.empty() || categoryName(entry.device.category) == category) &&
               (!freePort || entry.hasFreePort()) && (!degraded || entry.isDegraded());
    });
    // Of what is not there no category, connector or link is known.
    if (!category.empty() || freePort || degraded || present)
        listing.absent.clear();
}

} // namespace tavctl

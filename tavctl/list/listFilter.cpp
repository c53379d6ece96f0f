#include "tavctl/list/listFilter.h"

#include "tavctl/view/deviceWord.h"
#include "tavctl/words/failure.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tavctl {

namespace {

template <typename Item, typename Keep>
void keepOnly(std::vector<Item>& items, Keep keep) {
    std::erase_if(items, [&](const Item& item) { return !keep(item); });
}

// Says what each word stands for among these devices; those that stand for none may be left out.
using Reader = std::vector<DeviceWord> (*)(const std::vector<std::string>& words,
                                           const std::vector<ListedDevice>& devices);

std::vector<DeviceWord> readOfOneMachine(const std::vector<std::string>& words,
                                         const std::vector<ListedDevice>& devices) {
    std::vector<DeviceWord> chosen = readDeviceWords(words, devices);
    for (const DeviceWord& each : chosen) {
        if (each.devices.empty())
            failWithoutDevice(each);
    }
    return chosen;
}

std::vector<DeviceWord> readOfOneOfMany(const std::vector<std::string>& words,
                                        const std::vector<ListedDevice>& devices) {
    std::vector<DeviceWord> chosen;
    for (const std::string& word : words) {
        if (auto each = findDeviceWord(word, devices); each && !each->devices.empty())
            chosen.push_back(std::move(*each));
    }
    return chosen;
}

// Keeps what the words stand for; answers with those that stand for something. An absent device is
// known by its name alone.
std::set<std::string> keepNamed(const std::vector<std::string>& words, Reader read,
                                Listing& listing) {
    std::vector<ListedDevice> devices;
    for (const ListingEntry& entry : listing.devices)
        devices.push_back(entry.device);
    std::vector<std::string> presentWords;
    std::set<std::string> found;
    for (const std::string& word : words) {
        if (std::any_of(listing.absent.begin(), listing.absent.end(),
                        [&](const ListingAbsence& each) { return each.device.name == word; }))
            found.insert(word);
        else
            presentWords.push_back(word);
    }
    keepOnly(listing.absent,
             [&](const ListingAbsence& each) { return found.contains(each.device.name); });
    std::set<std::size_t> wanted;
    for (const DeviceWord& chosen : read(presentWords, devices)) {
        wanted.insert(chosen.devices.begin(), chosen.devices.end());
        found.insert(chosen.word);
    }
    std::size_t position = 0;
    keepOnly(listing.devices, [&](const ListingEntry&) { return wanted.contains(position++); });
    return found;
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
    if (!devices.empty())
        keepNamed(devices, readOfOneMachine, listing);
    applyWithoutDevices(listing);
}

void ListFilter::applyToOneOfMany(Listing& listing, std::set<std::string>& found) const {
    requireNoContradiction();
    if (!devices.empty())
        found.merge(keepNamed(devices, readOfOneOfMany, listing));
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

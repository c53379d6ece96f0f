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

// What the words stand for. An absent device is known by its name alone.
void keepNamed(const std::vector<std::string>& words, ListFilter::Machines machines,
               Listing& listing) {
    std::vector<ListedDevice> devices;
    for (const ListingEntry& entry : listing.devices)
        devices.push_back(entry.device);
    std::vector<std::string> presentWords;
    std::set<std::string> absentNames;
    for (const std::string& word : words) {
        if (std::any_of(listing.absent.begin(), listing.absent.end(),
                        [&](const ListingAbsence& each) { return each.device.name == word; }))
            absentNames.insert(word);
        else
            presentWords.push_back(word);
    }
    std::set<std::size_t> wanted;
    const auto want = [&](const DeviceWord& chosen) {
        wanted.insert(chosen.devices.begin(), chosen.devices.end());
    };
    if (machines == ListFilter::Machines::many) {
        for (const std::string& word : presentWords) {
            if (const auto chosen = findDeviceWord(word, devices))
                want(*chosen);
        }
    } else {
        for (const DeviceWord& chosen : readDeviceWords(presentWords, devices)) {
            if (chosen.devices.empty())
                failWithoutDevice(chosen);
            want(chosen);
        }
    }
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

void ListFilter::apply(Listing& listing, Machines machines) const {
    if (present && (all || absent))
        throw FailureException({"list", "--present", "it excludes --all and --absent", {}, {}},
                               ExitStatus::wrongUsage);
    if (!devices.empty())
        keepNamed(devices, machines, listing);
    keepOnly(listing.devices, [&](const ListingEntry& entry) {
        return !absent && (category.empty() || categoryName(entry.device.category) == category) &&
               (!freePort || entry.hasFreePort()) && (!degraded || entry.isDegraded());
    });
    // Of what is not there no category, connector or link is known.
    if (!category.empty() || freePort || degraded || present)
        listing.absent.clear();
}

} // namespace tavctl

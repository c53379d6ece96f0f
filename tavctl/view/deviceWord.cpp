#include "tavctl/view/deviceWord.h"

#include "tavctl/words/failure.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using DeviceList = std::vector<ListedDevice>;

template <typename Matches>
std::vector<std::size_t> positions(const DeviceList& devices, Matches matches) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (matches(devices[i]))
            found.push_back(i);
    }
    return found;
}

[[noreturn]] void failWithout(const std::string& word, const DeviceList& devices) {
    std::vector<std::string> names;
    for (const ListedDevice& device : devices) {
        names.push_back(device.terminalName);
        names.push_back(device.model);
    }
    std::string reason = devices.empty() ? "no described device is present on this bus"
                                         : "no device has this name, address or model";
    if (const std::string near = nearestName(word, names); !near.empty())
        reason += fmt::format("; did you mean \"{}\"?", near);
    throw FailureException({"find device", word, reason, {}, {}}, ExitStatus::problemFound);
}

std::string sentence(const DeviceWord& chosen, const DeviceList& devices) {
    std::vector<std::string> found;
    for (const std::size_t i : chosen.devices)
        found.push_back(chosen.kind == DeviceWord::Kind::name
                            ? fmt::format("{} at {}", devices[i].model, addressOf(devices[i]))
                        : chosen.kind == DeviceWord::Kind::address
                            ? fmt::format("{} ({})", devices[i].terminalName, devices[i].model)
                            : devices[i].terminalName);
    switch (chosen.kind) {
    case DeviceWord::Kind::name:
        return fmt::format("{} is a terminal name: {}", chosen.word, enumerated(found));
    case DeviceWord::Kind::address:
        return fmt::format("{} is an address: {}", chosen.word,
                           found.empty() ? "no device is reported there" : enumerated(found));
    case DeviceWord::Kind::model:
        break;
    }
    return fmt::format("{} is a model: {}", chosen.word, enumerated(found));
}

} // namespace

std::optional<DeviceWord> findDeviceWord(const std::string& word, const DeviceList& devices) {
    if (const auto address = readDomainAddress(word))
        return DeviceWord{word, DeviceWord::Kind::address,
                          positions(devices,
                                    [&](const ListedDevice& device) {
                                        return address->domain == 0 &&
                                               readBusAddress(addressOf(device)) == address->handle;
                                    }),
                          address};
    // As lists mark a name that is not stored.
    const std::string name = word.ends_with('*') ? word.substr(0, word.size() - 1) : word;
    auto found = positions(devices, [&](const ListedDevice& device) {
        return device.terminalName == name || device.terminalName == word;
    });
    if (!found.empty())
        return DeviceWord{word, DeviceWord::Kind::name, std::move(found), {}};
    found = positions(devices, [&](const ListedDevice& device) { return device.model == word; });
    if (found.empty())
        found = positions(devices, [&](const ListedDevice& device) {
            return device.model.find(word) != std::string::npos;
        });
    if (found.empty())
        return std::nullopt;
    return DeviceWord{word, DeviceWord::Kind::model, std::move(found), {}};
}

DeviceWord readDeviceWord(const std::string& word, const DeviceList& devices) {
    auto found = findDeviceWord(word, devices);
    if (!found)
        failWithout(word, devices);
    return std::move(*found);
}

void failWithoutDevice(const DeviceWord& address) {
    throw FailureException(
        {"find device",
         address.word,
         "no device is reported at this address",
         {},
         {},
         fmt::format("\"tavctl where {}\" tells in which connector it is", address.word)},
        ExitStatus::problemFound);
}

std::vector<DeviceWord> readDeviceWords(const std::vector<std::string>& words,
                                        const DeviceList& devices) {
    std::vector<DeviceWord> chosen;
    for (const std::string& word : words) {
        chosen.push_back(readDeviceWord(word, devices));
        complain(sentence(chosen.back(), devices));
    }
    return chosen;
}

} // namespace tavctl

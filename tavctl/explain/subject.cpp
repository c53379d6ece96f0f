#include "tavctl/explain/subject.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::explain {

namespace {

using nZoTavManagerPciPlugin_15_0::tBusAddress;

tBusAddress busAddress(std::uint32_t handle) {
    constexpr std::uint32_t kByte = 0xFF;
    tBusAddress address;
    address.bus = static_cast<std::uint8_t>(handle >> 8 & kByte);
    address.device = pcibus::deviceOfHop(static_cast<std::uint8_t>(handle & kByte));
    address.function = pcibus::functionOfHop(static_cast<std::uint8_t>(handle & kByte));
    return address;
}

[[noreturn]] void fail(const std::string& word, const std::string& reason, std::string hint = {}) {
    throw FailureException({"explain", word, reason, {}, {}, std::move(hint)},
                           ExitStatus::problemFound);
}

// None where the plug-in cannot be initialised, which explain may be asked about.
std::vector<ListedDevice> devicesIfThere(const CommonOptions& options, const HostSetup& setup) {
    try {
        return devicesOfPlugin(options, setup);
    } catch (const FailureException&) {
        return {};
    }
}

} // namespace

bool Subject::keep(Explanation& explanation) const {
    if (!address)
        return true;
    std::erase_if(explanation.candidates, [&](const Candidate& each) {
        return each.address != *address &&
               (each.outcome != Outcome::listed || each.reported != *address);
    });
    std::erase_if(explanation.near,
                  [&](const NearFunction& each) { return each.address != *address; });
    return !explanation.candidates.empty() || !explanation.near.empty();
}

Subject subjectOf(const std::string& word, const std::vector<std::string>& models,
                  const CommonOptions& options, const HostSetup& setup) {
    if (word.empty())
        return {};
    if (const auto address = readDomainAddress(word)) {
        if (address->domain != 0)
            fail(word, "it is of another domain; the plug-in and its bridge library know domain 0 "
                       "alone");
        complain(fmt::format("{} is an address: of every model what is about it", word));
        return {word, {}, busAddress(address->handle)};
    }
    if (std::find(models.begin(), models.end(), word) != models.end())
        return {word, word, {}};
    std::vector<std::string> names = models;
    for (const ListedDevice& device : devicesIfThere(options, setup)) {
        names.push_back(device.terminalName);
        if (device.terminalName != word)
            continue;
        complain(
            fmt::format("{} is a terminal name: {} at {}", word, device.model, addressOf(device)));
        return {word, device.model, busAddress(*readBusAddress(addressOf(device)))};
    }
    std::string reason = "no description file describes this model";
    if (const std::string near = nearestName(word, names); !near.empty())
        reason += fmt::format("; did you mean \"{}\"?", near);
    fail(word, reason);
}

void failWithoutModel(const Subject& subject, const WholeBus& bus) {
    const tBusAddress& address = *subject.address;
    const auto* const function = bus.searched->find(
        static_cast<std::uint32_t>(address.bus << 8 | address.device << 3 | address.function));
    if (function == nullptr)
        fail(subject.word, "there is no function at this address");
    fail(subject.word,
         fmt::format("no model has an anchor with the identifiers of this {}, {}, or nearly so",
                     function->isBridge() ? "bridge" : "function", idsText(function->ids())),
         fmt::format("\"tavctl describe {}\" describes a box; \"tavctl where {}\" tells which box "
                     "something is in",
                     subject.word, subject.word));
}

} // namespace tavctl::explain

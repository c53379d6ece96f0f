#include "pxidrivertools/cSlotPath.h"

#include "pxidrivertools/scan.h"
#include "quil/setError.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

using nZOQUIL000::tErrorSite;
using nZOQUIL000::tErrorStatus;

constexpr const char* kFile = "pxidrivertools\\slotpath\\cslotpath";

// The places that error records name.
constexpr int kLineHop = 456;
constexpr int kLineChangeFunctionWithoutHops = 513;
constexpr int kLineUpWithoutHops = 903;
constexpr int kLineFunctionStepRefused = 934;
constexpr int kLineUnknownStep = 944;

// Width of a hop and of the comma behind it, and of "MR00:".
constexpr std::size_t kHopWidth = 2;
constexpr std::size_t kRootPartWidth = 5;

void setBadText(tErrorStatus& status, int line) {
    nZOQUIL000::setError(status, kSlotPathErrBadText,
                         {kFile, line, nZOQUIL000::kComponent, "kSlotPathErrBadText"});
}

void setOutOfMemory(tErrorStatus& status, tErrorSite site) {
    nZOQUIL000::setError(status, nZOQUIL000::zoquilerr_memoryFull, site);
}

constexpr const char* kMemoryFull = "zoquilerr_memoryFull";

constexpr std::uint8_t encodeHop(std::int32_t device, std::int32_t function) {
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(device) * 8U |
                                     static_cast<std::uint32_t>(function));
}

void appendHexByte(std::string& text, std::uint8_t byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
}

void appendHops(std::string& text, const std::list<std::uint8_t>& hops) {
    bool first = true;
    for (const std::uint8_t hop : hops) {
        if (!first)
            text += ',';
        appendHexByte(text, hop);
        first = false;
    }
}

// Reads the root part off the cursor; without one the root bus is 0.
std::uint8_t takeRootPart(std::string_view& cursor) {
    std::string_view ahead = cursor;
    if (scanCharacter(ahead, 'M') && scanCharacter(ahead, 'R')) {
        const auto bus = scanHexadecimal(ahead, kHopWidth);
        if (bus && scanCharacter(ahead, ':')) {
            cursor.remove_prefix(std::min(kRootPartWidth, cursor.size()));
            return static_cast<std::uint8_t>(*bus);
        }
    }
    ahead = cursor;
    const auto bus = scanUnsigned(ahead);
    if (bus && scanCharacter(ahead, ':')) {
        cursor = ahead;
        return static_cast<std::uint8_t>(*bus);
    }
    return 0;
}

} // namespace

cSlotPath::cSlotPath(const cSlotPath& other) : rootBus(other.rootBus) {
    if (other.state.failed())
        nZOQUIL000::mergeStatus(state, other.state);
    try {
        hops = other.hops;
    } catch (const std::bad_alloc&) {
        setOutOfMemory(state, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

bool cSlotPath::mayProceed(tErrorStatus& status) const {
    if (status.failed())
        return false;
    if (!state.failed())
        return true;
    nZOQUIL000::mergeStatus(status, state);
    return false;
}

void cSlotPath::ParseMachineText(std::string_view machineText, tErrorStatus& status) {
    if (!mayProceed(status))
        return;
    hops.clear();
    std::string_view cursor = machineText;
    rootBus = takeRootPart(cursor);
    try {
        while (!cursor.empty()) {
            std::string_view ahead = cursor;
            const auto hop = scanHexadecimal(ahead, kHopWidth);
            if (!hop) {
                setBadText(status, kLineHop);
                return;
            }
            hops.push_back(static_cast<std::uint8_t>(*hop));
            // However the hop was written, the next one stands three characters on.
            if (cursor.size() <= kHopWidth + 1 || cursor[kHopWidth] != ',')
                return;
            cursor.remove_prefix(kHopWidth + 1);
        }
    } catch (const std::bad_alloc&) {
        setOutOfMemory(status, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

void cSlotPath::FormatMachineText(std::string& result, tErrorStatus& status) const {
    if (!mayProceed(status))
        return;
    try {
        std::string text = "MR";
        appendHexByte(text, rootBus);
        text += ':';
        appendHops(text, hops);
        result = std::move(text);
    } catch (const std::bad_alloc&) {
        setOutOfMemory(status, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

void cSlotPath::ToString(std::string& result, tErrorStatus& status) const {
    FormatMachineText(result, status);
}

void cSlotPath::FormatHops(std::string& result, tErrorStatus& status) const {
    if (!mayProceed(status))
        return;
    try {
        std::string text;
        appendHops(text, hops);
        result = std::move(text);
    } catch (const std::bad_alloc&) {
        setOutOfMemory(status, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

void cSlotPath::PrependHop(std::int32_t device, std::int32_t function, tErrorStatus& status) {
    if (!mayProceed(status))
        return;
    try {
        hops.push_front(encodeHop(device, function));
    } catch (const std::bad_alloc&) {
        setOutOfMemory(status, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

void cSlotPath::ApplyRelativePath(std::string_view steps, tErrorStatus& status) {
    if (!mayProceed(status))
        return;
    if (steps.empty())
        return;
    for (std::string_view rest = steps;;) {
        const std::size_t comma = rest.find(',');
        applyStep(rest.substr(0, comma), status);
        if (status.failed() || comma == std::string_view::npos)
            return;
        rest.remove_prefix(comma + 1);
    }
}

void cSlotPath::applyStep(std::string_view step, tErrorStatus& status) {
    if (step == "-") {
        goUp(status);
        return;
    }
    std::string_view cursor = step;
    if (scanCharacter(cursor, 'd')) {
        const auto device = scanSigned(cursor);
        const bool separated = device && scanCharacter(cursor, 'f');
        const auto function = separated ? scanSigned(cursor) : std::nullopt;
        if (function && cursor.empty()) {
            PrependHop(*device, *function, status);
            return;
        }
    }
    changeFunction(step, status);
}

void cSlotPath::goUp(tErrorStatus& status) {
    if (hops.empty()) {
        setBadText(status, kLineUpWithoutHops);
        return;
    }
    hops.pop_front();
}

void cSlotPath::changeFunction(std::string_view step, tErrorStatus& status) {
    const bool named = scanCharacter(step, 'f');
    const auto function = named ? scanSigned(step) : std::nullopt;
    if (!function || !step.empty()) {
        setBadText(status, kLineUnknownStep);
        return;
    }
    if (hops.empty()) {
        nZOQUIL000::setError(status, kSlotPathErrEmptyPath,
                             {kFile, kLineChangeFunctionWithoutHops, nZOQUIL000::kComponent,
                              "kSlotPathErrEmptyPath"});
        setBadText(status, kLineFunctionStepRefused); // yields to the error before
        return;
    }
    hops.front() = encodeHop(hops.front() >> 3, *function);
}

void cSlotPath::Clear(tErrorStatus& status) {
    if (mayProceed(status))
        hops.clear();
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

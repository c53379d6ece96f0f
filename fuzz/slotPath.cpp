// A machine text in the first line, a relative path behind it. Both are held against the same rules
// told with the C library's own scanf, and what a path prints is read as that path again.
#include "fuzz/expect.h"
#include "pxidrivertools/cSlotPath.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <list>
#include <string>
#include <string_view>

namespace {

using fuzz::expect;
using nZOQUIL000::tErrorStatus;
using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

struct Path {
    std::uint8_t rootBus = 0;
    std::list<std::uint8_t> hops;
    std::int32_t code = 0;
};

Path parse(const std::string& text) {
    Path path;
    const char* at = text.c_str();
    unsigned number = 0;
    char character = 0;
    unsigned char small = 0;
    int colon = 0;
    if (std::sscanf(at, "MR%2X:%n", &number, &colon) == 1 && colon != 0) {
        path.rootBus = static_cast<std::uint8_t>(number);
        at += std::min<std::size_t>(5, text.size());
    } else if (std::sscanf(at, "%hhu%c", &small, &character) == 2 && character == ':') {
        path.rootBus = small;
        at = std::strchr(at, ':') + 1;
    }
    while (*at != '\0') {
        if (std::sscanf(at, "%2X", &number) != 1) {
            path.code = kSlotPathErrBadText;
            break;
        }
        path.hops.push_back(static_cast<std::uint8_t>(number));
        if (std::strlen(at) <= 3 || at[2] != ',')
            break;
        at += 3;
    }
    return path;
}

std::uint8_t hop(int device, int function) {
    return static_cast<std::uint8_t>(static_cast<unsigned>(device) * 8 |
                                     static_cast<unsigned>(function));
}

std::int32_t takeStep(std::list<std::uint8_t>& hops, const std::string& step) {
    int device = 0;
    int function = 0;
    char more = 0;
    if (step == "-") {
        if (hops.empty())
            return kSlotPathErrBadText;
        hops.pop_front();
    } else if (std::sscanf(step.c_str(), "d%df%d%c", &device, &function, &more) == 2) {
        hops.push_front(hop(device, function));
    } else if (std::sscanf(step.c_str(), "f%d%c", &function, &more) == 1) {
        if (hops.empty())
            return kSlotPathErrEmptyPath;
        hops.front() = hop(hops.front() >> 3, function);
    } else {
        return kSlotPathErrBadText;
    }
    return 0;
}

void apply(Path& path, const std::string& steps) {
    for (std::size_t at = 0; !steps.empty() && at <= steps.size() && path.code == 0;) {
        const std::size_t comma = std::min(steps.find(',', at), steps.size());
        path.code = takeStep(path.hops, steps.substr(at, comma - at));
        at = comma + 1;
    }
}

// Whether scanf answers as this system does: no NUL, which ends a text for it; no number beyond
// its type, for which it has no defined answer; and no "0x" before nothing.
bool isDefinedForScanf(std::string_view text) {
    constexpr std::size_t kSafeDigits = 9;
    std::size_t digits = 0;
    for (const char c : text) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        if (c == '\0' || digits > kSafeDigits || c == 'x' || c == 'X')
            return false;
    }
    return true;
}

void expectSame(const cSlotPath& path, const tErrorStatus& status, const Path& expected) {
    expect(status.code == expected.code, "the status is that of the rules");
    expect(path.rootBus == expected.rootBus && path.hops == expected.hops,
           "the path is that of the rules");
}

std::string printed(const cSlotPath& path) {
    tErrorStatus status;
    std::string text;
    path.ToString(text, status);
    expect(status.code == 0, "a path can be printed");
    return text;
}

void expectPrints(const cSlotPath& path) {
    const std::string text = printed(path);
    std::array<char, 8> root{};
    std::snprintf(root.data(), root.size(), "MR%02X:", path.rootBus);
    expect(text.starts_with(root.data()), "a path begins with its root bus");
    tErrorStatus status;
    std::string hops;
    path.FormatHops(hops, status);
    expect(text == root.data() + hops, "the hops follow the root bus");
    expect(hops.size() == (path.hops.empty() ? 0 : path.hops.size() * 3 - 1),
           "a hop is two digits, with commas between");
    cSlotPath again;
    again.ParseMachineText(text, status);
    expect(status.code == 0 && again.rootBus == path.rootBus && again.hops == path.hops,
           "a printed path is read as that path");
    expect(printed(again) == text, "a printed path prints as it is");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string machineText(input.substr(0, input.find('\n')));
    const std::string steps(input.substr(std::min(machineText.size() + 1, input.size())));

    cSlotPath path;
    tErrorStatus status;
    path.ParseMachineText(machineText, status);
    expect(status.code == 0 || status.code == kSlotPathErrBadText, "the status is documented");
    expect((status.text == nullptr) == (status.code == 0), "an error has a record");
    Path expected = parse(machineText);
    if (isDefinedForScanf(machineText))
        expectSame(path, status, expected);
    expectPrints(path);

    tErrorStatus applied;
    expected = {path.rootBus, path.hops, 0};
    path.ApplyRelativePath(steps, applied);
    expect(applied.code == 0 || applied.code == kSlotPathErrBadText ||
               applied.code == kSlotPathErrEmptyPath,
           "the status is documented");
    if (isDefinedForScanf(steps)) {
        apply(expected, steps);
        expectSame(path, applied, expected);
    }
    expectPrints(path);

    // After an error nothing is done any more.
    if (applied.code != 0) {
        const std::string before = printed(path);
        path.ApplyRelativePath("d0f0", applied);
        path.ParseMachineText("00", applied);
        path.Clear(applied);
        expect(printed(path) == before, "a status that has failed stops every operation");
    }
    return 0;
}

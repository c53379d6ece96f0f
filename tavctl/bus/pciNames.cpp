#include "tavctl/bus/pciNames.h"

#include "platform/file.h"
#include "platform/programPath.h"
#include "platform/sharedData.h"
#include "platform/systemCode.h"
#include "tavctl/words/failure.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <vector>

namespace tavctl {

namespace {

constexpr const char* kFileName = "pci.ids";
constexpr std::size_t kIdDigits = 4;

std::uint64_t keyOf(std::uint16_t vendorId, std::uint16_t deviceId) {
    return std::uint64_t{vendorId} << 16 | deviceId;
}

// "8086  Intel Corporation": the number, with the text cut down to the name.
std::optional<std::uint16_t> takeId(std::string_view& line) {
    unsigned id = 0;
    for (std::size_t i = 0; i < kIdDigits; ++i) {
        if (i >= line.size())
            return std::nullopt;
        const char c = line[i];
        const bool decimal = c >= '0' && c <= '9';
        if (!decimal && (c < 'a' || c > 'f'))
            return std::nullopt;
        id = id << 4 | static_cast<unsigned>(decimal ? c - '0' : c - 'a' + 10);
    }
    line.remove_prefix(kIdDigits);
    const std::size_t name = line.find_first_not_of(' ');
    if (name == 0 || name == std::string_view::npos)
        return std::nullopt;
    line.remove_prefix(name);
    return static_cast<std::uint16_t>(id);
}

std::optional<std::string> readFile(const std::string& path) {
    const platform::Stream stream = platform::openStream(path.c_str(), "rb");
    if (!stream)
        return std::nullopt;
    std::string text;
    std::vector<char> chunk(std::size_t{1} << 16);
    while (const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), stream.get()))
        text.append(chunk.data(), size);
    if (std::ferror(stream.get()) != 0)
        return std::nullopt;
    return text;
}

} // namespace

PciNames PciNames::load(const std::string& file) {
    if (!file.empty()) {
        const auto text = readFile(file);
        if (!text)
            throw FailureException({"read names of vendors and devices",
                                    file,
                                    platform::systemMessage(platform::lastSystemCode()),
                                    {},
                                    {}});
        return parse(*text);
    }
    std::vector<std::string> folders = platform::sharedDataFolders();
    folders.insert(folders.begin(), platform::programFolder());
    for (const std::string& folder : folders) {
        if (const auto text = readFile(folder + kFileName))
            return parse(*text);
    }
    return {};
}

PciNames PciNames::parse(std::string_view text) {
    PciNames names; // the lines are in order, as a rule
    std::optional<std::uint16_t> vendor;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.remove_suffix(1);
        if (line.starts_with("\t\t") || line.starts_with('#') || line.empty())
            continue;
        if (!line.starts_with('\t')) {
            vendor = takeId(line);
            if (vendor)
                names.vendors_.emplace_hint(names.vendors_.end(), *vendor, line);
            continue;
        }
        line.remove_prefix(1);
        if (!vendor)
            continue;
        if (const auto device = takeId(line))
            names.devices_.emplace_hint(names.devices_.end(), keyOf(*vendor, *device), line);
    }
    return names;
}

std::string PciNames::vendor(std::uint16_t vendorId) const {
    const auto found = vendors_.find(vendorId);
    return found == vendors_.end() ? std::string() : found->second;
}

std::string PciNames::device(std::uint16_t vendorId, std::uint16_t deviceId) const {
    const auto found = devices_.find(keyOf(vendorId, deviceId));
    return found == devices_.end() ? std::string() : found->second;
}

std::string PciNames::function(std::uint16_t vendorId, std::uint16_t deviceId) const {
    const std::string maker = vendor(vendorId);
    if (maker.empty())
        return fmt::format("Device {:04x}:{:04x}", vendorId, deviceId);
    const std::string name = device(vendorId, deviceId);
    return name.empty() ? fmt::format("{} Device {:04x}", maker, deviceId)
                        : fmt::format("{} {}", maker, name);
}

} // namespace tavctl

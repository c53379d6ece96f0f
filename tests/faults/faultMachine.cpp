#include "tests/faults/faultMachine.h"

#include "tests/support/busBuilder.h"
#include "tests/support/fileText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testfaults {

namespace {

namespace fs = std::filesystem;
using testsupport::BusBuilder;
using testsupport::Ids;

constexpr Ids kBoxUp{0x104C, 0x8232, 0, 0};
constexpr Ids kBoxDown{0x104C, 0x8233, 0, 0};
constexpr Ids kWide{0x1B36, 0x000C, 0x1B36, 0};

BusBuilder::Node addBox(BusBuilder& bus, unsigned rootDevice) {
    const auto port = bus.rootPort(0, rootDevice, 0, {0x8086, 0x3420, 0, 0});
    const auto up = bus.bridge(port, 0, 0, kBoxUp);
    BusBuilder::Node first = up;
    for (unsigned device = 0; device < 3; ++device) {
        const auto down = bus.bridge(up, device, 0, kBoxDown);
        first = device == 0 ? down : first;
    }
    return first;
}

std::string busText() {
    BusBuilder bus;
    const auto connector = addBox(bus, 4);
    addBox(bus, 5);
    const auto card = bus.bridge(connector, 0, 0, {0x1B36, 0x000E, 0, 0}, 0);
    bus.endpoint(card, 1, 0, {0x1B36, 0x0002, 0x1AF4, 0x1100});
    bus.bridge(card, 2, 0, {0x1B36, 0x0001, 0, 0}, 0);
    bus.bridge(card, 3, 0, {0x1B36, 0x0001, 0, 0}, 0);
    const auto wide = bus.bridge(bus.rootPort(0x40, 1, 0, {0x8086, 0x3420, 0, 0}), 0, 0, kWide, 8);
    for (unsigned function = 0; function < 3; ++function)
        bus.bridge(wide, 0, function, kWide, 4U << function);
    return bus.dump();
}

// The sample descriptions, the one without a base of its own given one.
fs::path makeFolders(const testsupport::TemporaryFolder& folder) {
    fs::create_directory(folder.path() / "state");
    const std::string descriptions = "PCI Hardware Descriptions";
    for (const auto& entry :
         fs::directory_iterator(fs::path(TAV_SOURCE_DIR) / "descriptions" / descriptions)) {
        std::string text = testsupport::fileText(entry.path());
        if (text.find("\nTerminalNameBase") == std::string::npos) {
            const std::string section = "[UpstreamTAV]\n";
            text.insert(text.find(section) + section.size(), "TerminalNameBase = TAVWide\n");
        }
        static_cast<void>(folder.file(descriptions + "/" + entry.path().filename().string(), text));
    }
    return folder.file("bus.dump", busText());
}

} // namespace

FaultMachine::FaultMachine()
    : machine_(makeFolders(folder_), {folder_.path().string() + "/", state().string() + "/"}) {}

void FaultMachine::reset(Names names) const {
    for (const auto& entry : fs::directory_iterator(state()))
        fs::remove_all(entry.path());
    if (names == Names::none)
        return;
    for (const auto& [name, text] : {std::pair<const char*, std::string>{"zotavpci.loc", ""},
                                     {"zotavpci.ini", textOf(names)}}) {
        std::ofstream stream(state() / name, std::ios::binary);
        stream << text;
        if (!stream.flush())
            throw std::runtime_error("cannot write the state folder");
    }
}

std::optional<std::string> FaultMachine::names() const {
    if (!fs::exists(nameFile()))
        return std::nullopt;
    return testsupport::fileText(nameFile());
}

std::string FaultMachine::textOf(Names names) {
    if (names == Names::none)
        return {};
    std::string text = "[MR00:00,28]\r\nModel = TAV-B3 Switch Box\r\nTerminalName = TAV7\r\n\r\n"
                       "[MR00:F8]\r\nModel = Taken out\r\nTerminalName = TAV1\r\n";
    constexpr unsigned kMany = 2500;
    for (unsigned number = 0; names == Names::many && number < kMany; ++number) {
        std::array<char, 96> entry{};
        std::snprintf(entry.data(), entry.size(),
                      "\r\n[MR80:%02X,%02X]\r\nModel = Taken out\r\nTerminalName = OLD%u\r\n",
                      number / 256, number % 256, number + 1);
        text.append(entry.data());
    }
    return text;
}

void FaultMachine::look(NamesSeen& seen) const {
    const auto text = names();
    seen.isThere = text.has_value();
    seen.length = text ? text->size() : 0;
    if (seen.length > seen.content.size())
        throw std::length_error("the name file is longer than this machine's can be");
    std::copy_n(text ? text->data() : nullptr, seen.length, seen.content.begin());
}

StoredNames parseNames(const std::string& text) {
    StoredNames names;
    std::string slot;
    std::istringstream lines(text);
    const std::string model = "Model = ";
    const std::string name = "TerminalName = ";
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.starts_with('[') && line.ends_with(']'))
            slot = line.substr(1, line.size() - 2);
        else if (line.starts_with(model))
            names[slot].first = line.substr(model.size());
        else if (line.starts_with(name))
            names[slot].second = line.substr(name.size());
        else if (!line.empty())
            names[line] = {};
    }
    return names;
}

} // namespace testfaults

// The whole plug-in in one process: a bus, description files and a name file as one input (see
// pluginMachine.h), through the five functions that a host has. What must hold:
//
//   - no exception leaves a function, and every status is one that the interface documents;
//   - every attribute of every device is a value in its range, or refused with the status for it;
//   - a terminal name that was given is unlike every other name that is stored;
//   - after finalize there is no list, no file is left open and no memory is held.
//
// The bridge library stays loaded all the time: it is linked to the program.
#include "fuzz/expect.h"
#include "fuzz/iniReference.h"
#include "fuzz/pluginMachine.h"
#include "include/tavPlugin.h"
#include "source/cPciModelInfoDb.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// Of address checking, where that is on.
extern "C" std::size_t allocatedBytes() __asm__("__sanitizer_get_current_allocated_bytes")
    __attribute__((weak));

namespace {

using fuzz::expect;
using namespace nZoTavManagerPciPlugin_15_0;

bool isDocumented(std::int32_t status) {
    const auto within = [status](std::int32_t low, std::int32_t high) {
        return status >= low && status <= high;
    };
    const bool isSystemCode = (static_cast<std::uint32_t>(status) & 0xFFFF0000U) == 0x80070000U;
    return status == 0 || status == -52000 || status == -52003 || status == -52005 ||
           status == -52006 || status == -52019 || within(-313008, -313001) ||
           within(-313328, -313314) || status == kTavManErrSoftwareFault ||
           status == kTavManErrInvalidParam || isSystemCode;
}

bool isOneOf(std::int32_t status, std::initializer_list<std::int32_t> statuses) {
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

// Asks for an integer; the value must be in its range, and untouched unless there is one.
std::int32_t askInteger(std::uint32_t device, std::uint32_t attribute,
                        std::initializer_list<std::int32_t> statuses, std::int32_t low = 0,
                        std::int32_t high = 0) {
    constexpr std::int32_t kUntouched = -123456789;
    std::int32_t value = kUntouched;
    const std::int32_t status = tavPlugin_getDeviceAttributeI32(device, attribute, &value);
    expect(isOneOf(status, statuses), "an integer attribute has its status");
    expect(status == 0 ? value >= low && value <= high : value == kUntouched,
           "an integer attribute is in its range");
    return value;
}

std::string askText(std::uint32_t device, std::uint32_t attribute,
                    std::initializer_list<std::int32_t> statuses) {
    std::array<char, TAVPLUGIN_TEXT_SIZE> buffer;
    buffer.fill('x');
    const std::int32_t status = tavPlugin_getDeviceAttributeUTF8(device, attribute, buffer.data());
    expect(isOneOf(status, statuses), "a text attribute has its status");
    if (status == kTavManErrSoftwareFault)
        expect(buffer[0] == 0, "a text that does not fit leaves an empty one");
    if (status != 0)
        return {};
    expect(std::memchr(buffer.data(), 0, buffer.size()) != nullptr, "a text has an end");
    return buffer.data();
}

constexpr std::int32_t kAnything = INT32_MAX;

void expectDevice(std::uint32_t device) {
    askInteger(device, kTavAttrDeviceCategory, {0}, 10, 12);
    askInteger(device, kTavAttrBusNumber, {0}, 0, 255);
    askInteger(device, kTavAttrDeviceNumber, {0}, 0, 31);
    askInteger(device, kTavAttrFunctionNumber, {0}, 0, 7);
    askInteger(device, kTavAttrUpstreamPortBus, {0, kTavManErrAttributeNotSupported}, 1, 255);
    const std::int32_t ports = askInteger(device, kTavAttrPortCount, {0}, 0, kAnything);
    const auto width = {0, static_cast<int>(kTavManErrAttributeNotSupported)};
    const std::int32_t perLabel =
        askInteger(device, kTavAttrLinkWidthPerLabel, width, INT32_MIN, kAnything);
    expect(perLabel == askInteger(device, TAVPLUGIN_INDEXED(kTavAttrLinkWidthPerLabel, 5), width,
                                  INT32_MIN, kAnything),
           "the index of the link width is ignored");
    askInteger(device, kTavAttrReserved9, {kTavManErrAttributeNotSupported});
    askInteger(device, kTavAttrReservedA, {kTavManErrAttributeNotSupported});
    for (std::uint32_t port = 0; port < 256 && port < static_cast<std::uint32_t>(ports); ++port) {
        askInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, port), {0}, 0, 255);
        askInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortLinkWidth, port), width, 1, 63);
        askInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortLinkSpeed, port), width, 1, 15);
        askText(device, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, port),
                {0, kTavManErrSoftwareFault});
    }
    askText(device, kTavAttrModelName, {0, kTavManErrSoftwareFault});
    askText(device, kTavAttrReservedText2, {kTavManErrAttributeNotSupported});
    askText(device, kTavAttrReservedText3, {kTavManErrAttributeNotSupported});
    const std::string name = askText(device, kTavAttrTerminalName, {0, kTavManErrSoftwareFault});
    expect(name != "_", "every device has a name");
    if (ports < 256) {
        const auto behind = static_cast<std::uint32_t>(ports);
        askInteger(device, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, behind),
                   {kTavManErrInvalidParam});
        askText(device, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, behind),
                {kTavManErrInvalidParam});
    }
}

// Behind the last device there is none.
void expectNoDevice(std::uint32_t device) {
    askInteger(device, kTavAttrBusNumber, {kTavManErrInvalidParam});
    askInteger(device, kTavAttrReserved9, {kTavManErrAttributeNotSupported});
    askText(device, kTavAttrTerminalName, {kTavManErrInvalidParam});
}

// Every attribute of these is refused before the device is looked for.
void expectNoAttribute(std::uint32_t device) {
    askInteger(device, TAVPLUGIN_INDEXED(kTavAttrBusNumber, 1), {kTavManErrInvalidParam});
    askInteger(device, kTavAttrModelName, {kTavManErrInvalidParam});
    askInteger(device, 0, {kTavManErrInvalidParam});
    askText(device, kTavAttrBusNumber, {kTavManErrInvalidParam});
    askText(device, 0x02000600, {kTavManErrInvalidParam});
}

void expectNoList() {
    std::uint32_t count = 0;
    expect(tavPlugin_getDeviceCount(&count) == kTavManErrSoftwareFault, "there is no list");
    askInteger(0, kTavAttrBusNumber, {kTavManErrSoftwareFault});
}

using Names = std::map<std::string, std::pair<std::string, std::string>>; // model and name of slots

// What a file of names says, as the INI file class reads it: the first key of a name counts.
Names namesIn(std::string_view file) {
    const fuzz::ini::IniFileOwner settings(fuzz::ini::createIniFile());
    settings->caseSensitive = true;
    Names names;
    const auto content = fuzz::readReference(file, *settings);
    if (!content)
        return names;
    for (const auto& section : content->sections) {
        const auto valueOf = [&](const char* key) {
            const auto found = std::find_if(section.keys.begin(), section.keys.end(),
                                            [key](const auto& each) { return each.name == key; });
            return found == section.keys.end() ? std::string() : found->value;
        };
        names[section.name] = {valueOf("Model"), valueOf("TerminalName")};
    }
    return names;
}

// Bases with digits are never recognised as such, those with characters that are stored escaped
// are not read back, and white space at the front of a stored name is not: their names repeat.
bool isKept(const std::string& base) {
    return std::none_of(base.begin(), base.end(),
                        [](char c) {
                            return (c >= '0' && c <= '9') || (c >= 0 && c < ' ') || c == 127 ||
                                   c == '"' || c == '\\';
                        }) &&
           !base.starts_with(' ');
}

bool areBasesKept() {
    const iPciModelInfoDb& models = modelDatabase();
    for (std::uint32_t model = 0; model < models.GetModelCount(); ++model)
        if (!isKept(models.GetTerminalNameBase(model)))
            return false;
    return true;
}

void expectNames(std::string_view before, const std::string& after) {
    // Keys in pieces are one key once they are joined, and two when they are read again.
    if (before.find(" Line") != before.npos || before == after || !areBasesKept())
        return;
    const Names stored = namesIn(after);
    const Names previous = namesIn(before);
    for (const auto& [slot, entry] : stored) {
        const std::string& name = entry.second;
        const auto old = previous.find(slot);
        if (old != previous.end() && old->second == entry)
            continue;
        const auto uses = std::count_if(stored.begin(), stored.end(), [&](const auto& other) {
            return other.second.second == name;
        });
        expect(uses == 1, "a name that was given is stored once");
    }
    for (const auto& [slot, entry] : previous)
        expect(stored.contains(slot), "no stored slot is lost");
}

// Gives the process-wide database of models, which is loaded once, back its first state.
void forgetModels() {
    dynamic_cast<cPciModelInfoDb&>(modelDatabase()) = cPciModelInfoDb();
}

// What a process holds: the lowest free descriptor, and the memory where it is counted.
struct Holdings {
    int descriptor = 0;
    std::size_t bytes = 0;

    static Holdings now() {
        Holdings holdings;
        holdings.descriptor = dup(STDERR_FILENO);
        close(holdings.descriptor);
        if (allocatedBytes != nullptr)
            holdings.bytes = allocatedBytes();
        return holdings;
    }
};

// True for a list of devices.
bool runOnce(std::string_view names, fuzz::PluginMachine& machine) {
    const std::int32_t status = tavPlugin_initialize();
    expect(isDocumented(status), "initialize has a documented status");
    if (status != 0) {
        expectNoList();
        expect(machine.names() == names, "a failed initialize leaves the names alone");
        return false;
    }
    std::uint32_t count = 0;
    expect(tavPlugin_getDeviceCount(&count) == 0, "there is a list");
    constexpr std::uint32_t kMostAsked = 8;
    for (std::uint32_t device = 0; device < std::min(count, kMostAsked); ++device)
        expectDevice(device);
    expectNoDevice(count);
    expectNoAttribute(count);
    std::uint32_t again = 0;
    expect(tavPlugin_initialize() == 0 && tavPlugin_getDeviceCount(&again) == 0 && again == count,
           "a second initialize changes nothing");
    tavPlugin_finalize();
    expectNoList();
    const std::string after = machine.names();
    if (count == 0)
        expect(after == names, "without a device the names are left alone");
    expectNames(names, after);
    return true;
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static fuzz::PluginMachine machine;
    const fuzz::PluginInput input =
        fuzz::readPluginInput({reinterpret_cast<const char*>(data), size});
    const auto run = [&] {
        machine.show(input);
        runOnce(input.names, machine);
        forgetModels();
        return Holdings::now();
    };
    machine.show(input);
    const Holdings before = Holdings::now();
    const Holdings once = run();
    expect(once.descriptor == before.descriptor, "no file is left open");
    // Memory that is made at first use and kept shows once; what is lost shows each time.
    expect(once.bytes == before.bytes || run().bytes == once.bytes, "no memory is held");
    return 0;
}

#include "tests/faults/pluginCycle.h"

#include "include/tavPlugin.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace testfaults {

namespace {

constexpr std::uint32_t kIntegers[] = {
    kTavAttrDeviceCategory, kTavAttrBusNumber,         kTavAttrDeviceNumber,
    kTavAttrFunctionNumber, kTavAttrUpstreamPortBus,   kTavAttrPortCount,
    kTavAttrReserved9,      kTavAttrLinkWidthPerLabel, kTavAttrReservedA};
constexpr std::uint32_t kPortIntegers[] = {kTavAttrPortSecondaryBus, kTavAttrPortLinkWidth,
                                           kTavAttrPortLinkSpeed};
constexpr std::uint32_t kTexts[] = {kTavAttrModelName, kTavAttrTerminalName, kTavAttrReservedText2,
                                    kTavAttrReservedText3};

// Asks one device for everything and writes it into the report.
class Questions {
public:
    Questions(const Plugin& plugin, CycleReport& report, std::uint32_t device)
        : plugin_(plugin), report_(report), device_(device) {}

    void askAll() {
        for (const std::uint32_t attribute : kTexts)
            askText(attribute);
        std::int32_t ports = 0;
        for (const std::uint32_t attribute : kIntegers) {
            const std::int32_t value = askInteger(attribute);
            ports = attribute == kTavAttrPortCount ? value : ports;
        }
        for (std::int32_t port = 0; port < ports; ++port) {
            askText(TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, port));
            for (const std::uint32_t attribute : kPortIntegers)
                askInteger(TAVPLUGIN_INDEXED(attribute, port));
        }
        append("\n");
    }

private:
    std::int32_t askInteger(std::uint32_t attribute) {
        std::int32_t value = 0;
        if (isAnswered(plugin_.getDeviceAttributeI32(device_, attribute, &value))) {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%d", value);
            append(digits.data());
        }
        append("|");
        return value;
    }

    void askText(std::uint32_t attribute) {
        std::array<char, TAVPLUGIN_TEXT_SIZE> text{};
        if (isAnswered(plugin_.getDeviceAttributeUTF8(device_, attribute, text.data())))
            append(text.data());
        append("|");
    }

    bool isAnswered(std::int32_t status) {
        if (status == kTavManErrSoftwareFault)
            ++report_.faultedQueries;
        else if (status != kTavManSuccess && status != kTavManErrAttributeNotSupported)
            ++report_.wrongQueries;
        return status == kTavManSuccess;
    }

    void append(const char* text) {
        const std::size_t length = std::strlen(text);
        if (report_.length + length >= report_.text.size()) {
            ++report_.wrongQueries; // longer than anything that this machine can have
            return;
        }
        std::memcpy(report_.text.data() + report_.length, text, length);
        report_.length += length;
    }

    const Plugin& plugin_;
    CycleReport& report_;
    std::uint32_t device_;
};

} // namespace

Plugin::Plugin() {
    load(library_, ZOTAVPCI_FILE);
}

void runCycle(const Plugin& plugin, CycleReport& report) {
    report = {};
    report.status = plugin.initialize();
    const std::int32_t counted = plugin.getDeviceCount(&report.devices);
    // Without a list there is no count, and nothing else to ask.
    const bool isCounted = counted == kTavManSuccess;
    const std::int32_t expected =
        report.status == kTavManSuccess ? kTavManSuccess : kTavManErrSoftwareFault;
    if (counted != expected)
        ++(report.status == kTavManSuccess && counted == kTavManErrSoftwareFault
               ? report.faultedQueries
               : report.wrongQueries);
    for (std::uint32_t device = 0; isCounted && device < report.devices; ++device)
        Questions(plugin, report, device).askAll();
    plugin.finalize();
}

void warmUp() {
    const Plugin plugin;
    const auto report = std::make_unique<CycleReport>();
    runCycle(plugin, *report);
    if (report->status != kTavManSuccess)
        throw std::runtime_error("the plug-in fails without a fault");
}

bool isDocumented(std::int32_t status) {
    constexpr std::uint32_t kSystemError = 0x80070000U;
    constexpr std::uint32_t kHighHalf = 0xFFFF0000U;
    const auto within = [&](std::int32_t lowest, std::int32_t highest) {
        return status >= lowest && status <= highest;
    };
    return within(-388802, -388801) || status == kTavManSuccess || status == -52000 ||
           status == -52003 || status == -52005 || within(-313008, -313001) ||
           within(-313328, -313314) ||
           (static_cast<std::uint32_t>(status) & kHighHalf) == kSystemError;
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

} // namespace testfaults

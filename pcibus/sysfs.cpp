#include "pcibus/sysfs.h"

#include "pcibus/address.h"
#include "pcibus/configSpace.h"
#include "pcibus/sysfsFiles.h"
#include "platform/entryType.h"
#include "platform/pathBelow.h"

#include <array>
#include <cerrno>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pcibus {
namespace {

// The process or the system is short of something, which says nothing about the function whose file
// was asked for.
bool isShortage(int failure) {
    return failure == EMFILE || failure == ENFILE || failure == ENOMEM;
}

enum class Read { done, unplugged, unreadable, dead };

// Reads as many bytes as there are, up to the size of `config`, which becomes that number.
Read readFunction(SysfsFiles& files, PciFunction& function, std::span<std::uint8_t>& config) {
    std::size_t size = 0;
    const int failure = files.read("config", config, size);
    config = config.first(failure == 0 ? size : 0);
    if (isShortage(failure))
        SysfsFiles::refuse(files.pathOf("config"), failure);
    if (failure != 0 || size < kHeaderSize) {
        // The entry itself, not what it leads to: a link of a copied tree that leads nowhere is a
        // function that cannot be read.
        return platform::isEntryThere(files.path()) ? Read::unreadable : Read::unplugged;
    }
    if (isDead(config))
        return Read::dead;
    decodeConfigSpace(config.first(kHeaderSize), function);
    if (!function.isBridge())
        return Read::done;
    function.subsystemVendorId = files.identifier("subsystem_vendor");
    function.subsystemId = files.identifier("subsystem_device");
    function.linkWidth = files.linkWidth("max_link_width");
    function.linkSpeed = files.linkSpeed("max_link_speed");
    return Read::done;
}

// Of a bridge the most that its link can be is known. Copied trees may lack the files and have the
// bytes, which said this.
Link readLink(SysfsFiles& files, const PciFunction& function, Link said) {
    const bool isBridge = function.isBridge();
    const Link link{isBridge ? function.linkWidth : files.linkWidth("max_link_width"),
                    isBridge ? function.linkSpeed : files.linkSpeed("max_link_speed"),
                    files.linkWidth("current_link_width"), files.linkSpeed("current_link_speed")};
    if (!link.isKnown())
        return said;
    said.maximumWidth = link.maximumWidth;
    said.maximumSpeed = link.maximumSpeed;
    said.width = link.width;
    said.speed = link.speed;
    return said;
}

} // namespace

Bus readSysfs(const std::string& root, LeftOut* leftOut, const FunctionSink& sink) {
    using platform::pathBelow;
    const std::string devices = pathBelow(pathBelow(pathBelow(root, "bus"), "pci"), "devices");
    const auto kept = std::make_shared<SysfsFiles>(devices); // by what asks for links later
    SysfsFiles& files = *kept;
    std::vector<PciFunction> functions;
    LeftOut counts;
    std::array<std::uint8_t, kStandardSize> bytes{};
    for (const std::string& name : files.names()) {
        const auto address = readAddress(name);
        if (!address || address->length != name.size() || address->device > kMaxDevice ||
            address->function > kMaxFunction)
            continue;
        const bool isOther = address->domain != 0;
        counts.otherDomains += isOther ? 1 : 0;
        if (isOther && !sink)
            continue;
        PciFunction function;
        function.bus = address->bus;
        function.device = address->device;
        function.function = address->function;
        files.enter(name);
        std::span config = std::span(bytes).first(sink ? kStandardSize : kHeaderSize);
        const Read read = readFunction(files, function, config);
        if (read == Read::done && sink)
            sink({address->domain, function, config,
                  [kept, name, function, said = decodeLink(config)] {
                      kept->enter(name);
                      return readLink(*kept, function, said);
                  }});
        if (isOther)
            continue;
        if (read == Read::done)
            functions.push_back(function);
        counts.unreadable += read == Read::unreadable ? 1 : 0;
        counts.dead += read == Read::dead ? 1 : 0;
    }
    Bus bus(std::move(functions), [&](const PciFunction& function) {
        return pathBelow(devices, "0000:" + addressText(function));
    });
    if (leftOut != nullptr)
        *leftOut = counts;
    return bus;
}

} // namespace pcibus

// A host in C++17: lists the devices that the plug-in finds, each with its ports.
//
//   host [PLUGIN]      without PLUGIN it is the one that CMake found
#include <tavHost.h>

#include <cstdio>
#include <string_view>

namespace {

void print(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

int fail(std::string_view doing, tav::Status status) {
    print(stderr, doing);
    std::fprintf(stderr, ": status %s (%s): ", status.decimal().c_str(),
                 status.hexadecimal().c_str());
    print(stderr, status.words());
    print(stderr, "\n");
    return 1;
}

// A device may have no link: that is no error of the host's.
tav::Status printPort(const tav::Port port) {
    const auto label = port.label();
    const auto bus = port.secondaryBus();
    const auto width = port.linkWidth();
    const auto speed = port.linkSpeed();
    if (!label.ok() || !bus.ok())
        return label.ok() ? bus.status() : label.status();
    std::printf("  port %s: bus %02x", label.value().c_str(), bus.value());
    if (width.ok() && speed.ok())
        std::printf(", x%u %.1f GT/s", width.value(), speed.value().megatransfers() / 1000.0);
    else if (!width.status().isNotSupported())
        return width.ok() ? speed.status() : width.status();
    std::printf("\n");
    return {};
}

tav::Status printDevice(const tav::Device device) {
    const auto name = device.name();
    const auto model = device.model();
    const auto address = device.address();
    const auto category = device.category();
    for (const tav::Status status :
         {name.status(), model.status(), address.status(), category.status()}) {
        if (!status.ok())
            return status;
    }
    const tav::Address& at = address.value();
    std::printf("%s: %s at %02x:%02x.%x, ", name.value().c_str(), model.value().c_str(), at.bus,
                at.device, at.function);
    print(stdout, words(category.value()));
    std::printf("\n");
    for (const tav::Port port : device.ports()) {
        if (const tav::Status status = printPort(port); !status.ok())
            return status;
    }
    return {};
}

} // namespace

int main(int argc, char** argv) {
    tav::Plugin plugin;
    if (plugin.load(argc > 1 ? argv[1] : PLUGIN) != tav::Loading::done) {
        print(stderr, plugin.reason());
        print(stderr, "\n");
        return 1;
    }
    if (const tav::Status status = plugin.initialize(); !status.ok())
        return fail("looking for devices", status);
    if (plugin.devices().empty())
        std::printf("no devices\n");
    for (const tav::Device device : plugin.devices()) {
        if (const tav::Status status = printDevice(device); !status.ok())
            return fail("reading a device", status);
    }
    return 0;
}

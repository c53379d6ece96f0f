// A host that stays: loads the plug-in once and does what its standard input says, a word a line,
// answering each with a line.
//
//     initialize    the status
//     finalize      "done"
//     list          the devices, as "tavctl list --json" calls what the plug-in tells of them
//
// A word that it does not know and a device that cannot be read end it.
#include "include/tavPlugin.h"

#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace {

using Json = nlohmann::ordered_json;

// Never unloaded: the process ends with it.
class Plugin {
public:
    explicit Plugin(const char* path) : library_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr)
            throw std::runtime_error(dlerror());
        bind(initialize, "tavPlugin_initialize");
        bind(finalize, "tavPlugin_finalize");
        bind(count_, "tavPlugin_getDeviceCount");
        bind(integer_, "tavPlugin_getDeviceAttributeI32");
        bind(text_, "tavPlugin_getDeviceAttributeUTF8");
    }

    decltype(&tavPlugin_initialize) initialize = nullptr;
    decltype(&tavPlugin_finalize) finalize = nullptr;

    [[nodiscard]] Json devices() const {
        std::uint32_t count = 0;
        require(count_(&count), "device count");
        Json list = Json::array();
        for (std::uint32_t index = 0; index < count; ++index)
            list.push_back(device(index));
        return {{"devices", list}};
    }

private:
    template <typename Function>
    void bind(Function*& function, const char* name) {
        function = reinterpret_cast<Function*>(dlsym(library_, name));
        if (function == nullptr)
            throw std::runtime_error(dlerror());
    }

    static void require(std::int32_t status, const std::string& what) {
        if (status < 0)
            throw std::runtime_error(what + ": status " + std::to_string(status));
    }

    // Null for an attribute that the device does not carry.
    [[nodiscard]] Json integer(std::uint32_t index, std::uint32_t attribute) const {
        std::int32_t value = 0;
        const std::int32_t status = integer_(index, attribute, &value);
        if (status == kTavManErrAttributeNotSupported)
            return nullptr;
        require(status, "attribute " + std::to_string(attribute));
        return value;
    }

    [[nodiscard]] std::string text(std::uint32_t index, std::uint32_t attribute) const {
        std::array<char, TAVPLUGIN_TEXT_SIZE> value{};
        require(text_(index, attribute, value.data()), "text " + std::to_string(attribute));
        return value.data();
    }

    static Json category(std::int32_t number) {
        switch (number) {
        case kTavCategoryPci:
            return "PCI";
        case kTavCategoryExpresscard:
            return "Expresscard";
        case kTavCategorySwitchboxTav:
            return "SwitchboxTav";
        default:
            return number;
        }
    }

    [[nodiscard]] std::string address(std::uint32_t index) const {
        const auto number = [&](std::uint32_t attribute) {
            return integer(index, attribute).get<unsigned>();
        };
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "0000:%02x:%02x.%x", number(kTavAttrBusNumber),
                      number(kTavAttrDeviceNumber), number(kTavAttrFunctionNumber));
        return text.data();
    }

    [[nodiscard]] Json device(std::uint32_t index) const {
        Json ports = Json::array();
        const auto portCount = integer(index, kTavAttrPortCount).get<std::uint32_t>();
        for (std::uint32_t port = 0; port < portCount; ++port)
            ports.push_back(
                {{"label", text(index, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, port))},
                 {"secondaryBus",
                  integer(index, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, port))},
                 {"linkWidth", integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkWidth, port))},
                 {"linkSpeed", integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkSpeed, port))}});
        return {{"name", text(index, kTavAttrTerminalName)},
                {"model", text(index, kTavAttrModelName)},
                {"category", category(integer(index, kTavAttrDeviceCategory))},
                {"address", address(index)},
                {"index", index},
                {"upstreamBus", integer(index, kTavAttrUpstreamPortBus)},
                {"linkWidthPerLabel", integer(index, kTavAttrLinkWidthPerLabel)},
                {"ports", ports}};
    }

    void* library_;
    decltype(&tavPlugin_getDeviceCount) count_ = nullptr;
    decltype(&tavPlugin_getDeviceAttributeI32) integer_ = nullptr;
    decltype(&tavPlugin_getDeviceAttributeUTF8) text_ = nullptr;
};

std::string answer(const Plugin& plugin, const std::string& word) {
    if (word == "initialize")
        return std::to_string(plugin.initialize());
    if (word == "list")
        return plugin.devices().dump();
    if (word != "finalize")
        throw std::runtime_error("unknown word " + word);
    plugin.finalize();
    return "done";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s PLUGIN\n", argv[0]);
        return 2;
    }
    try {
        const Plugin plugin(argv[1]);
        for (std::string word; std::getline(std::cin, word);)
            std::cout << answer(plugin, word) << std::endl;
    } catch (const std::exception& exception) {
        std::cout << "failed: " << exception.what() << std::endl;
        return 1;
    }
}

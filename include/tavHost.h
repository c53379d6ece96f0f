// A host of the TAV plug-in in C++17 or later: what tavPlugin.h tells, as types. Header only,
// beside tavPlugin.h and tavLibrary.h; nothing to link with but the system's loader
// (${CMAKE_DL_LIBS}).
//
//     tav::Plugin plugin;
//     if (plugin.load("/usr/lib/zotavpci/zotavpci.so") != tav::Loading::done)
//         return complain(plugin.reason());
//     if (const tav::Status status = plugin.initialize(); !status.ok())
//         return complain(status.words());
//     for (const tav::Device device : plugin.devices()) {
//         const tav::Result<tav::Text> name = device.name();
//         if (name.ok())
//             std::puts(name.value().c_str());
//     }
//
// Nothing raises an exception, and nothing asks for the type of an object at run time: hosts may be
// compiled with -fno-exceptions and -fno-rtti.
//
// Nothing here allocates memory. Texts are in arrays of fixed size, inside the objects that are
// returned: what view() and c_str() give lives as long as these. (The plug-in itself allocates in
// initialize(), and the system's loader in load().)
//
// What is asked of the plug-in comes as a Result: a status, and the value where it is a success.
//
// A Plugin stays where it is, and its devices and ports refer to it: they must not be used after
// its end. After finalize() or unload() they may, and every answer is then kTavManErrSoftwareFault,
// as the plug-in answers where there is no list of devices.
//
// The plug-in has one list for the whole process, and is called from one thread at a time. Two
// objects that load the same file share its list.
#ifndef TAVHOST_H
#define TAVHOST_H

#include <tavLibrary.h>
#include <tavPlugin.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace tav {

// A text of the plug-in: UTF-8, at most 255 bytes, NUL-terminated.
class Text {
public:
    [[nodiscard]] const char* c_str() const noexcept { return bytes_.data(); }
    [[nodiscard]] std::string_view view() const noexcept { return bytes_.data(); }
    [[nodiscard]] bool empty() const noexcept { return bytes_[0] == 0; }
    // TAVPLUGIN_TEXT_SIZE bytes, for the plug-in to write to.
    [[nodiscard]] char* buffer() noexcept { return bytes_.data(); }

private:
    std::array<char, TAVPLUGIN_TEXT_SIZE> bytes_{};
};

// A number as text, for example "-388802" or "0xFFFA113E".
class Digits {
public:
    [[nodiscard]] const char* c_str() const noexcept { return bytes_.data(); }
    [[nodiscard]] std::string_view view() const noexcept { return bytes_.data(); }

private:
    friend class Status;
    std::array<char, 16> bytes_{};
};

// What a call came to: 0 is success, a negative number an error.
class Status {
public:
    constexpr Status() noexcept = default; // success
    constexpr explicit Status(std::int32_t code) noexcept : code_(code) {}

    [[nodiscard]] constexpr std::int32_t code() const noexcept { return code_; }
    [[nodiscard]] constexpr bool ok() const noexcept { return code_ >= 0; }

    // The three statuses of the plug-in itself.
    [[nodiscard]] constexpr bool isSoftwareFault() const noexcept {
        return code_ == kTavManErrSoftwareFault;
    }
    [[nodiscard]] constexpr bool isInvalidParam() const noexcept {
        return code_ == kTavManErrInvalidParam;
    }
    // Not an error of the host's: this device has no such thing.
    [[nodiscard]] constexpr bool isNotSupported() const noexcept {
        return code_ == kTavManErrAttributeNotSupported;
    }

    // "-388802"
    [[nodiscard]] Digits decimal() const noexcept {
        Digits digits;
        std::to_chars(digits.bytes_.data(), digits.bytes_.data() + digits.bytes_.size() - 1, code_);
        return digits;
    }

    // "0xFFFA113E": always eight digits, capitals.
    [[nodiscard]] Digits hexadecimal() const noexcept {
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        constexpr std::size_t kCount = 8;
        Digits digits;
        digits.bytes_[0] = '0';
        digits.bytes_[1] = 'x';
        std::uint32_t rest = bits();
        for (std::size_t i = kCount; i > 0; --i, rest >>= 4U)
            digits.bytes_[1 + i] = kDigits[rest & 0xFU];
        return digits;
    }

    // What the status means, in English; never empty.
    [[nodiscard]] constexpr std::string_view words() const noexcept {
        switch (code_) {
        case kTavManSuccess:
            return "success";
        case kTavManErrSoftwareFault:
            return "an internal fault, or there is no list of devices";
        case kTavManErrInvalidParam:
            return "an unknown attribute, or an index out of range";
        case kTavManErrAttributeNotSupported:
            return "this device does not carry the attribute";
        case -52000:
            return "memory ran out";
        case -52003:
            return "no configuration: the key with Path and ConfigPath is missing";
        case -52005:
            return "the bridge library could not be loaded, or lacks a function";
        case -52006:
        case -52019:
            return "a query of the system's devices failed, or its answer is too long";
        default:
            return wordsOfRange();
        }
    }

    friend constexpr bool operator==(Status one, Status other) noexcept {
        return one.code_ == other.code_;
    }
    friend constexpr bool operator!=(Status one, Status other) noexcept {
        return one.code_ != other.code_;
    }

private:
    [[nodiscard]] constexpr std::uint32_t bits() const noexcept {
        return static_cast<std::uint32_t>(code_);
    }

    [[nodiscard]] constexpr bool isBetween(std::int32_t least, std::int32_t most) const noexcept {
        return least <= code_ && code_ <= most;
    }

    [[nodiscard]] constexpr std::string_view wordsOfRange() const noexcept {
        constexpr std::uint32_t kOfSystem = 0x8007;
        constexpr std::uint32_t kOfDeviceInstallation = 0x800F;
        if (code_ > 0)
            return "not an error";
        if (isBetween(-313008, -313001))
            return "the bridge library answers with an error";
        if (isBetween(-313328, -313314))
            return "a description file, the name file or a slot path in them is damaged";
        if (bits() >> 16U == kOfSystem)
            return "an error of the operating system, whose code is the last four digits";
        if (bits() >> 16U == kOfDeviceInstallation)
            return "an error of Windows' device installation, 0xE000 and the last four digits";
        return "an error that this version does not know";
    }

    std::int32_t code_ = kTavManSuccess;
};

// A status, and a value where the status is a success; where not, a value of zeros.
template <typename Value>
class Result {
public:
    constexpr explicit Result(Status status) noexcept : status_(status) {}
    constexpr explicit Result(const Value& value) noexcept : value_(value) {}

    [[nodiscard]] constexpr Status status() const noexcept { return status_; }
    [[nodiscard]] constexpr bool ok() const noexcept { return status_.ok(); }
    [[nodiscard]] constexpr const Value& value() const& noexcept { return value_; }
    [[nodiscard]] constexpr Value value() && noexcept { return value_; }
    [[nodiscard]] constexpr Value valueOr(const Value& other) const noexcept {
        return ok() ? value_ : other;
    }

private:
    Status status_;
    Value value_{};
};

// What kind of device it is.
enum class Category : std::int32_t {
    pci = kTavCategoryPci,
    expresscard = kTavCategoryExpresscard,
    switchboxTav = kTavCategorySwitchboxTav
};

// As descriptions and tavctl write it; empty for a number that this version does not know.
[[nodiscard]] constexpr std::string_view words(Category category) noexcept {
    switch (category) {
    case Category::pci:
        return "PCI";
    case Category::expresscard:
        return "Expresscard";
    case Category::switchboxTav:
        return "SwitchboxTav";
    }
    return {};
}

// Where a device answers now. It can be elsewhere after a restart; its name stays.
struct Address {
    std::uint32_t bus = 0;      // 0 to 255
    std::uint32_t device = 0;   // 0 to 31
    std::uint32_t function = 0; // 0 to 7
};

// The speed of one lane of a link.
struct LinkSpeed {
    std::uint32_t code = 0; // as PCI Express numbers them: 1, 2, 3, ...

    // Millions of transfers a second, such as 2500 for code 1; 0 for a code that this version does
    // not know.
    [[nodiscard]] constexpr std::uint32_t megatransfers() const noexcept {
        constexpr std::array<std::uint32_t, 7> kRates = {0, 2500, 5000, 8000, 16000, 32000, 64000};
        return code < kRates.size() ? kRates[code] : 0;
    }
};

enum class IntegerAttribute : std::uint32_t {
    deviceCategory = kTavAttrDeviceCategory,
    busNumber = kTavAttrBusNumber,
    deviceNumber = kTavAttrDeviceNumber,
    functionNumber = kTavAttrFunctionNumber,
    upstreamPortBus = kTavAttrUpstreamPortBus,
    portCount = kTavAttrPortCount,
    portSecondaryBus = kTavAttrPortSecondaryBus, // with the port's index
    linkWidthPerLabel = kTavAttrLinkWidthPerLabel,
    portLinkWidth = kTavAttrPortLinkWidth, // with the port's index
    portLinkSpeed = kTavAttrPortLinkSpeed  // with the port's index
};

enum class TextAttribute : std::uint32_t {
    modelName = kTavAttrModelName,
    connectorLabel = kTavAttrConnectorLabel, // with the port's index
    terminalName = kTavAttrTerminalName
};

// Ports that can be asked for: an attribute has eight bits for a port's index.
inline constexpr std::uint32_t kMostPorts = 256;

// What Plugin::load came to.
enum class Loading : std::uint8_t {
    done,
    noLibrary, // there is no such file, or it is no library for this system
    noFunction // the library is another one: it lacks a function of the plug-in's
};

class Plugin;
class Port;

// So many items of one owner, to go through with a range-based for.
template <typename Owner, typename Item>
class Range {
public:
    class Iterator {
    public:
        constexpr Iterator(Owner owner, std::uint32_t index) noexcept
            : owner_(owner), index_(index) {}
        [[nodiscard]] constexpr Item operator*() const noexcept { return {owner_, index_}; }
        constexpr Iterator& operator++() noexcept {
            ++index_;
            return *this;
        }
        [[nodiscard]] constexpr bool operator!=(const Iterator& other) const noexcept {
            return index_ != other.index_;
        }

    private:
        Owner owner_;
        std::uint32_t index_;
    };

    constexpr Range(Owner owner, std::uint32_t count) noexcept : owner_(owner), count_(count) {}
    [[nodiscard]] constexpr Iterator begin() const noexcept { return {owner_, 0}; }
    [[nodiscard]] constexpr Iterator end() const noexcept { return {owner_, count_}; }
    [[nodiscard]] constexpr std::uint32_t size() const noexcept { return count_; }
    [[nodiscard]] constexpr bool empty() const noexcept { return count_ == 0; }

private:
    Owner owner_;
    std::uint32_t count_;
};

// One device of the list, by its index. Every answer can be kTavManErrSoftwareFault where there is
// no list, and kTavManErrInvalidParam where the list has no such device; what else can come is said
// at each.
class Device {
public:
    // The device `index` of a plug-in's list, counted from 0, whether there is one or not.
    constexpr Device(const Plugin* plugin, std::uint32_t index) noexcept
        : plugin_(plugin), index_(index) {}

    [[nodiscard]] constexpr std::uint32_t index() const noexcept { return index_; }

    // The terminal name, the same across restarts.
    [[nodiscard]] Result<Text> name() const noexcept;
    [[nodiscard]] Result<Text> model() const noexcept;
    [[nodiscard]] Result<Category> category() const noexcept;
    [[nodiscard]] Result<Address> address() const noexcept;

    // Bus of the bridge that is the device's upstream port, 1 to 255.
    // kTavManErrAttributeNotSupported for a device without one, and where it stands on bus 0.
    [[nodiscard]] Result<std::uint32_t> upstreamBus() const noexcept;

    // Lanes behind each connector label, 1 or more. kTavManErrAttributeNotSupported where the model
    // gives none.
    [[nodiscard]] Result<std::uint32_t> linkWidthPerLabel() const noexcept;

    // How many labelled ports are present: 0 or more.
    [[nodiscard]] Result<std::uint32_t> portCount() const noexcept;

    // The port `index`, counted from 0, whether there is one or not: see Port.
    [[nodiscard]] Port port(std::uint32_t index) const noexcept;

    // All ports, in the order of their labels; none where portCount() fails. Of a device with more
    // than kMostPorts these many.
    [[nodiscard]] Range<Device, Port> ports() const noexcept;

    // Any attribute; `element` is a port's index, and 0 for an attribute that has none, else
    // kTavManErrInvalidParam. kTavManErrAttributeNotSupported where the device does not carry it.
    [[nodiscard]] Result<std::int32_t> integer(IntegerAttribute attribute,
                                               std::uint32_t element = 0) const noexcept;
    [[nodiscard]] Result<Text> text(TextAttribute attribute,
                                    std::uint32_t element = 0) const noexcept;

private:
    friend class Port;

    [[nodiscard]] Result<std::uint32_t> number(IntegerAttribute attribute,
                                               std::uint32_t element = 0) const noexcept;

    const Plugin* plugin_;
    std::uint32_t index_;
};

// One labelled port of a device. Its answers can be what a device's can, and kTavManErrInvalidParam
// where the device has no such port.
class Port {
public:
    // The port `index` of the device, counted from 0, whether there is one or not.
    constexpr Port(Device device, std::uint32_t index) noexcept : device_(device), index_(index) {}

    [[nodiscard]] constexpr std::uint32_t index() const noexcept { return index_; }
    [[nodiscard]] constexpr const Device& device() const noexcept { return device_; }

    // What is printed at the connector.
    [[nodiscard]] Result<Text> label() const noexcept;

    // Number of the bus below the port, 0 to 255; several ports can share one.
    [[nodiscard]] Result<std::uint32_t> secondaryBus() const noexcept;

    // Lanes of the port's link. kTavManErrAttributeNotSupported where the model gives no link
    // width.
    [[nodiscard]] Result<std::uint32_t> linkWidth() const noexcept;

    // kTavManErrAttributeNotSupported where the model gives no link width.
    [[nodiscard]] Result<LinkSpeed> linkSpeed() const noexcept;

private:
    Device device_;
    std::uint32_t index_;
};

// The plug-in: owns the loaded library. Its end finalises and unloads.
class Plugin {
public:
    Plugin() noexcept = default;
    ~Plugin() { unload(); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // Loads the plug-in from this file (UTF-8), after what was loaded before is unloaded. On
    // failure nothing is loaded, and reason() tells why.
    [[nodiscard]] Loading load(const char* path) noexcept {
        unload();
        library_ = tavLibrary_open(path, reason_.data());
        if (library_ == nullptr)
            return Loading::noLibrary;
        const bool all = find("tavPlugin_initialize", functions_.initialize) &&
                         find("tavPlugin_finalize", functions_.finalize) &&
                         find("tavPlugin_getDeviceCount", functions_.getDeviceCount) &&
                         find("tavPlugin_getDeviceAttributeI32", functions_.getInteger) &&
                         find("tavPlugin_getDeviceAttributeUTF8", functions_.getText);
        if (all)
            return Loading::done;
        release();
        return Loading::noFunction;
    }

    // Finalises and unloads. Harmless when nothing is loaded.
    void unload() noexcept {
        finalize();
        release();
    }

    [[nodiscard]] bool isLoaded() const noexcept { return library_ != nullptr; }

    // Why load() failed, in UTF-8, at most 511 bytes; empty where it did not.
    [[nodiscard]] std::string_view reason() const noexcept { return reason_.data(); }

    // Builds the list of devices, which may be empty; where there is one already nothing changes.
    // On failure there is no list. What the status can be, tavPlugin.h lists;
    // kTavManErrSoftwareFault also where nothing is loaded.
    [[nodiscard]] Status initialize() noexcept {
        return isLoaded() ? Status(functions_.initialize()) : Status(kTavManErrSoftwareFault);
    }

    // Releases the list of devices. Harmless when there is none.
    void finalize() noexcept {
        if (isLoaded())
            functions_.finalize();
    }

    // How many devices there are. kTavManErrSoftwareFault where there is no list.
    [[nodiscard]] Result<std::uint32_t> deviceCount() const noexcept {
        std::uint32_t count = 0;
        const Status status(isLoaded() ? functions_.getDeviceCount(&count)
                                       : kTavManErrSoftwareFault);
        return status.ok() ? Result<std::uint32_t>(count) : Result<std::uint32_t>(status);
    }

    // The device `index`, counted from 0, whether there is one or not: see Device.
    [[nodiscard]] Device device(std::uint32_t index) const noexcept { return {this, index}; }

    // All devices, by their indices; none where deviceCount() fails.
    [[nodiscard]] Range<const Plugin*, Device> devices() const noexcept {
        return {this, deviceCount().value()};
    }

private:
    friend class Device;

    struct Functions {
        decltype(&tavPlugin_initialize) initialize = nullptr;
        decltype(&tavPlugin_finalize) finalize = nullptr;
        decltype(&tavPlugin_getDeviceCount) getDeviceCount = nullptr;
        decltype(&tavPlugin_getDeviceAttributeI32) getInteger = nullptr;
        decltype(&tavPlugin_getDeviceAttributeUTF8) getText = nullptr;
    };

    template <typename Function>
    [[nodiscard]] bool find(const char* name, Function*& function) noexcept {
        if (tavLibrary_find(library_, name, &function) != 0)
            return true;
        constexpr std::string_view kReason = "the library has no function ";
        const std::size_t length = std::strlen(name);
        static_assert(kReason.size() + 64 < TAVLIBRARY_REASON_SIZE, "names fit behind it");
        std::memcpy(reason_.data(), kReason.data(), kReason.size());
        std::memcpy(reason_.data() + kReason.size(), name, length + 1);
        return false;
    }

    void release() noexcept {
        functions_ = {};
        tavLibrary_close(library_);
        library_ = nullptr;
    }

    tavLibrary library_ = nullptr;
    Functions functions_;
    std::array<char, TAVLIBRARY_REASON_SIZE> reason_{};
};

inline Result<std::int32_t> Device::integer(IntegerAttribute attribute,
                                            std::uint32_t element) const noexcept {
    if (!plugin_->isLoaded())
        return Result<std::int32_t>(Status(kTavManErrSoftwareFault));
    // An index of more than eight bits would ask for another port.
    if (element >= kMostPorts)
        return Result<std::int32_t>(Status(kTavManErrInvalidParam));
    std::int32_t value = 0;
    const Status status(
        plugin_->functions_.getInteger(index_, TAVPLUGIN_INDEXED(attribute, element), &value));
    return status.ok() ? Result<std::int32_t>(value) : Result<std::int32_t>(status);
}

inline Result<Text> Device::text(TextAttribute attribute, std::uint32_t element) const noexcept {
    if (!plugin_->isLoaded())
        return Result<Text>(Status(kTavManErrSoftwareFault));
    if (element >= kMostPorts)
        return Result<Text>(Status(kTavManErrInvalidParam));
    Text value;
    const Status status(
        plugin_->functions_.getText(index_, TAVPLUGIN_INDEXED(attribute, element), value.buffer()));
    return status.ok() ? Result<Text>(value) : Result<Text>(status);
}

inline Result<std::uint32_t> Device::number(IntegerAttribute attribute,
                                            std::uint32_t element) const noexcept {
    const Result<std::int32_t> value = integer(attribute, element);
    if (!value.ok())
        return Result<std::uint32_t>(value.status());
    return Result<std::uint32_t>(static_cast<std::uint32_t>(value.value()));
}

inline Result<Text> Device::name() const noexcept {
    return text(TextAttribute::terminalName);
}

inline Result<Text> Device::model() const noexcept {
    return text(TextAttribute::modelName);
}

inline Result<Category> Device::category() const noexcept {
    const Result<std::int32_t> value = integer(IntegerAttribute::deviceCategory);
    return value.ok() ? Result<Category>(static_cast<Category>(value.value()))
                      : Result<Category>(value.status());
}

inline Result<Address> Device::address() const noexcept {
    const Result<std::uint32_t> bus = number(IntegerAttribute::busNumber);
    const Result<std::uint32_t> device = number(IntegerAttribute::deviceNumber);
    const Result<std::uint32_t> function = number(IntegerAttribute::functionNumber);
    for (const Result<std::uint32_t>* part : {&bus, &device, &function}) {
        if (!part->ok())
            return Result<Address>(part->status());
    }
    return Result<Address>(Address{bus.value(), device.value(), function.value()});
}

inline Result<std::uint32_t> Device::upstreamBus() const noexcept {
    return number(IntegerAttribute::upstreamPortBus);
}

inline Result<std::uint32_t> Device::linkWidthPerLabel() const noexcept {
    return number(IntegerAttribute::linkWidthPerLabel);
}

inline Result<std::uint32_t> Device::portCount() const noexcept {
    return number(IntegerAttribute::portCount);
}

inline Port Device::port(std::uint32_t index) const noexcept {
    return {*this, index};
}

inline Range<Device, Port> Device::ports() const noexcept {
    const std::uint32_t count = portCount().value();
    return {*this, count < kMostPorts ? count : kMostPorts};
}

inline Result<Text> Port::label() const noexcept {
    return device_.text(TextAttribute::connectorLabel, index_);
}

inline Result<std::uint32_t> Port::secondaryBus() const noexcept {
    return device_.number(IntegerAttribute::portSecondaryBus, index_);
}

inline Result<std::uint32_t> Port::linkWidth() const noexcept {
    return device_.number(IntegerAttribute::portLinkWidth, index_);
}

inline Result<LinkSpeed> Port::linkSpeed() const noexcept {
    const Result<std::uint32_t> code = device_.number(IntegerAttribute::portLinkSpeed, index_);
    return code.ok() ? Result<LinkSpeed>(LinkSpeed{code.value()})
                     : Result<LinkSpeed>(code.status());
}

} // namespace tav

#endif

// Identifiers, header type and capabilities are found where they stand, and nowhere else.
#include "pcibus/configSpace.h"

#include "tests/support/describe.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using pcibus::decodeConfigSpace;
using pcibus::decodeLink;
using pcibus::Link;
using pcibus::PciFunction;
using pcibus::PortType;

// 256 bytes of a bridge whose capabilities a test lays out itself.
class Bytes {
public:
    explicit Bytes(std::uint8_t headerType = 1) {
        bytes_[0x06] = 0x10;
        bytes_[0x0E] = headerType;
        bytes_[0x19] = 7;
    }
    Bytes& put(std::size_t offset, std::initializer_list<std::uint8_t> values) {
        for (const std::uint8_t value : values)
            bytes_.at(offset++) = value;
        return *this;
    }
    // Subsystem identifiers 2211 and 4433, or a link of speed 3 and width x16.
    Bytes& subsystem(std::size_t at, std::uint8_t next) {
        return put(at, {0x0D, next, 0, 0, 0x11, 0x22, 0x33, 0x44});
    }
    Bytes& express(std::size_t at, std::uint8_t next) {
        return put(at, {0x10, next}).put(at + 0x0C, {0x03, 0x01});
    }
    [[nodiscard]] PciFunction decoded(std::size_t size = 256) const {
        PciFunction function;
        decodeConfigSpace(std::span(bytes_).first(size), function);
        return function;
    }
    [[nodiscard]] Link link() const { return decodeLink(bytes_); }

private:
    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(256, 0);
};

TEST(ConfigSpace, MultiFunctionBitIsNoPartOfTheHeaderType) {
    EXPECT_EQ(Bytes(0x81).decoded().headerType, 1);
    EXPECT_TRUE(Bytes(0x81).decoded().isBridge());
    EXPECT_EQ(Bytes(0x80).decoded().headerType, 0);
    EXPECT_EQ(Bytes(0xFF).decoded().headerType, 0x7F);
}

TEST(ConfigSpace, OnlyHeaderType1IsABridge) {
    for (const int type : {0, 2, 3, 0x7F}) {
        const PciFunction function = Bytes(static_cast<std::uint8_t>(type)).decoded();
        EXPECT_FALSE(function.isBridge()) << type;
        EXPECT_EQ(function.isCardBusBridge(), type == 2) << type;
        EXPECT_EQ(function.secondaryBus, type == 2 ? 7 : 0) << type;
    }
    EXPECT_EQ(Bytes(1).decoded().secondaryBus, 7);
}

TEST(ConfigSpace, EndpointHasItsSubsystemInTheHeader) {
    const PciFunction function = Bytes(0)
                                     .put(0x2C, {0x34, 0x12, 0x78, 0x56})
                                     .put(0x34, {0x40})
                                     .subsystem(0x40, 0x50)
                                     .express(0x50, 0)
                                     .decoded();
    EXPECT_EQ(function.subsystemVendorId, 0x1234);
    EXPECT_EQ(function.subsystemId, 0x5678);
    EXPECT_EQ(function.linkWidth, 0);
    EXPECT_EQ(function.linkSpeed, 0);
}

TEST(ConfigSpace, BridgeHasItsSubsystemInACapability) {
    const PciFunction function =
        Bytes().put(0x2C, {0x34, 0x12, 0x78, 0x56}).put(0x34, {0x40}).subsystem(0x40, 0).decoded();
    EXPECT_EQ(function.subsystemVendorId, 0x2211);
    EXPECT_EQ(function.subsystemId, 0x4433);
}

TEST(ConfigSpace, OtherHeaderTypesHaveNoSubsystem) {
    const PciFunction function =
        Bytes(2).put(0x2C, {0x34, 0x12, 0x78, 0x56}).put(0x34, {0x40}).subsystem(0x40, 0).decoded();
    EXPECT_EQ(function.subsystemVendorId, 0);
    EXPECT_EQ(function.subsystemId, 0);
}

TEST(ConfigSpace, LinkIsBits0To3And4To9) {
    const auto link = [](std::uint8_t low, std::uint8_t high) {
        return Bytes().put(0x34, {0x40}).put(0x40, {0x10}).put(0x4C, {low, high}).decoded();
    };
    EXPECT_EQ(link(0xF0, 0x03).linkWidth, 63);
    EXPECT_EQ(link(0xF0, 0x03).linkSpeed, 0);
    EXPECT_EQ(link(0x0F, 0xFC).linkWidth, 0);
    EXPECT_EQ(link(0x0F, 0xFC).linkSpeed, 15);
    EXPECT_EQ(link(0x02, 0x01).linkWidth, 16);
    EXPECT_EQ(link(0x02, 0x01).linkSpeed, 2);
}

TEST(ConfigSpace, WithoutTheStatusBitThereAreNoCapabilities) {
    Bytes bytes;
    bytes.put(0x34, {0x40}).subsystem(0x40, 0x50).express(0x50, 0);
    bytes.put(0x06, {0xEF, 0xFF});
    EXPECT_EQ(bytes.decoded().subsystemVendorId, 0);
    EXPECT_EQ(bytes.decoded().linkWidth, 0);
    bytes.put(0x06, {0x10, 0});
    EXPECT_EQ(bytes.decoded().subsystemVendorId, 0x2211);
    EXPECT_EQ(bytes.decoded().linkWidth, 16);
}

TEST(ConfigSpace, HeaderSaysWhetherThereAreCapabilities) {
    std::vector<std::uint8_t> header(64, 0xFF);
    EXPECT_TRUE(pcibus::saysCapabilities(header));
    header[0x06] = 0xEF;
    EXPECT_FALSE(pcibus::saysCapabilities(header));
}

TEST(ConfigSpace, VendorIdentifierFFFFIsADeadFunction) {
    std::vector<std::uint8_t> header(64, 0xFF);
    EXPECT_TRUE(pcibus::isDead(header));
    header[0x00] = 0xFE;
    EXPECT_FALSE(pcibus::isDead(header));
    header.assign(64, 0);
    header[0x00] = header[0x01] = 0xFF;
    EXPECT_TRUE(pcibus::isDead(header));
    header[0x01] = 0;
    EXPECT_FALSE(pcibus::isDead(header));
}

TEST(ConfigSpace, LowTwoBitsOfPointersAreIgnored) {
    const PciFunction function =
        Bytes().put(0x34, {0x43}).subsystem(0x40, 0x52).express(0x50, 0x03).decoded();
    EXPECT_EQ(function.subsystemVendorId, 0x2211);
    EXPECT_EQ(function.linkWidth, 16);
}

TEST(ConfigSpace, FirstOfTwoEqualCapabilitiesCounts) {
    Bytes bytes;
    bytes.put(0x34, {0x80}).subsystem(0x80, 0xA0).express(0xA0, 0x40);
    bytes.subsystem(0x40, 0x60)
        .put(0x44, {9, 9, 9, 9})
        .put(0x60, {0x10, 0})
        .put(0x6C, {0xFF, 0xFF});
    EXPECT_EQ(bytes.decoded().subsystemVendorId, 0x2211);
    EXPECT_EQ(bytes.decoded().subsystemId, 0x4433);
    EXPECT_EQ(bytes.decoded().linkWidth, 16);
    EXPECT_EQ(bytes.decoded().linkSpeed, 3);
}

TEST(ConfigSpace, APointerIntoTheHeaderEndsTheList) {
    Bytes bytes;
    bytes.put(0x34, {0x3C}).put(0x3C, {0x0D, 0x40}).subsystem(0x40, 0);
    EXPECT_EQ(bytes.decoded().subsystemVendorId, 0);
}

TEST(ConfigSpace, APointerBeyondTheBytesEndsTheList) {
    Bytes bytes;
    bytes.put(0x34, {0x40}).subsystem(0x40, 0xF8).express(0x50, 0).put(0xF8, {0x05, 0x50});
    EXPECT_EQ(bytes.decoded(256).linkWidth, 16);
    EXPECT_EQ(bytes.decoded(0xF9).linkWidth, 0) << "the pointer of the next is not at hand";
    EXPECT_EQ(bytes.decoded(0xFA).linkWidth, 16);
    EXPECT_EQ(bytes.decoded(0x48).subsystemId, 0x4433);
    EXPECT_EQ(bytes.decoded(0x47).subsystemId, 0) << "half a field is none";
    EXPECT_EQ(bytes.decoded(64).subsystemVendorId, 0);
}

TEST(ConfigSpace, AListThatComesBackToItselfEndsThere) {
    // To itself, to the first one, and to the second one: what came before counts.
    const PciFunction itself = Bytes().put(0x34, {0x40}).subsystem(0x40, 0x40).decoded();
    EXPECT_EQ(itself.subsystemVendorId, 0x2211);
    EXPECT_EQ(itself.linkWidth, 0);
    const PciFunction first =
        Bytes().put(0x34, {0x40}).subsystem(0x40, 0x50).express(0x50, 0x41).decoded();
    EXPECT_EQ(first.subsystemVendorId, 0x2211);
    EXPECT_EQ(first.subsystemId, 0x4433);
    EXPECT_EQ(first.linkWidth, 16);
    EXPECT_EQ(first.linkSpeed, 3);
    const PciFunction second = Bytes()
                                   .put(0x34, {0x40})
                                   .put(0x40, {0x01, 0x50})
                                   .express(0x50, 0x70)
                                   .subsystem(0x70, 0x50)
                                   .decoded();
    EXPECT_EQ(second.subsystemVendorId, 0x2211);
    EXPECT_EQ(second.linkWidth, 16);
    const Bytes meaningless =
        Bytes().put(0x34, {0x40}).put(0x40, {0x01, 0x50}).put(0x50, {0x05, 0x41});
    EXPECT_EQ(testsupport::describe(meaningless.decoded()),
              testsupport::describe(Bytes().decoded()));
}

TEST(ConfigSpace, TheLongestListIsFollowedToItsEnd) {
    Bytes bytes;
    bytes.put(0x34, {0x40});
    for (unsigned at = 0x40; at < 0xF0; at += 4)
        bytes.put(at, {0x05, static_cast<std::uint8_t>(at + 4)});
    bytes.subsystem(0xF0, 0);
    EXPECT_EQ(bytes.decoded().subsystemVendorId, 0x2211);
}

TEST(ConfigSpace, LinkIsOfAFunctionOfAnyKind) {
    for (const int type : {0, 1}) {
        Bytes bytes(static_cast<std::uint8_t>(type));
        bytes.put(0x34, {0x40}).express(0x40, 0).put(0x42, {0x62}).put(0x52, {0x42, 0x70});
        EXPECT_EQ(bytes.link(), (Link{16, 3, 4, 2, PortType::downstreamPort})) << type;
    }
    EXPECT_EQ(Bytes(0).link(), Link{});
    EXPECT_EQ(Bytes(1).link(), Link{.port = PortType::other}) << "it has no such capability";
}

TEST(ConfigSpace, PortTypeIsWhatTheCapabilitySays) {
    const auto portOf = [](std::uint8_t byte) {
        return Bytes().put(0x34, {0x40}).express(0x40, 0).put(0x42, {byte}).link().port;
    };
    EXPECT_EQ(portOf(0x42), PortType::rootPort);
    EXPECT_EQ(portOf(0x52), PortType::upstreamPort);
    EXPECT_EQ(portOf(0x62), PortType::downstreamPort);
    EXPECT_EQ(portOf(0x72), PortType::other);
    EXPECT_EQ(portOf(0x82), PortType::other);
    EXPECT_EQ(portOf(0x02), PortType::unknown);
}

TEST(ConfigSpace, BusesThatABridgeForwardsAreThoseOfBothKinds) {
    EXPECT_EQ(Bytes(1).put(0x1A, {9}).decoded().subordinateBus, 9);
    EXPECT_EQ(Bytes(2).put(0x1A, {9}).decoded().subordinateBus, 9);
    EXPECT_EQ(Bytes(0).put(0x1A, {9}).decoded().subordinateBus, 0);
}

TEST(ConfigSpace, LeavesAddressAndLineAlone) {
    PciFunction function;
    function.bus = 3;
    function.device = 4;
    function.function = 5;
    function.line = 6;
    function.linkWidth = 9;
    function.linkSpeed = 9;
    function.subsystemId = 9;
    const std::vector<std::uint8_t> zeros(64, 0);
    decodeConfigSpace(zeros, function);
    EXPECT_EQ(function.handle(), 0x325U);
    EXPECT_EQ(function.line, 6U);
    EXPECT_EQ(function.linkWidth, 0);
    EXPECT_EQ(function.linkSpeed, 0);
    EXPECT_EQ(function.subsystemId, 0);
}

} // namespace

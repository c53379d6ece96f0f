#include "quil/slotPathDerivation.h"

#include "quil/quilStatus.h"
#include "quil/setError.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <new>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0 {

namespace {

using nZOQUIL000::kComponent;
using nZOQUIL000::tErrorSite;
using nZOQUIL000::tErrorStatus;
using platform::DeviceNode;
using platform::DeviceTree;

constexpr const char* kFile = "zoquil\\protons\\enumeration\\windows\\winpcislotpath";

// The places that error records name.
constexpr int kLineNotPci = 134;
constexpr int kLineAddress = 159;
constexpr int kLineOpenParent = 179;
constexpr int kLineParentIdentifier = 185;
constexpr int kLineTooLongForProperty = 233;
constexpr int kLineSetText = 1634;
constexpr int kLineExtendText = 1641;

constexpr std::size_t kEnumeratorSize = 16;
constexpr std::size_t kIdentifierSize = 200;

// Buses are numbered with 8 bits, and each level has one of its own: what is deeper is a loop.
constexpr std::size_t kMostLevels = 256;
// No machine comes near it; a chain of siblings that gets here is a loop.
constexpr std::size_t kMostSiblings = 65536;

void setQueryError(tErrorStatus& status, tErrorSite site) noexcept {
    nZOQUIL000::setError(status, nZOQUIL000::kQuilErrDeviceQuery, site);
}

void setQueryError(tErrorStatus& status, int line) noexcept {
    setQueryError(status, {kFile, line, kComponent, "kQuilErrDeviceQuery"});
}

void setOutOfMemory(tErrorStatus& status, tErrorSite site) noexcept {
    nZOQUIL000::setError(status, nZOQUIL000::zoquilerr_memoryFull, site);
}

constexpr const char* kMemoryFull = "zoquilerr_memoryFull";

constexpr char toUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return toUpper(a) == toUpper(b); });
}

// A text of the tree in a buffer of the size that the system is given; empty when there is none.
template <std::size_t Size>
class NodeText {
public:
    using Query = bool (DeviceTree::*)(DeviceNode, char*, std::size_t);

    NodeText(DeviceTree& tree, Query query, DeviceNode node)
        : good_((tree.*query)(node, buffer_.data(), Size)) {
        buffer_[good_ ? Size - 1 : 0] = '\0';
    }

    [[nodiscard]] bool good() const noexcept { return good_; }
    [[nodiscard]] const char* data() const noexcept { return buffer_.data(); }
    [[nodiscard]] std::string_view view() const noexcept { return buffer_.data(); }

private:
    std::array<char, Size> buffer_{};
    bool good_;
};
using EnumeratorName = NodeText<kEnumeratorSize>;
using Identifier = NodeText<kIdentifierSize>;

bool isPciRootBridge(std::string_view identifier) noexcept {
    for (const std::string_view start : {R"(ACPI\PNP0A03)", R"(ACPI\PNP0A08)"}) {
        if (equalsIgnoringCase(identifier.substr(0, start.size()), start))
            return true;
    }
    return false;
}

// How many PCI root bridges stand before this one among its siblings.
unsigned countRootBridgesBefore(DeviceTree& tree, DeviceNode root, tErrorStatus& status) {
    DeviceNode parent = root;
    DeviceNode sibling = root;
    if (!tree.parent(root, parent) || !tree.firstChild(parent, sibling))
        return 0;
    unsigned count = 0;
    for (std::size_t walked = 0; sibling != root; ++walked) {
        if (walked == kMostSiblings) {
            setQueryError(status, nZOQUIL000::siteHere(kFile, "kQuilErrDeviceQuery"));
            break;
        }
        if (isPciRootBridge(Identifier(tree, &DeviceTree::identifier, sibling).view()))
            ++count;
        DeviceNode next = root;
        if (!tree.nextSibling(sibling, next))
            break;
        sibling = next;
    }
    return count;
}

// The hops from the device up to the root, and what stands before them.
struct Ascent {
    std::array<std::uint8_t, kMostLevels> hops{};
    std::size_t hopCount = 0;
    std::optional<unsigned> rootNumber; // none: the uppermost PCI device has no parent
};

// The parent is looked up by its identifier, so that only a device that the system lists counts.
std::optional<DeviceNode> openParent(DeviceTree& tree, DeviceNode parent, tErrorStatus& status) {
    const Identifier identifier(tree, &DeviceTree::identifier, parent);
    if (!identifier.good()) {
        setQueryError(status, kLineParentIdentifier);
        return std::nullopt;
    }
    DeviceNode opened = parent;
    if (!tree.open(identifier.data(), opened)) {
        setQueryError(status, kLineOpenParent);
        return std::nullopt;
    }
    return opened;
}

void ascend(DeviceTree& tree, DeviceNode device, Ascent& way, tErrorStatus& status) {
    for (std::optional<DeviceNode> node = device; node;) {
        const EnumeratorName enumerator(tree, &DeviceTree::enumeratorName, *node);
        if (!equalsIgnoringCase(enumerator.view(), "PCI")) {
            if (way.hopCount == 0)
                setQueryError(status, kLineNotPci);
            else if (equalsIgnoringCase(enumerator.view(), "ACPI"))
                way.rootNumber = countRootBridgesBefore(tree, *node, status);
            else
                way.rootNumber = 0;
            return;
        }
        std::uint32_t address = 0;
        if (!tree.address(*node, address)) {
            setQueryError(status, kLineAddress);
            return;
        }
        if (way.hopCount == kMostLevels) {
            setQueryError(status, nZOQUIL000::siteHere(kFile, "kQuilErrDeviceQuery"));
            return;
        }
        way.hops[way.hopCount++] =
            static_cast<std::uint8_t>((address >> 16 & 31U) * 8 | (address & 7U));
        DeviceNode parent = *node;
        if (!tree.parent(*node, parent))
            return;
        node = openParent(tree, parent, status);
    }
}

template <typename... Values>
void extend(std::string& text, int line, tErrorStatus& status, const char* format,
            Values... values) {
    if (status.failed())
        return;
    std::array<char, 16> piece{};
    std::snprintf(piece.data(), piece.size(), format, values...);
    try {
        text += piece.data();
    } catch (const std::bad_alloc&) {
        setOutOfMemory(status, {kFile, line, kComponent, kMemoryFull});
    }
}

std::string write(const Ascent& way, tErrorStatus& status) {
    std::string text;
    if (way.rootNumber)
        extend(text, kLineSetText, status, "%04X:%02X", 0U, *way.rootNumber);
    for (std::size_t i = way.hopCount; i != 0; --i)
        extend(text, kLineExtendText, status, ":%02X", unsigned{way.hops[i - 1]});
    return text;
}

} // namespace

void deriveSlotPath(DeviceTree& tree, DeviceNode device, std::string& text,
                    tErrorStatus& status) noexcept {
    if (status.failed())
        return;
    try {
        Ascent way;
        ascend(tree, device, way, status);
        std::string derived = write(way, status);
        if (!status.failed())
            text.swap(derived);
    } catch (const std::bad_alloc&) { // out of the tree
        setOutOfMemory(status, nZOQUIL000::siteHere(kFile, kMemoryFull));
    }
}

const std::string& DerivedSlotPath::text(tErrorStatus& status) noexcept {
    if (text_.empty())
        deriveSlotPath(tree_, device_, text_, status);
    return text_;
}

void DerivedSlotPath::handOut(tPropertyBuffer& buffer, tErrorStatus& status) noexcept {
    if (status.failed())
        return;
    text(status);
    if (status.failed())
        return;
    if (text_.size() >= buffer.size()) {
        nZOQUIL000::setError(
            status, nZOQUIL000::kQuilErrBufferTooSmall,
            {kFile, kLineTooLongForProperty, kComponent, "kQuilErrBufferTooSmall"});
        return;
    }
    std::copy_n(text_.c_str(), text_.size() + 1, buffer.begin());
}

} // namespace nZoTavManagerPciPlugin_15_0

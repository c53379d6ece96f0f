// Devices and their tree as a test wants them. Every call is counted, any one of them can be made
// to fail, and failures leave rubbish in the outputs.
#pragma once

#include "platform/pciDevices.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fakes {

using platform::DeviceNode;
using platform::PropertyRead;

inline constexpr std::uint32_t kRubbish = 0xDEADBEEF;

// A tree of named nodes. A node's identifier leads back to it.
class Tree : public platform::DeviceTree {
public:
    struct Node {
        std::string enumerator;
        std::string identifier;
        std::uint32_t address = 0;
        std::optional<DeviceNode> parent = std::nullopt;
        std::optional<DeviceNode> firstChild = std::nullopt;
        std::optional<DeviceNode> nextSibling = std::nullopt;
    };
    std::map<DeviceNode, Node> nodes;

    int calls = 0;
    int failingCall = 0; // counted from 1; 0 for none
    std::vector<std::string> log;

    bool enumeratorName(DeviceNode node, char* buffer, std::size_t capacity) override {
        return text("enumerator", node, nodes[node].enumerator, buffer, capacity);
    }
    bool identifier(DeviceNode node, char* buffer, std::size_t capacity) override {
        return text("identifier", node, nodes[node].identifier, buffer, capacity);
    }
    bool address(DeviceNode node, std::uint32_t& value) override {
        const bool good = proceeds("address", node);
        value = good ? nodes[node].address : kRubbish;
        return good;
    }
    bool parent(DeviceNode node, DeviceNode& result) override {
        return step("parent", node, nodes[node].parent, result);
    }
    bool firstChild(DeviceNode node, DeviceNode& result) override {
        return step("child", node, nodes[node].firstChild, result);
    }
    bool nextSibling(DeviceNode node, DeviceNode& result) override {
        return step("sibling", node, nodes[node].nextSibling, result);
    }
    bool open(const char* identifier, DeviceNode& result) override {
        std::optional<DeviceNode> found;
        for (const auto& [node, content] : nodes) {
            if (content.identifier == identifier)
                found = node;
        }
        return step("open", found.value_or(0), found, result);
    }

private:
    bool proceeds(const char* query, DeviceNode node) {
        log.push_back(query + std::string(" ") + std::to_string(node));
        return ++calls != failingCall;
    }
    bool step(const char* query, DeviceNode node, std::optional<DeviceNode> answer,
              DeviceNode& result) {
        const bool good = proceeds(query, node) && answer;
        result = good ? *answer : kRubbish;
        return good;
    }
    bool text(const char* query, DeviceNode node, const std::string& answer, char* buffer,
              std::size_t capacity) {
        const bool good = proceeds(query, node) && answer.size() < capacity;
        std::memset(buffer, good ? 0 : '?', capacity);
        if (good)
            answer.copy(buffer, answer.size());
        return good;
    }
};

// What Devices has done, where a test can see it after the devices are gone.
struct Record {
    int opened = 0;
    int closed = 0;
    int reads = 0;
    std::vector<std::string> names; // "index name" of each property read
};

class Devices : public platform::PciDevices {
public:
    // The published values of one device. A device without any is one that publishes nothing.
    using Values = std::map<std::string, std::uint32_t>;

    explicit Devices(Record& record) : record_(record) {}

    std::vector<Values> list;
    platform::SystemCode openCode = 0;
    int failingRead = 0; // counted from 1; 0 for none
    PropertyRead failure;
    std::map<std::string, PropertyRead> failures; // "index name"
    platform::DeviceTree* tree = nullptr;
    DeviceNode treeNode = 0;
    int located = 0;

    platform::SystemCode open() override {
        ++record_.opened;
        return openCode;
    }
    bool has(std::size_t index) override { return index < list.size(); }
    // With `knows`, devices whose number is odd are known not to have what is sought.
    bool knows = false;
    std::size_t nextToAsk(std::size_t index, const platform::PciIds& sought) override {
        asked = sought;
        return knows ? (index + 1) / 2 * 2 : PciDevices::nextToAsk(index, sought);
    }
    platform::PciIds asked;
    PropertyRead readProperty(std::size_t index, const char* name) override {
        ++record_.reads;
        const std::string key = std::to_string(index) + " " + name;
        record_.names.push_back(key);
        PropertyRead read;
        read.value = kRubbish;
        if (record_.reads == failingRead)
            read = failure;
        else if (const auto found = failures.find(key); found != failures.end())
            read = found->second;
        else if (list[index].empty())
            read.step = PropertyRead::Step::busProperties, read.code = 2;
        else if (const auto value = list[index].find(name); value != list[index].end())
            read.value = value->second;
        else
            read.step = PropertyRead::Step::value, read.code = 2;
        return read;
    }
    platform::DeviceTree* locate(std::size_t, DeviceNode& node) override {
        ++located;
        if (tree != nullptr)
            node = treeNode;
        return tree;
    }
    void close() noexcept override { ++record_.closed; }

private:
    Record& record_;
};

inline PropertyRead failed(PropertyRead::Step step, platform::SystemCode code,
                           bool tooLong = false) {
    PropertyRead read;
    read.step = step;
    read.code = code;
    read.tooLong = tooLong;
    read.value = kRubbish;
    return read;
}

} // namespace fakes

// Finding the models that share a tree among very many finds what comparing each with each finds.
#include "tavctl/lint/sharedTrees.h"

#include "tavctl/description/modelShape.h"
#include "tavctl/lint/modelTree.h"
#include "tests/support/effort.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using tavctl::lint::SharedTrees;

// Models with so few identifiers and places that many are alike and many more nearly so.
class RandomModels {
public:
    tModelDescription next() {
        tModelDescription model;
        model.model = oneOf({"Box", "Card", "Switch", "_"}, 40);
        model.terminalNameBase = oneOf({"TAV", "BOX", "_"}, 40);
        model.linkWidthPerLabel = below(4) == 0 ? 4 : 0;
        const unsigned anchors = below(5) == 0 ? 2 : 1;
        for (unsigned i = 0; i < anchors; ++i)
            model.anchors.push_back({below(4) == 0 ? 0U : kHeaderTypeBridge, ids()});
        if (below(3) != 0) {
            model.upstreamPort = bridge(model);
            if (below(3) != 0) {
                model.upstreamPort.traversalMap.clear();
                model.upstreamPort.ids = model.anchors.front().ids;
            }
            model.connectorLabels.emplace_back("HOST");
        }
        for (unsigned i = below(3); i > 0; --i) {
            model.downstreamPorts.push_back(bridge(model));
            model.connectorLabels.push_back(oneOf({"A", "B"}, 2));
        }
        for (unsigned i = below(2); i > 0; --i)
            model.internalBridges.push_back(bridge(model));
        if (below(8) == 0)
            model.connectorLabels.emplace_back("MORE");
        return model;
    }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
    // The last one seldom: once in so many times.
    std::string oneOf(std::initializer_list<const char*> texts, unsigned seldom) {
        const auto usual = static_cast<unsigned>(texts.size() - 1);
        return *std::next(texts.begin(), below(seldom) == 0 ? usual : below(usual));
    }
    tPciIds ids() { return {0x104C, static_cast<std::uint16_t>(0x8232 + below(2)), 0, 0}; }
    tBridgeDescription bridge(const tModelDescription& model) {
        static const char* const kMaps[] = {"", "d0f0", "d1f0", "d0f0,d0f0", "-", "x"};
        tBridgeDescription bridge;
        bridge.traversalMap = kMaps[below(12) == 0 ? 4 + below(2) : below(4)];
        bridge.ids = below(2) == 0 ? model.anchors[below(2) % model.anchors.size()].ids : ids();
        bridge.isOptional = below(4) == 0;
        bridge.reportAddressFromThisBridge = below(8) == 0;
        return bridge;
    }

    std::mt19937 random_{1122}; // NOLINT(bugprone-random-generator-seed): the same each time
};

std::optional<std::size_t> firstSharing(const std::vector<tModelDescription>& earlier,
                                        const tModelDescription& model) {
    for (std::size_t i = 0; i < earlier.size(); ++i) {
        if (tavctl::lint::satisfiedByOneTree(earlier[i], model))
            return i;
    }
    return std::nullopt;
}

TEST(SharedTrees, FindsWhatComparingEachWithEachFinds) {
    RandomModels random;
    std::size_t shared = 0;
    std::size_t alone = 0;
    std::size_t pairs = 0;
    std::size_t compared = 0;
    for (auto folder = testsupport::effort(20, 200); folder > 0; --folder) {
        SharedTrees trees;
        std::vector<tModelDescription> models;
        for (int i = 0; i < 40; ++i) {
            const tModelDescription model = random.next();
            const auto wanted = firstSharing(models, model);
            ASSERT_EQ(trees.add(model), wanted) << "model " << i;
            (wanted ? shared : alone) += 1;
            pairs += models.size();
            models.push_back(model);
        }
        compared += trees.comparisons();
    }
    // Both kinds must occur often, or the test shows nothing.
    EXPECT_GT(shared, 100U);
    EXPECT_GT(alone, 100U);
    EXPECT_LT(compared, pairs / 2);
}

TEST(SharedTrees, ModelsThatDifferInNamesAreComparedOnce) {
    RandomModels random;
    SharedTrees trees;
    tModelDescription model = random.next();
    while (!tavctl::lint::satisfiedByOneTree(model, model))
        model = random.next();
    EXPECT_EQ(trees.add(model), std::nullopt);
    for (int i = 0; i < 1000; ++i) {
        model.model = "Box " + std::to_string(i);
        model.terminalNameBase = "BASE";
        EXPECT_EQ(trees.add(model), 0U);
    }
    EXPECT_EQ(trees.comparisons(), 1U);
}

TEST(SharedTrees, ModelsWithoutACommonAnchorAreNotCompared) {
    RandomModels random;
    SharedTrees trees;
    for (std::uint16_t i = 0; i < 1000; ++i) {
        tModelDescription model = random.next();
        model.anchors = {{kHeaderTypeBridge, {1, i, 0, 0}}};
        EXPECT_EQ(trees.add(model), std::nullopt);
    }
    EXPECT_EQ(trees.comparisons(), 0U);
}

// Two that fit no tree together, not even with themselves, are not compared again for each copy.
TEST(SharedTrees, ModelsThatAreNeverListedAreComparedOnce) {
    RandomModels random;
    tModelDescription model = random.next();
    while (tavctl::lint::satisfiedByOneTree(model, model))
        model = random.next();
    SharedTrees trees;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(trees.add(model), std::nullopt);
    EXPECT_EQ(trees.comparisons(), 1U);
}

// An upstream port that is narrower than a connector takes no label.
TEST(ModelTree, PortsBehindTheLastLabelTakeNone) {
    tModelDescription model;
    model.model = "Box";
    model.anchors = {{kHeaderTypeBridge, {0x104C, 0x8232, 0, 0}}};
    model.upstreamPort.traversalMap.clear();
    model.upstreamPort.ids = model.anchors.front().ids;
    model.linkWidthPerLabel = 4;
    EXPECT_TRUE(tavctl::lint::satisfiedByOneTree(model, model));
    model.connectorLabels = {"HOST"};
    EXPECT_TRUE(tavctl::lint::satisfiedByOneTree(model, model));
}

TEST(ModelShape, HoldsAllButTheTexts) {
    RandomModels random;
    for (int i = 0; i < 500; ++i) {
        const tModelDescription model = random.next();
        const std::string shape = tavctl::lint::shapeOf(model);
        const tModelDescription made = tavctl::lint::modelOfShape(shape);
        EXPECT_EQ(tavctl::lint::shapeOf(made), shape);
        EXPECT_EQ(made.connectorLabels.size(), model.connectorLabels.size());
        EXPECT_EQ(made.model == kNoText, model.model == kNoText);
        ASSERT_EQ(made.downstreamPorts.size(), model.downstreamPorts.size());
        for (std::size_t port = 0; port < model.downstreamPorts.size(); ++port) {
            EXPECT_EQ(made.downstreamPorts[port].traversalMap,
                      model.downstreamPorts[port].traversalMap);
            EXPECT_EQ(made.downstreamPorts[port].ids, model.downstreamPorts[port].ids);
        }
    }
}

} // namespace

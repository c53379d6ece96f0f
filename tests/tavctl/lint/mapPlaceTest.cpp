// Places of maps are told apart as by following the maps from deep below the root.
#include "tavctl/lint/mapPlace.h"

#include "pxidrivertools/cSlotPath.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>

namespace {

using tavctl::lint::placeOfMap;

std::optional<std::list<std::uint8_t>> followed(const std::string& map) {
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath path;
    path.hops.assign(256, 0xFF);
    nZOQUIL000::tErrorStatus status;
    path.ApplyRelativePath(map, status);
    return status.failed() ? std::nullopt : std::optional(path.hops);
}

TEST(MapPlace, IsTheSameWhereTheWaysEndAlike) {
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same each time
    static const char* const kSteps[] = {"d0f0", "d31f7", "d1f0", "-", "-", "f1", "f7", "x"};
    std::vector<std::string> maps{"", "d31f7,-", "-,d31f7", "-,-,d31f7,d31f7"};
    for (int i = 0; i < 400; ++i) {
        std::string map;
        for (auto steps = random() % 4; steps > 0; --steps)
            map += (map.empty() ? "" : ",") + std::string(kSteps[random() % std::size(kSteps)]);
        maps.push_back(map);
    }
    std::size_t same = 0;
    for (const std::string& a : maps) {
        EXPECT_EQ(placeOfMap(a).has_value(), followed(a).has_value()) << a;
        for (const std::string& b : maps) {
            EXPECT_EQ(placeOfMap(a) == placeOfMap(b), followed(a) == followed(b)) << a << " " << b;
            same += placeOfMap(a) == placeOfMap(b) ? 1U : 0U;
        }
    }
    EXPECT_GT(same, 2 * maps.size());
}

TEST(MapPlace, AMapThatGoesUpTooFarLeadsNowhere) {
    std::string map = "-";
    for (int i = 1; i < 256; ++i)
        map += ",-";
    EXPECT_EQ(placeOfMap(map).has_value(), followed(map).has_value());
    map += ",-";
    EXPECT_EQ(placeOfMap(map).has_value(), followed(map).has_value());
    EXPECT_EQ(placeOfMap(map + ",f1").has_value(), followed(map + ",f1").has_value());
}

} // namespace

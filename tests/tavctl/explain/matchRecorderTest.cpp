// What the recorder makes of failures that do not come from the bridge library.
#include "tavctl/explain/matchRecorder.h"

#include "tavctl/match/busBridges.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace tavctl;

TEST(MatchRecorder, FailureWithoutARecordIsToldInItsOwnWords) {
    const auto bus = std::make_shared<const pcibus::Bus>(std::vector<pcibus::PciFunction>(),
                                                         pcibus::addressText);
    const MatchBus recorded = recordedBus(bus);
    const explain::PartNames names;
    explain::Explanation explanation;
    explain::MatchRecorder recorder(*recorded.wrapper, *bus, names, explanation);
    recorder.onModel(0);
    recorder.onModelFailed(std::runtime_error("no more of it"));
    EXPECT_EQ(explanation.failure, "no more of it");
    EXPECT_EQ(explanation.listed(), 0U);
}

} // namespace

// The bus as tavctl reads it through a bridge library that fails or contradicts itself.
#include "pcibus/readBus.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/failure.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"
#include "tests/support/describe.h"
#include "tests/support/environmentValue.h"
#include "tests/tavctl/sample.h"

#include <optional>

namespace {

using scripted::BridgeFunction;
using tavctltest::kSample;
using testsupport::EnvironmentValue;

class BridgeLibrary : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        library->behind = TAV_SUBSTITUTE_LIBRARY;
    }

    static std::optional<tavctl::Failure> failureToRead() {
        try {
            tavctl::busOfBridgeLibrary();
            return std::nullopt;
        } catch (const tavctl::FailureException& exception) {
            return exception.failure();
        }
    }

    // One answer to the question for the length, and the list itself.
    void prepareList(BridgeFunction function, const std::vector<std::uint32_t>& values) {
        const auto count = static_cast<std::uint32_t>(values.size());
        library->prepare(function, {scripted::kPciBrdErrBufferTooSmall, {}, count, {}});
        library->prepare(function, {0, values, count, {}});
    }

    EnvironmentValue dump{"TAV_PCI_DUMP", kSample};
};

TEST_F(BridgeLibrary, BridgesThatAreGivenTwiceAreReadOnce) {
    const auto expected = testsupport::describe(tavctl::busOfBridgeLibrary().functions());
    std::vector<std::uint32_t> roots;
    const pcibus::Bus bus = pcibus::readBus(kSample);
    for (const std::uint8_t root : bus.rootBuses())
        roots.insert(roots.end(), {root, root});
    prepareList(BridgeFunction::GetRootBuses, roots);
    EXPECT_EQ(testsupport::describe(tavctl::busOfBridgeLibrary().functions()), expected);
}

TEST_F(BridgeLibrary, StatusThatItAnswersIsTold) {
    library->faults = scripted::readFaults("GetBridgeIds=-313007");
    const auto failure = failureToRead();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->operation, "read the bus");
    EXPECT_EQ(failure->object, "bridge library");
    EXPECT_EQ(failure->status, -313007);
}

TEST_F(BridgeLibrary, TwoBridgesAtOneAddressAreTold) {
    library->prepare(BridgeFunction::GetBridgeAddress, {0, {0xF0, 1, 2}, {}, {}});
    library->prepare(BridgeFunction::GetBridgeAddress, {0, {0xF0, 1, 2}, {}, {}});
    const auto failure = failureToRead();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->object, "bridge library");
    EXPECT_NE(failure->reason.find("a second function at f0:01.2"), std::string::npos)
        << failure->reason;
    EXPECT_EQ(failure->status, std::nullopt);
}

// The library has its own way to the bus, and the list of devices is the system's.
TEST_F(BridgeLibrary, ListOfDevicesThatCannotBeHadIsTold) {
    library->behind.clear();
    dump.set("/nonexistent.dump");
    const auto failure = failureToRead();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->operation, "list devices");
    EXPECT_EQ(failure->reason, "No such file or directory");
}

} // namespace

// The wrapper's one session, from opening to unloading.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/raised.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using testing::ElementsAre;
using testing::IsEmpty;

class Session : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
    }

    void openingGives(std::int32_t status, std::uint32_t session) {
        library->prepare(BridgeFunction::OpenSession, {status, {session}, {}, {}});
    }
    // "open 3" and "close 17": the function and its first argument.
    [[nodiscard]] std::vector<std::string> calls() const {
        std::vector<std::string> lines;
        for (const scripted::Call& call : library->calls)
            lines.push_back((call.function == BridgeFunction::OpenSession    ? "open "
                             : call.function == BridgeFunction::CloseSession ? "close "
                                                                             : "other ") +
                            std::to_string(call.arguments.at(0)));
        return lines;
    }

    nZOQUIL000::tErrorStatus loading;
    std::unique_ptr<cPciBrdWrapper_ex> wrapper = std::make_unique<cPciBrdWrapper_ex>(loading);
};

TEST_F(Session, IsNotOpenAtFirst) {
    EXPECT_EQ(wrapper->IsSessionOpen(), 0U);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Session, OpensWithTheOptionAndReturnsTheStatus) {
    openingGives(21, 17);
    EXPECT_EQ(wrapper->OpenSession(3), 21);
    EXPECT_EQ(wrapper->IsSessionOpen(), 1U);
    EXPECT_EQ(wrapper->OpenBridge(1), 0);
    EXPECT_THAT(calls(), ElementsAre("open 3", "other 17"));
}

TEST_F(Session, OpenedTwiceClosesTheFirstBeforeOpeningTheSecond) {
    openingGives(0, 17);
    openingGives(0, 18);
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_EQ(wrapper->OpenSession(4), 0);
    EXPECT_EQ(wrapper->IsSessionOpen(), 1U);
    EXPECT_EQ(wrapper->OpenBridge(1), 0);
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17", "open 4", "other 18"));
}

TEST_F(Session, SecondIsOpenedAlsoWhenTheFirstDoesNotClose) {
    openingGives(0, 17);
    openingGives(0, 18);
    library->prepare(BridgeFunction::CloseSession, {-313001, {}, {}, {}});
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_EQ(wrapper->OpenSession(4), 0);
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17", "open 4"));
}

TEST_F(Session, ThatDoesNotOpenIsNotOpen) {
    openingGives(-313004, 17);
    const Raised outcome = outcomeOf([&] { return wrapper->OpenSession(3); });
    EXPECT_TRUE(outcome.raised);
    EXPECT_EQ(outcome.status, -313004);
    EXPECT_EQ(outcome.record, wrapperRecord(67));
    EXPECT_EQ(wrapper->IsSessionOpen(), 0U);
    wrapper.reset();
    EXPECT_THAT(calls(), ElementsAre("open 3"));
}

TEST_F(Session, FailedReopeningLeavesNoneOpen) {
    openingGives(0, 17);
    library->prepare(BridgeFunction::OpenSession, {-313004, {}, {}, {}});
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_TRUE(outcomeOf([&] { return wrapper->OpenSession(4); }).raised);
    EXPECT_EQ(wrapper->IsSessionOpen(), 0U);
    wrapper.reset();
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17", "open 4"));
}

TEST_F(Session, ClosedWithoutBeingOpenCallsTheLibraryWithNoHandle) {
    library->prepare(BridgeFunction::CloseSession, {-313001, {}, {}, {}});
    EXPECT_EQ(wrapper->CloseSession(), -313001);
    EXPECT_THAT(calls(), ElementsAre("close 4294967295"));
}

TEST_F(Session, CloseForgetsTheHandleAndReturnsTheStatusWhateverItIs) {
    for (const std::int32_t status : {0, 9, -313001}) {
        *library = scripted::Script();
        openingGives(0, 17);
        library->prepare(BridgeFunction::CloseSession, {status, {}, {}, {}});
        EXPECT_EQ(wrapper->OpenSession(3), 0);
        EXPECT_EQ(wrapper->CloseSession(), status);
        EXPECT_EQ(wrapper->IsSessionOpen(), 0U);
        EXPECT_EQ(wrapper->CloseSession(), 0);
        EXPECT_THAT(calls(), ElementsAre("open 3", "close 17", "close 4294967295"));
    }
}

TEST_F(Session, BridgesAreAskedForWithoutAHandleWhileNoneIsOpen) {
    EXPECT_EQ(wrapper->OpenBridge(1), 0);
    EXPECT_THAT(calls(), ElementsAre("other 4294967295"));
}

TEST_F(Session, ThatIsOpenIsClosedOnceAtTheEndThenTheLibraryIsUnloaded) {
    openingGives(0, 17);
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    wrapper.reset();
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17"));

    bool unloaded = false;
    library->unloaded = &unloaded;
    library.release();
    EXPECT_TRUE(unloaded);
    library = ScriptedLibrary();
}

TEST_F(Session, OpenOneIsClosedWhileTheLibraryIsStillThere) {
    openingGives(0, 17);
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    bool unloaded = false;
    library->unloaded = &unloaded;
    library.release();
    EXPECT_FALSE(unloaded);
    wrapper.reset(); // would call into unmapped memory in the other order
    EXPECT_TRUE(unloaded);
    library = ScriptedLibrary();
}

TEST_F(Session, ThatWasClosedIsNotClosedAgainAtTheEnd) {
    openingGives(0, 17);
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_EQ(wrapper->CloseSession(), 0);
    wrapper.reset();
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17"));
}

TEST_F(Session, FailureToCloseAtTheEndIsSwallowed) {
    openingGives(0, 17);
    library->prepare(BridgeFunction::CloseSession, {-313001, {}, {}, {}});
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_NO_THROW(wrapper.reset());
    EXPECT_THAT(calls(), ElementsAre("open 3", "close 17"));
}

TEST_F(Session, BridgesThatTheCallerLeftOpenAreNotClosed) {
    openingGives(0, 17);
    EXPECT_EQ(wrapper->OpenSession(3), 0);
    EXPECT_EQ(wrapper->OpenBridge(1), 0);
    wrapper.reset();
    EXPECT_THAT(calls(), ElementsAre("open 3", "other 17", "close 17"));
}

} // namespace

// The wrapper's four lists: the count first, then the elements, from a library that may change its
// mind in between.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/raised.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using operations::nameOf;
using scripted::Call;
using testing::ElementsAre;
using testing::IsEmpty;

using Contents = std::vector<std::uint32_t>;

class Lists : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
    }

    // Runs `check` for each of the four, with a fresh script each time.
    void forEach(const std::function<void(const operations::ListOperation&)>& check) {
        std::size_t lists = 0;
        for (const operations::ListOperation& list : operations::kLists) {
            SCOPED_TRACE(nameOf(list.function));
            *library = scripted::Script();
            check(list);
            ++lists;
        }
        EXPECT_EQ(lists, 4U);
    }
    void announce(const operations::ListOperation& list, std::uint32_t count) {
        library->prepare(list.function, {kPciBrdErrBufferTooSmall, {}, count, {}});
    }

    nZOQUIL000::tErrorStatus loading;
    cPciBrdWrapper_ex wrapper{loading};
};

TEST_F(Lists, AreAskedForTheirCountAndThenFetchedWhole) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 3);
        library->prepare(list.function, {33, {11, 12, 13}, 3, {}});
        Contents contents{9, 8, 7, 6};
        EXPECT_EQ(list.run(wrapper, contents), 33);
        EXPECT_THAT(contents, ElementsAre(11, 12, 13));

        ASSERT_EQ(library->calls.size(), 2U);
        const Call& count = library->calls[0];
        const Call& fetch = library->calls[1];
        EXPECT_EQ(count.room, 0U);
        EXPECT_EQ(fetch.room, 3U);
        const std::size_t array = count.arguments.size() - 2;
        EXPECT_EQ(count.arguments[array], 0U);
        EXPECT_NE(fetch.arguments[array], 0U);
        EXPECT_TRUE(std::equal(count.arguments.begin(),
                               count.arguments.begin() + static_cast<std::ptrdiff_t>(array),
                               fetch.arguments.begin()));
    });
}

TEST_F(Lists, KeepTheFirstCountWhenTheSecondOneShrinks) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 3);
        library->prepare(list.function, {0, {11, 12}, 2, {}});
        Contents contents;
        EXPECT_EQ(list.run(wrapper, contents), 0);
        EXPECT_THAT(contents, ElementsAre(11, 12, 0));
    });
}

TEST_F(Lists, AreAllZeroWhenTheLibraryWritesNothing) {
    forEach([&](const operations::ListOperation& list) {
        for (int i = 0; i < 20; ++i) {
            // Memory that was used before comes back.
            Contents(1000, 0x11111111).swap(*std::make_unique<Contents>());
            announce(list, 1000);
            library->prepare(list.function, {0, {}, {}, {}});
            Contents contents;
            EXPECT_EQ(list.run(wrapper, contents), 0);
            ASSERT_EQ(contents, Contents(1000, 0));
        }
    });
}

TEST_F(Lists, ThatGrowAreAFailureOfTheSecondCall) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 1);
        library->prepare(list.function, {kPciBrdErrBufferTooSmall, {11}, 2, {}});
        Contents contents{9};
        const Raised outcome = outcomeOf([&] { return list.run(wrapper, contents); });
        EXPECT_TRUE(outcome.raised);
        EXPECT_EQ(outcome.status, kPciBrdErrBufferTooSmall);
        EXPECT_EQ(outcome.record, wrapperRecord(list.lineOfSecondCall));
        EXPECT_THAT(contents, ElementsAre(9));
        EXPECT_EQ(library->calls.size(), 2U);
    });
}

TEST_F(Lists, KeepTheFirstCountWhenASuccessReportsMore) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 1);
        library->prepare(list.function, {0, {11, 12}, 2, {}});
        Contents contents;
        EXPECT_EQ(list.run(wrapper, contents), 0);
        EXPECT_THAT(contents, ElementsAre(11));
    });
}

TEST_F(Lists, AreLeftAloneWhenTheFirstCallSucceeds) {
    forEach([&](const operations::ListOperation& list) {
        for (const std::int32_t status : {0, 7}) {
            library->calls.clear();
            library->prepare(list.function, {status, {}, 5, {}});
            Contents contents{9, 8};
            EXPECT_EQ(list.run(wrapper, contents), status);
            EXPECT_THAT(contents, ElementsAre(9, 8));
            EXPECT_EQ(library->calls.size(), 1U);
        }
    });
}

TEST_F(Lists, AreLeftAloneWhenTheFirstCallFails) {
    forEach([&](const operations::ListOperation& list) {
        library->prepare(list.function, {-313001, {}, 5, {}});
        Contents contents{9, 8};
        const Raised outcome = outcomeOf([&] { return list.run(wrapper, contents); });
        EXPECT_TRUE(outcome.raised);
        EXPECT_EQ(outcome.status, -313001);
        EXPECT_EQ(outcome.record, wrapperRecord(list.lineOfFirstCall));
        EXPECT_THAT(contents, ElementsAre(9, 8));
        EXPECT_EQ(library->calls.size(), 1U);
    });
}

TEST_F(Lists, AreLeftAloneWhenTheSecondCallFails) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 3);
        library->prepare(list.function, {-77001, {11, 12, 13}, 3, {}});
        Contents contents{9, 8};
        const Raised outcome = outcomeOf([&] { return list.run(wrapper, contents); });
        EXPECT_TRUE(outcome.raised);
        EXPECT_EQ(outcome.status, -77001);
        EXPECT_EQ(outcome.record, wrapperRecord(list.lineOfSecondCall));
        EXPECT_THAT(contents, ElementsAre(9, 8));
    });
}

TEST_F(Lists, AnnouncedEmptyAreFetchedWithoutAnArray) {
    forEach([&](const operations::ListOperation& list) {
        announce(list, 0);
        library->prepare(list.function, {4, {11}, 0, {}});
        Contents contents{9, 8};
        EXPECT_EQ(list.run(wrapper, contents), 4);
        EXPECT_THAT(contents, IsEmpty());
        ASSERT_EQ(library->calls.size(), 2U);
        const Call& fetch = library->calls[1];
        EXPECT_EQ(fetch.arguments[fetch.arguments.size() - 2], 0U);
        EXPECT_EQ(fetch.room, 0U);
    });
}

} // namespace

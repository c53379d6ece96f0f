// When monitor looks, with a clock that is made: hours pass in no time, and looks are counted.
#include "tavctl/monitor/monitor.h"

#include "tavctl/words/failure.h"

#include <gmock/gmock.h>

#include <deque>
#include <string>
#include <vector>

namespace {

using namespace tavctl;
using namespace tavctl::monitor;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using Woken = ChangeSource::Woken;

// What is told when, from the beginning on. A wait takes its time, and a change that is told ends
// it.
class MadeSource : public ChangeSource {
public:
    struct Notice {
        milliseconds when;
        Woken woken = Woken::change;
    };

    explicit MadeSource(std::deque<Notice> notices = {}, bool tells = true)
        : notices_(std::move(notices)), tells_(tells) {}

    [[nodiscard]] Time now() override { return Time(now_); }

    Woken wait(std::optional<milliseconds> limit) override {
        ++waits;
        const bool isNext = !notices_.empty() && (!limit || notices_.front().when <= now_ + *limit);
        if (!isNext) {
            EXPECT_TRUE(limit) << "nothing ends this wait";
            if (!limit)
                return Woken::stop;
            now_ += *limit;
            return Woken::time;
        }
        const Notice notice = notices_.front();
        notices_.pop_front();
        now_ = std::max(now_, notice.when);
        return notice.woken;
    }

    [[nodiscard]] bool isWoken() override { return tells_; }

    milliseconds elapsed() const { return now_; }
    void pass(milliseconds time) { now_ += time; }
    void fallSilent() { tells_ = false; }

    std::size_t waits = 0;

private:
    std::deque<Notice> notices_;
    bool tells_;
    milliseconds now_{0};
};

// Looks at a machine with so many boxes as there were looks, unless told otherwise.
struct MadeMachine {
    explicit MadeMachine(MadeSource& madeSource) : source(madeSource) {}

    MachineState look() {
        looksAt.push_back(source.elapsed());
        if (!failure.empty())
            throw FailureException({"look", {}, failure, {}, {}});
        MachineState state;
        for (std::size_t i = 0; i < (isSteady ? 1 : looksAt.size()); ++i)
            state.devices.push_back(
                {"TAV" + std::to_string(i + 1), "Box", true, "0000:01:00.0", {}, {}, {}, {}});
        return state;
    }

    std::size_t watch(const Rhythm& rhythm, ChangeSource* other = nullptr) {
        Monitor monitor(
            other == nullptr ? source : *other,
            [this] {
                if (onLook)
                    onLook(looksAt.size());
                return look();
            },
            [this](const std::vector<Event>& events) {
                ++batches;
                for (const Event& event : events)
                    told.emplace_back(eventName(event.kind));
            },
            rhythm);
        monitor.run();
        return monitor.looks();
    }

    MadeSource& source;
    std::vector<milliseconds> looksAt;
    std::vector<std::string> told;
    std::size_t batches = 0;
    std::string failure;
    bool isSteady = true;
    std::function<void(std::size_t)> onLook;
};

Rhythm forHours(int count) {
    Rhythm rhythm;
    rhythm.length = hours(count);
    return rhythm;
}

TEST(MonitorRhythm, WhereTheSystemTellsADayWithoutEventsIsOneLookAndOneWait) {
    MadeSource source;
    MadeMachine machine(source);
    EXPECT_EQ(machine.watch(forHours(24)), 1U);
    EXPECT_EQ(source.waits, 1U);
    EXPECT_THAT(machine.told, ElementsAre("present", "watching", "ended"));
}

TEST(MonitorRhythm, WhereNobodyTellsADayWithoutChangesIsOneLook) {
    MadeSource time({}, false);
    MadeMachine machine(time);
    std::size_t marks = 0;
    PolledSource polled(time, seconds(5), [&] {
        ++marks;
        return "the same";
    });
    EXPECT_EQ(machine.watch(forHours(24), &polled), 1U);
    EXPECT_EQ(marks, 24U * 3600 / 5 + 1);
}

TEST(MonitorRhythm, LooksOnceForABurst) {
    std::deque<MadeSource::Notice> burst;
    for (int i = 0; i < 6; ++i)
        burst.push_back({seconds(60) + milliseconds(250 * i)});
    MadeSource source(burst);
    MadeMachine machine(source);
    machine.isSteady = false;
    EXPECT_EQ(machine.watch(forHours(1)), 2U);
    EXPECT_THAT(machine.looksAt, ElementsAre(milliseconds(0), milliseconds(60'000 + 1250 + 300)));
    EXPECT_THAT(machine.told, ElementsAre("present", "watching", "arrived", "ended"));
}

TEST(MonitorRhythm, LooksThreeSecondsAfterTheFirstOfABurstThatDoesNotEnd) {
    std::deque<MadeSource::Notice> burst;
    for (int i = 0; i < 20; ++i)
        burst.push_back({seconds(60) + milliseconds(200 * i)});
    MadeSource source(burst);
    MadeMachine machine(source);
    machine.watch(forHours(1));
    ASSERT_EQ(machine.looksAt.size(), 3U);
    EXPECT_EQ(machine.looksAt[1], seconds(63));
    EXPECT_EQ(machine.looksAt[2], seconds(60) + milliseconds(3800 + 300));
}

TEST(MonitorRhythm, TwoEventsFarApartAreTwoLooks) {
    MadeSource source({{seconds(60)}, {seconds(120)}});
    MadeMachine machine(source);
    machine.isSteady = false;
    EXPECT_EQ(machine.watch(forHours(1)), 3U);
}

TEST(MonitorRhythm, WhatChangesWhileItIsLookedAtIsLookedAtAgainBeforeItIsTold) {
    MadeSource source({{seconds(60)}, {milliseconds(60'800)}});
    MadeMachine machine(source);
    machine.isSteady = false;
    machine.onLook = [&](std::size_t before) {
        if (before == 1)
            source.pass(seconds(1));
    };
    EXPECT_EQ(machine.watch(forHours(1)), 3U);
    EXPECT_EQ(machine.looksAt.back(), milliseconds(61'600));
    EXPECT_EQ(machine.batches, 4U) << "the state, that it watches, one change, the end";
}

TEST(MonitorRhythm, ABusThatNeverRestsIsToldOfAllTheSame) {
    std::deque<MadeSource::Notice> notices;
    for (int i = 0; i < 100'000; ++i)
        notices.push_back({seconds(60) + milliseconds(100 * i)});
    MadeSource source(notices);
    MadeMachine machine(source);
    machine.isSteady = false;
    machine.onLook = [&](std::size_t) { source.pass(seconds(1)); };
    Rhythm rhythm;
    rhythm.length = seconds(200);
    machine.watch(rhythm);
    EXPECT_GT(machine.batches, 4U);
}

TEST(MonitorRhythm, LooksAsOftenAsAskedFor) {
    MadeSource source;
    MadeMachine machine(source);
    Rhythm rhythm = forHours(1);
    rhythm.every = seconds(600);
    EXPECT_EQ(machine.watch(rhythm), 6U);
    EXPECT_EQ(machine.looksAt.back(), seconds(3000));
}

TEST(MonitorRhythm, ARequestToEndEndsItWhereverItStands) {
    for (const auto& notices : {std::deque<MadeSource::Notice>{{seconds(9), Woken::stop}},
                                {{seconds(9)}, {seconds(9), Woken::stop}},
                                {{seconds(9), Woken::unread}}}) {
        MadeSource source(notices);
        MadeMachine machine(source);
        machine.isSteady = false;
        EXPECT_EQ(machine.watch({}), 1U);
        EXPECT_THAT(machine.told, ElementsAre("present", "watching", "ended"));
    }
}

TEST(MonitorRhythm, TheLengthOfTheWatchIsKeptAndMayBeNothing) {
    MadeSource source;
    MadeMachine machine(source);
    Rhythm rhythm;
    rhythm.length = seconds(0);
    EXPECT_EQ(machine.watch(rhythm), 1U);
    EXPECT_EQ(source.elapsed(), seconds(0));
}

TEST(MonitorRhythm, AFailureIsToldOnceTriedAgainAndItsEndIsTold) {
    MadeSource source({{seconds(60)}});
    MadeMachine machine(source);
    machine.onLook = [&](std::size_t before) {
        machine.failure = before == 0 || before > 4 ? "" : before < 3 ? "no bus" : "half a file";
    };
    Rhythm rhythm = forHours(1);
    machine.watch(rhythm);
    EXPECT_THAT(machine.told, ElementsAre("present", "watching", "lookFailed", "lookFailed",
                                          "lookWorks", "ended"))
        << "once for each reason, and nothing vanished meanwhile";
    EXPECT_EQ(machine.looksAt.size(), 6U);
    EXPECT_EQ(machine.looksAt[2] - machine.looksAt[1], seconds(5));
}

TEST(MonitorRhythm, TheFirstLookMustSucceed) {
    MadeSource source;
    MadeMachine machine(source);
    machine.failure = "no bus";
    EXPECT_THROW(machine.watch(forHours(1)), FailureException);
    EXPECT_THAT(machine.told, IsEmpty());
}

TEST(MonitorRhythm, LooksForItselfFromWhenTheSystemTellsNoMore) {
    MadeSource source({{seconds(60)}});
    MadeMachine machine(source);
    machine.onLook = [&](std::size_t before) {
        if (before == 1)
            source.fallSilent();
    };
    Rhythm rhythm;
    rhythm.length = seconds(90);
    machine.watch(rhythm);
    EXPECT_EQ(machine.looksAt.size(), 2U + 5U);
}

TEST(PolledSource, SettlesUntilTheMarkStaysTheSame) {
    MadeSource time({}, false);
    PolledSource polled(time, seconds(5), [&] {
        // Somebody writes from the seventh second on, for one second.
        const auto written = std::clamp(time.elapsed(), milliseconds(7000), milliseconds(8000));
        return std::to_string(written.count());
    });
    EXPECT_EQ(polled.wait(std::nullopt), Woken::change);
    EXPECT_EQ(time.elapsed(), seconds(10));
    MadeSource early({}, false);
    PolledSource quick(early, milliseconds(500), [&] {
        return std::to_string(
            std::clamp(early.elapsed(), milliseconds(700), milliseconds(1800)).count());
    });
    EXPECT_EQ(quick.wait(std::nullopt), Woken::change);
    EXPECT_EQ(early.elapsed(), milliseconds(1000));
    EXPECT_EQ(settle(quick, {}), Woken::change);
    EXPECT_EQ(early.elapsed(), milliseconds(2200)) << "three changes, and one wait without any";
    EXPECT_EQ(quick.wait(milliseconds(700)), Woken::time);
    EXPECT_EQ(early.elapsed(), milliseconds(2900));
}

} // namespace

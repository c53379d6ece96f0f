// Failures as a person and as a script read them.
#include "tavctl/words/failure.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using tavctl::Failure;
using tavctl::failureText;

const Failure kFailure{"load bridge library",
                       "zopcibrd.so",
                       {},
                       -52005,
                       R"({"line":49,"zodynlib_debug":{"debug":"failed","path":"zopcibrd.so"}})"};

TEST(Failure, SentenceNamesOperationObjectAndReason) {
    EXPECT_EQ((Failure{"open", "file", "no such file", {}, {}}).sentence(),
              "open (file): no such file");
}

TEST(Failure, StatusStandsInForAMissingReason) {
    EXPECT_EQ(kFailure.sentence(), "load bridge library (zopcibrd.so): the bridge library could "
                                   "not be loaded, or lacks a function");
}

TEST(Failure, TextHasTheMembersOfTheErrorRecord) {
    EXPECT_EQ(failureText(kFailure, {false, true}),
              "tavctl: load bridge library (zopcibrd.so): the bridge library could not be loaded, "
              "or lacks a function\n"
              "  status -52005 (0xFFFF34DB): the bridge library could not be loaded, or lacks a "
              "function\n"
              "  error record; file and line are of the plug-in's own sources\n"
              "    line = 49\n"
              "    zodynlib_debug.debug = failed\n"
              "    zodynlib_debug.path = zopcibrd.so\n");
}

TEST(Failure, WithoutStatusAndRecordTheSentenceIsAll) {
    EXPECT_EQ(failureText({"use", "x", "why", {}, {}}, {false, true}), "tavctl: use (x): why\n");
}

TEST(Failure, PartOfAnotherSentenceKeepsItsHint) {
    const tavctl::FailureException exception({"use", "x", "why", {}, {}, "tavctl lint"});
    EXPECT_STREQ(exception.what(), "use (x): why; see: tavctl lint");
    EXPECT_STREQ(tavctl::FailureException({"use", "x", "why", {}, {}}).what(), "use (x): why");
}

TEST(Failure, JsonHasEverything) {
    const auto error = nlohmann::json::parse(failureText(kFailure, {true, false})).at("error");
    EXPECT_EQ(error.at("operation"), "load bridge library");
    EXPECT_EQ(error.at("object"), "zopcibrd.so");
    EXPECT_EQ(error.at("status"), -52005);
    EXPECT_EQ(error.at("statusHex"), "0xFFFF34DB");
    EXPECT_EQ(error.at("record").at("line"), 49);
}

TEST(Failure, RecordThatIsNoJsonIsLeftOut) {
    Failure failure = kFailure;
    failure.record = "{broken";
    EXPECT_EQ(failureText(failure, {false, true}).find("error record"), std::string::npos);
    EXPECT_TRUE(nlohmann::json::parse(failureText(failure, {true, false}))
                    .at("error")
                    .at("record")
                    .is_null());
}

} // namespace

// What the reader of a bus passes over is told by every command that looks at one, once, and
// nothing is said when there is nothing.
#include "tavctl/bus/leftOutWords.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using pcibus::LeftOut;
using tavctl::leftOutText;

TEST(LeftOutText, HasEachPartThatIsNotZero) {
    EXPECT_EQ(leftOutText({}), "");
    EXPECT_EQ(leftOutText({.otherDomains = 36, .dead = 2, .unreadable = 1, .headerOnly = 12}),
              "left out: 36 functions of other domains, 2 that do not answer (vendor FFFF), 1 that "
              "cannot be read; of 12 only the header is known");
    EXPECT_EQ(leftOutText({.otherDomains = 1}), "left out: 1 function of another domain");
    EXPECT_EQ(leftOutText({.dead = 1}, " of x.dump"),
              "left out of x.dump: 1 function that does not answer (vendor FFFF)");
    EXPECT_EQ(leftOutText({.unreadable = 2}), "left out: 2 functions that cannot be read");
    EXPECT_EQ(leftOutText({.headerOnly = 3}), "of 3 functions only the header is known");
    EXPECT_EQ(leftOutText({.headerOnly = 1}, " of x.dump"),
              "of 1 function of x.dump only the header is known");
}

std::string rows(const std::string& start) {
    return "00: " + start + " 00 00 00 00 10 00 00 00 00 00 00 00 00 00\n" +
           "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
           "20: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
           "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n\n";
}

// The sample machine with functions that are left out.
class LeftOutOfSample : public testing::Test {
protected:
    LeftOutOfSample() { fs::create_directory(folder_.file("state")); }

    [[nodiscard]] std::string withBus(std::string words) const {
        const std::string options =
            "--dump " + dump_ + " " + kDescriptions + "--state " + folder_.file("state") + " ";
        for (const auto& [name, value] : {std::pair<std::string, std::string>{"BUS", options},
                                          {"DUMP", dump_},
                                          {"DESCRIPTIONS", kDescriptions},
                                          {"STATE", "--state " + folder_.file("state") + " "}}) {
            for (std::size_t at = words.find(name); at != std::string::npos; at = words.find(name))
                words.replace(at, name.size(), value);
        }
        return words;
    }

    testsupport::FileFolder folder_;
    std::string dump_ = folder_.write(
        "mixed.dump", testsupport::fileText(kSample) + "\nf0:00.0 header\n" + rows("86 80") +
                          "f0:01.0 dead\n" + rows("ff ff") + "0001:00:02.0 elsewhere\n" +
                          rows("86 80") + "0001:00:03.0 elsewhere\n" + rows("86 80"));
};

TEST_F(LeftOutOfSample, IsToldOnceByEveryCommandThatLooksAtIt) {
    const std::string expected = "tavctl: left out: 2 functions of other domains, 1 that does not "
                                 "answer (vendor FFFF); of 1 only the header is known\n";
    for (const char* command :
         {"list BUS", "list --json BUS", "draw --format dot BUS", "explain BUS",
          "describe 01:00.0 BUS", "names BUS", "names check BUS", "names preview BUS",
          "names preview --new-dump DUMP DESCRIPTIONS STATE"}) {
        const auto result =
            testsupport::runCommand(TAVCTL_FILE " " + withBus(command) + " 2>&1 >/dev/null");
        EXPECT_EQ(result.output.substr(0, result.output.find('\n') + 1), expected) << command;
        EXPECT_EQ(result.output.find("left out", expected.size()), std::string::npos) << command;
    }
    EXPECT_TRUE(says(runTavctl(withBus("lint DESCRIPTIONS --against DUMP")), 0,
                     "tavctl: left out of " + dump_ + ": 2 functions of other domains, "));
}

TEST_F(LeftOutOfSample, IsInTheJsonOfEveryCommandThatLooksAtIt) {
    const std::string expected =
        R"("leftOut":{"otherDomains":2,"dead":1,"unreadable":0,"headerOnly":1})";
    for (const char* command :
         {"list BUS", "explain BUS", "describe 01:00.0 BUS", "names BUS", "names check BUS",
          "names preview BUS", "lint DESCRIPTIONS --against DUMP"}) {
        const std::string output = outputOf(withBus(std::string(command) + " --json"));
        EXPECT_NE(output.find(expected), std::string::npos) << command << "\n" << output;
    }
}

TEST_F(LeftOutOfSample, NothingIsSaidOfNothing) {
    dump_ = kSample;
    for (const char* command : {"list BUS", "tree BUS", "names BUS", "names preview BUS"}) {
        EXPECT_EQ(runTavctl(withBus(command)).output.find("left out"), std::string::npos)
            << command;
        EXPECT_NE(
            outputOf(withBus(std::string(command) + " --json"))
                .find(R"("leftOut":{"otherDomains":0,"dead":0,"unreadable":0,"headerOnly":0})"),
            std::string::npos)
            << command;
    }
}

TEST_F(LeftOutOfSample, NamesAloneHaveNoBus) {
    EXPECT_EQ(runTavctl(withBus("names --stored --json BUS")).output,
              "{\"version\":1,\"leftOut\":null,\"names\":[]}\n");
}

TEST_F(LeftOutOfSample, ExplainDoesNotClaimToHaveLookedAtOtherDomains) {
    dump_ =
        folder_.write("other.dump", "00:00.0\n" + rows("86 80") + "0001:00:02.0\n" + rows("86 80"));
    const auto result = runTavctl(withBus("explain \"TAV-B3 Switch Box\" BUS"));
    EXPECT_TRUE(says(result, 1,
                     "  No function of this bus has the anchor's identifiers. 1 function of other\n"
                     "  domains is not looked at: the plug-in and its bridge library know domain "
                     "0\n"
                     "  alone.\n"));
}

TEST_F(LeftOutOfSample, ExplainSaysWhatOfAnotherDomainHasTheIdentifiers) {
    const auto moved =
        testsupport::runCommand("sed -E 's/^([0-9a-f]{2}:[0-9a-f]{2}[.])/0002:\\1/' " + kSample);
    dump_ = folder_.write("moved.dump", moved.output);
    const auto result = runTavctl(withBus("explain \"TAV-C1 Adapter Card\" BUS"));
    EXPECT_TRUE(says(result, 1, "are not looked at"));
    EXPECT_TRUE(says(result, 1, "0002:05:01.0 among them has these identifiers."));
    EXPECT_NE(outputOf(withBus("explain \"TAV-C1 Adapter Card\" --json BUS"))
                  .find(R"("elsewhere":["0002:05:01.0"]})"),
              std::string::npos);
}

TEST_F(LeftOutOfSample, AnAddressOfAnotherDomainIsRefusedWithTheReason) {
    const std::string expected = "tavctl: find function (0001:00:02.0): it is of another domain; "
                                 "the plug-in and its bridge library know domain 0 alone\n";
    EXPECT_TRUE(says(runTavctl(withBus("describe 0001:00:02.0 BUS")), 1, expected));
}

// The tree has the functions of other domains, so they are not left out of it.
TEST_F(LeftOutOfSample, TreeShowsOtherDomainsAndSaysThatTheyAreNotSearched) {
    EXPECT_TRUE(says(runTavctl(withBus("tree BUS")), 0,
                     "tavctl: left out: 1 function that does not answer (vendor FFFF); of 1 only "
                     "the header is known\n"));
    EXPECT_TRUE(says(runTavctl(withBus("tree -n 0001:00:02.0 BUS")), 0,
                     "\n-[0001:00]  (the plug-in does not search this domain)\n"
                     " \\-02.0  8086:0000 0000:0000\n"));
    EXPECT_NE(outputOf(withBus("tree --json BUS"))
                  .find(R"({"otherDomains":0,"dead":1,"unreadable":0,"headerOnly":1},"domains":[)"),
              std::string::npos);
}

// As somebody gives a bus that another program prints.
TEST_F(LeftOutOfSample, ABusThatCanBeReadButOnceIsNotReadForThis) {
    const std::string pipe = folder_.file("pipe");
    EXPECT_TRUE(
        says(testsupport::runCommand("mkfifo " + pipe + " && (cat " + kSample + " > " + pipe +
                                     " &) && " TAVCTL_FILE " list --json --dump " + pipe + " " +
                                     kDescriptions + "--state " + folder_.file("state") + " 2>&1"),
             0, R"({"version":1,"leftOut":null,)"));
}

} // namespace

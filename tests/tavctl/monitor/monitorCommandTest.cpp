// The command as it runs: on a recorded bus that is replaced, and where the system tells.
#include "tests/platform/fakeUdevPipe.h"
#include "tests/support/environmentValue.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/monitor/runningMonitor.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using nlohmann::json;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testtavctl::RunningMonitor;

// Two boxes; in the first one a card that has a network card in it, and another network card.
constexpr const char* kPlan = "[Box A]\nModel = TAV-B3 Switch Box\n"
                              "[Box B]\nModel = TAV-B3 Switch Box\n"
                              "[Box C]\nModel = TAV-C1 Adapter Card\nIn = A:2\n"
                              "[Endpoint nic]\nIn = A:1\n"
                              "[Endpoint inner]\nIn = C:LEFT\n"
                              "[Step 1 inner]\nGone = 1\n[Step 1 C]\nGone = 1\n"
                              "[Step 2 nic]\nGone = 1\n"
                              "[Step 3 C]\nGone = 0\n[Step 3 inner]\nGone = 0\n"
                              "[Step 4 B]\nGone = 1\n"
                              "[Step 5 A]\nLink = x1 of x4\n";

class MonitorCommand : public testing::Test {
protected:
    MonitorCommand() {
        fs::create_directories(folder_.path() / "steps");
        fs::create_directories(state_);
        fs::create_directories(temporary_);
        fs::create_directories(descriptions_);
        fs::copy(fs::path(kSampleDescriptions) / "PCI Hardware Descriptions",
                 descriptions_ / "PCI Hardware Descriptions");
        const auto made =
            runTavctl("mock --plan " + folder_.file("plan.ini", kPlan).string() + " --steps " +
                      (folder_.path() / "steps").string() + " " + kDescriptions);
        EXPECT_EQ(made.exitStatus, 0) << made.output;
        takeStep(0);
    }

    // The bus is another one from here on, all at once.
    void takeStep(int step) const {
        const fs::path next = folder_.path() / "next.dump";
        fs::copy_file(folder_.path() / "steps" / ("step-00" + std::to_string(step) + ".dump"), next,
                      fs::copy_options::overwrite_existing);
        fs::rename(next, dump_);
    }

    [[nodiscard]] std::string machine() const {
        return " --pci-ids /dev/null --state " + state_.string() + " --descriptions " +
               descriptions_.string() + " ";
    }
    [[nodiscard]] std::string options() const {
        return "--every 1 --dump " + dump_.string() + machine();
    }

    testsupport::TemporaryFolder folder_;
    const fs::path dump_ = folder_.path() / "bus.dump";
    const fs::path state_ = folder_.path() / "state";
    const fs::path temporary_ = folder_.path() / "temporary";
    const fs::path descriptions_ = folder_.path() / "descriptions";
    const testsupport::EnvironmentValue temporaryFolder_{"TMPDIR", temporary_.string()};
};

TEST_F(MonitorCommand, TellsTheStateAndThenEachStep) {
    RunningMonitor monitor(options());
    EXPECT_THAT(monitor.line("TAV1*"),
                EndsWith("Z  TAV1* (TAV-B3 Switch Box) is there, at 01:00.0"));
    EXPECT_THAT(monitor.line("TAVCard1*"), EndsWith("is there, at 04:00.0, in TAV1* connector 2"));
    EXPECT_THAT(monitor.line("watching"), EndsWith("Z  watching: a look every 1 second"));
    takeStep(1);
    EXPECT_THAT(monitor.line("vanished"),
                EndsWith("TAVCard1* (TAV-C1 Adapter Card) has vanished; it was at 04:00.0, in "
                         "TAV1* connector 2"));
    EXPECT_THAT(monitor.line("moved"), HasSubstr("TAV2* (TAV-B3 Switch Box) has moved from "));
    takeStep(2);
    EXPECT_THAT(monitor.line("pulled"),
                EndsWith("pulled out of TAV1* connector 1: 03:00.0 8086:10d3"));
    takeStep(3);
    EXPECT_THAT(monitor.line("moved"), EndsWith(": bus numbers have changed"));
    EXPECT_THAT(monitor.line("arrived"), HasSubstr("TAVCard1* (TAV-C1 Adapter Card)"));
    takeStep(4);
    EXPECT_THAT(monitor.line("vanished"), HasSubstr("TAV2* (TAV-B3 Switch Box)"));
    takeStep(5);
    EXPECT_THAT(monitor.line("degraded"),
                HasSubstr("the link of TAV1* to the computer is degraded: it runs x1 of x4"));
    takeStep(4);
    EXPECT_THAT(monitor.line("restored"),
                HasSubstr("the link of TAV1* to the computer is restored"));
    monitor.signal(SIGTERM);
    EXPECT_EQ(monitor.end(), 0);
    EXPECT_THAT(monitor.output(), EndsWith("  ended after 7 looks\n"));
    EXPECT_THAT(
        monitor.output(),
        testing::ContainsRegex("tavctl: names with \\* would be given, and are not stored\n"))
        << "once";
    EXPECT_EQ(std::count(monitor.output().begin(), monitor.output().end(), '\n'), 14)
        << monitor.output();
    EXPECT_TRUE(fs::is_empty(temporary_));
    EXPECT_TRUE(fs::is_empty(state_));
}

TEST_F(MonitorCommand, TellsTheSameToPrograms) {
    RunningMonitor monitor("--json " + options());
    const auto event = [&](const std::string& name) {
        return json::parse(monitor.line("\"event\":\"" + name + "\""));
    };
    EXPECT_EQ(event("present").at("device").at("name"), "TAV1");
    const json watching = event("watching");
    EXPECT_EQ(watching.at("woken"), false);
    EXPECT_EQ(watching.at("everySeconds"), 1);
    takeStep(1);
    const json vanished = event("vanished");
    EXPECT_EQ(vanished.at("device").at("name"), "TAVCard1");
    EXPECT_EQ(vanished.at("connector"), json::parse(R"({"name":"TAV1","labels":["2"]})"));
    const json moved = event("moved");
    EXPECT_EQ(moved.at("device").at("name"), moved.at("before").at("name"));
    EXPECT_NE(moved.at("device").at("address"), moved.at("before").at("address"));
    takeStep(2);
    const json pulled = event("pulled");
    EXPECT_EQ(pulled.at("function").at("deviceId"), "10d3");
    EXPECT_EQ(pulled.at("connector").at("labels"), json::parse(R"(["1"])"));
    monitor.signal(SIGINT);
    EXPECT_EQ(monitor.end(), 0);
    std::stringstream lines(monitor.output());
    std::size_t looks = 0;
    for (std::string line; std::getline(lines, line);) {
        const json each = json::parse(line);
        EXPECT_THAT(line, StartsWith(R"({"version":1,"time":"20)"));
        EXPECT_EQ(each.size(), 12U);
        looks = each.at("looks").is_null() ? 0 : each.at("looks").get<std::size_t>();
    }
    EXPECT_EQ(looks, 3U);
}

TEST_F(MonitorCommand, EndsCleanlyWhenItIsAskedTo) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        RunningMonitor monitor(options());
        monitor.line("watching");
        monitor.signal(number);
        EXPECT_EQ(monitor.end(), 0);
        EXPECT_THAT(monitor.output(), EndsWith("  ended after 1 look\n"));
    }
    EXPECT_TRUE(fs::is_empty(temporary_));
}

TEST_F(MonitorCommand, EndsAsOtherCommandsDoWhenNobodyReadsIt) {
    RunningMonitor monitor(options());
    monitor.line("watching");
    monitor.closeOutput();
    EXPECT_EQ(monitor.end(), 128 + SIGPIPE) << "without an event that it had to tell";
    EXPECT_TRUE(fs::is_empty(temporary_));
    const auto head =
        testsupport::runCommand(TAVCTL_FILE " monitor " + options() + " 2>/dev/null | head -n 1");
    EXPECT_EQ(std::count(head.output.begin(), head.output.end(), '\n'), 1) << head.output;
}

TEST_F(MonitorCommand, ABusThatCannotBeReadForAWhileIsToldOnce) {
    RunningMonitor monitor(options());
    monitor.line("watching");
    fs::remove(dump_);
    EXPECT_THAT(monitor.line("cannot"),
                HasSubstr("cannot tell what is there: open bridge session ("));
    std::this_thread::sleep_for(std::chrono::milliseconds(2500)); // it looks again, and again
    takeStep(2);
    EXPECT_THAT(monitor.line("again"), EndsWith("Z  what is there can be told again"));
    EXPECT_THAT(monitor.line("vanished"), HasSubstr("TAVCard1*"));
    monitor.signal(SIGTERM);
    EXPECT_EQ(monitor.end(), 0);
    const std::string& output = monitor.output();
    EXPECT_EQ(output.find("cannot tell"), output.rfind("cannot tell")) << output;
}

TEST_F(MonitorCommand, ADescriptionThatIsBeingEditedIsToldOnce) {
    RunningMonitor monitor(options());
    monitor.line("watching");
    const fs::path folder = descriptions_ / "PCI Hardware Descriptions";
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    const auto box = *std::find_if(files.begin(), files.end(), [](const fs::path& file) {
        return testsupport::fileText(file).find("TAV-C1") != std::string::npos;
    });
    const std::string whole = testsupport::fileText(box);
    const auto write = [&](const std::string& text) {
        std::ofstream(box, std::ios::binary) << text;
    };
    write(whole.substr(0, whole.find("TAV-C1")));
    EXPECT_THAT(monitor.line("cannot"), HasSubstr(box.filename().string()));
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    write(whole);
    monitor.line("can be told again");
    fs::remove(box);
    EXPECT_THAT(monitor.line("TAVCard1"), HasSubstr("has vanished"));
    monitor.signal(SIGTERM);
    EXPECT_EQ(monitor.end(), 0);
    const std::string& output = monitor.output();
    EXPECT_EQ(output.find("cannot tell"), output.rfind("cannot tell")) << output;
    EXPECT_EQ(output.find("vanished"), output.rfind("vanished")) << output;
}

TEST_F(MonitorCommand, StoresNamesOnlyWhenItIsToldTo) {
    const std::string state = "--for 0 --dump " + dump_.string() + machine();
    EXPECT_TRUE(says(runTavctl("monitor " + state), 0, "TAV1* (TAV-B3 Switch Box) is there"));
    EXPECT_TRUE(fs::is_empty(state_));
    EXPECT_TRUE(
        says(runTavctl("monitor --store " + state), 0, "TAV1 (TAV-B3 Switch Box) is there"));
    EXPECT_TRUE(fs::exists(state_ / "zotavpci.ini"));
    takeStep(2);
    EXPECT_TRUE(says(runTavctl("monitor " + state), 0,
                     "TAVCard1 (TAV-C1 Adapter Card) is absent; it stood at MR00:00,00,08,00,08"));
}

TEST_F(MonitorCommand, TellsOfANameThatIsChangedMeanwhile) {
    runTavctl("monitor --store --for 0 --dump " + dump_.string() + machine());
    RunningMonitor monitor(options());
    monitor.line("watching");
    runTavctl("names rename TAV2 TAV7 --dump " + dump_.string() + " --state " + state_.string() +
              " --descriptions " + descriptions_.string());
    EXPECT_THAT(monitor.line("called"), EndsWith("TAV2 (TAV-B3 Switch Box) is called TAV7 now"));
    monitor.signal(SIGTERM);
    EXPECT_EQ(monitor.end(), 0);
}

TEST_F(MonitorCommand, AFirstLookThatFailsFailsAsThatOfOtherCommandsDoes) {
    EXPECT_TRUE(says(runTavctl("monitor --dump /nonexistent" + machine()), 3,
                     "tavctl: open bridge session (/nonexistent): "));
    EXPECT_TRUE(says(runTavctl("monitor --json --dump /nonexistent" + machine()), 3,
                     R"("error":{"operation":"open bridge session")"));
    EXPECT_TRUE(says(runTavctl("monitor --every 0"), 2, "--every"));
}

// Root may write anywhere, and takes the right from himself.
TEST(MonitorFailure, HidesNothingThatWasSaidBefore) {
    const testsupport::TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms(0555));
    const std::string user =
        geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const auto result =
        testsupport::runCommand(user + TAVCTL_FILE " monitor --store --for 0 --dump /nonexistent " +
                                kDescriptions + "--state " + folder.path().string() + " 2>&1");
    EXPECT_TRUE(says(result, 3, "tavctl: nothing is stored (" + folder.path().string() + ": "));
    EXPECT_TRUE(says(result, 3, "tavctl: open bridge session (/nonexistent): "));
}

// The machine's own bus, with a library in the place of the system's.
class MonitorWoken : public MonitorCommand {
protected:
    // Looks are all that can be counted on a bus that is the machine's own.
    std::size_t looksOf(RunningMonitor& monitor) {
        monitor.signal(SIGTERM);
        EXPECT_EQ(monitor.end(), 0) << monitor.output();
        const std::string& output = monitor.output();
        const json last = json::parse(output.substr(output.rfind('\n', output.size() - 2) + 1));
        return last.at("looks").get<std::size_t>();
    }

    static void rest(int milliseconds) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
};

TEST_F(MonitorWoken, LooksOnceForEachBurstAndNeverWithoutOne) {
    testplatform::FakeUdevPipe udev;
    RunningMonitor monitor("--json" + machine());
    const json watching = json::parse(monitor.line("watching"));
    EXPECT_EQ(watching.at("woken"), true);
    EXPECT_TRUE(watching.at("everySeconds").is_null());
    udev.tell("dddd");
    rest(100);
    udev.tell("d");
    rest(1000);
    udev.tell("l"); // some were lost
    rest(1000);
    udev.tell("o"); // something that does not concern PCI
    rest(1000);
    EXPECT_EQ(looksOf(monitor), 3U);
    EXPECT_THAT(udev.log(),
                StartsWith(fs::exists("/run/udev/control") ? "udev\npci\n" : "kernel\npci\n"));
    EXPECT_THAT(udev.log(), EndsWith("given up\n"));
}

TEST_F(MonitorWoken, LooksForItselfWhenTheServiceEnds) {
    testplatform::FakeUdevPipe udev;
    RunningMonitor monitor("--json" + machine());
    monitor.line("watching");
    udev.endService();
    rest(7000);
    EXPECT_EQ(looksOf(monitor), 3U) << "at its end, and five seconds later";
}

TEST_F(MonitorWoken, WithoutALibraryItComparesEveryFewSeconds) {
    static_cast<void>(folder_.file("libudev.so.1", "no library\n"));
    const testsupport::EnvironmentValue library("LD_LIBRARY_PATH", folder_.path().string());
    RunningMonitor monitor("--json" + machine());
    const json watching = json::parse(monitor.line("watching"));
    EXPECT_EQ(watching.at("woken"), false);
    EXPECT_EQ(watching.at("everySeconds"), 5);
    rest(6000);
    EXPECT_EQ(looksOf(monitor), 1U);
}

TEST_F(MonitorWoken, WhereTheLibraryRefusesItComparesToo) {
    const testplatform::FakeUdevPipe udev;
    const testsupport::EnvironmentValue none("FAKE_UDEV_PIPE", std::nullopt);
    EXPECT_TRUE(
        says(runTavctl("monitor --for 0" + machine()), 0, "watching: a look every 5 seconds"));
    EXPECT_THAT(udev.log(), EndsWith("given up\n"));
}

TEST_F(MonitorWoken, NobodyIsListenedToOnARecordedBus) {
    const testplatform::FakeUdevPipe udev;
    RunningMonitor monitor("--json " + options());
    monitor.line("watching");
    udev.tell("dddd");
    rest(1500);
    EXPECT_EQ(looksOf(monitor), 1U);
    EXPECT_EQ(udev.log(), "");
}

TEST_F(MonitorWoken, LooksAsOftenAsItIsToldToAsWell) {
    const testplatform::FakeUdevPipe udev;
    RunningMonitor monitor("--json --every 1" + machine());
    EXPECT_EQ(json::parse(monitor.line("watching")).at("everySeconds"), 1);
    rest(2500);
    const std::size_t looks = looksOf(monitor);
    EXPECT_GE(looks, 2U);
    EXPECT_LE(looks, 3U);
}

} // namespace

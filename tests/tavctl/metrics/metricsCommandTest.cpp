// tavctl metrics as a collector's timer runs it.
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using namespace tavctltest;
using testing::HasSubstr;
using testing::Not;
using testsupport::TemporaryFolder;

// Without what changes from look to look.
std::string metricsOf(const std::string& options) {
    std::istringstream lines(outputOf("metrics " + options));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("tav_last_look_timestamp_seconds ") &&
            !line.starts_with("tav_last_look_duration_seconds "))
            text += line + "\n";
    }
    return text;
}

double metricValueOf(const std::string& text, const std::string& name) {
    const auto at = text.find("\n" + name + " ");
    return at == std::string::npos ? -1 : std::stod(text.substr(at + name.size() + 2));
}

TEST(MetricsCommand, TellsDevicesPortsAndLinks) {
    const std::string text = metricsOf(kDump + kDescriptions);
    for (const char* line :
         {"tav_devices 4\n",
          "tav_names_not_stored 4\n",
          "tav_absent_names 0\n",
          "tav_device_info{name=\"TAV2\",model=\"TAV-B3 Switch Box\",category=\"SwitchboxTav\","
          "segment=\"0000\",bus=\"09\",device=\"00\",function=\"0\"} 1\n",
          "tav_port_occupied{name=\"TAV1\",port=\"1\"} 1\n",
          "tav_port_occupied{name=\"TAV1\",port=\"3\"} 0\n",
          "tav_port_link_max_width_lanes{name=\"TAV3\",port=\"B1\"} 8\n",
          "tav_port_link_max_speed_transfers_per_second{name=\"TAV3\",port=\"B1\"} 8000000000\n",
          "tav_port_link_width_lanes{name=\"TAV1\",port=\"1\"} 1\n",
          "tav_port_link_speed_transfers_per_second{name=\"TAV1\",port=\"1\"} 2500000000\n",
          "tav_link_degraded{name=\"TAV1\",port=\"1\"} 0\n",
          "tav_upstream_link_width_lanes{name=\"TAV3\"} 4\n",
          "tav_upstream_link_possible_width_lanes{name=\"TAV3\"} 8\n",
          "tav_upstream_link_speed_transfers_per_second{name=\"TAV3\"} 5000000000\n",
          "tav_upstream_link_possible_speed_transfers_per_second{name=\"TAV3\"} 8000000000\n",
          "tav_upstream_link_degraded{name=\"TAV3\"} 1\n",
          "tav_connector_function_info{segment=\"0000\",bus=\"06\",device=\"00\",function=\"0\","
          "name=\"TAVCard1\",connector=\"LEFT\","
          "path=\"TAV1 connector 2 > TAVCard1 connector LEFT\"} 1\n",
          "connector=\"B1 B2\",path=\"TAV3 connectors B1 B2\"} 1\n",
          "tav_functions_left_out{reason=\"dead\"} 0\n",
          "tav_last_look_success 1\n"})
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_EQ(metricsOf(kDump + kDescriptions), text) << "in the same order each time";
}

// What list --json tells of ports as null is no metric.
TEST(MetricsCommand, TellsNothingThatIsNotKnown) {
    const auto listed = nlohmann::json::parse(outputOf("list --json " + kDump + kDescriptions));
    const std::string text = metricsOf(kDump + kDescriptions);
    const std::pair<const char*, const char*> members[] = {
        {"occupied", "tav_port_occupied"},
        {"linkWidth", "tav_port_link_max_width_lanes"},
        {"negotiatedWidth", "tav_port_link_width_lanes"},
        {"possibleWidth", "tav_port_link_possible_width_lanes"},
        {"negotiatedSpeed", "tav_port_link_speed_transfers_per_second"},
        {"possibleSpeed", "tav_port_link_possible_speed_transfers_per_second"},
        {"degraded", "tav_link_degraded"}};
    for (const auto& device : listed.at("devices")) {
        for (const auto& port : device.at("ports")) {
            for (const auto& [member, metric] : members) {
                const std::string sample = std::string(metric) + "{name=\"" +
                                           device.at("name").get<std::string>() + "\",port=\"" +
                                           port.at("label").get<std::string>() + "\"} ";
                EXPECT_EQ(text.find(sample) == std::string::npos, port.at(member).is_null())
                    << sample;
            }
        }
    }
}

// The innermost connector of every function on the bus, or of none.
TEST(MetricsCommand, TellsOfEveryFunctionWhereItIsAsWhereDoes) {
    std::map<std::string, std::string> connectors;
    const std::string text = metricsOf(kDump + kDescriptions);
    const std::regex sample("tav_connector_function_info\\{segment=\"(.*)\",bus=\"(.*)\",device="
                            "\"(.*)\",function=\"(.*)\",name=\"(.*)\",connector=\"(.*)\",path=");
    for (std::sregex_iterator at(text.begin(), text.end(), sample), end; at != end; ++at)
        connectors[(*at)[1].str() + ":" + (*at)[2].str() + ":" + (*at)[3].str() + "." +
                   (*at)[4].str()] = (*at)[5].str() + " " + (*at)[6].str();
    std::size_t behind = 0;
    std::ifstream dump(TAV_SOURCE_DIR "/samples/switchboxes.dump");
    const std::regex header("([0-9a-f]{2}:[0-9a-f]{2}\\.[0-7]) .*");
    for (std::string line; std::getline(dump, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, header))
            continue;
        const std::string address = "0000:" + match[1].str();
        const auto answer = nlohmann::json::parse(
            outputOf("where --json " + address + " " + kDump + kDescriptions));
        const auto& way = answer.at("found").at(0).at("way");
        std::string expected;
        if (!way.empty()) {
            expected = way.back().at("name").get<std::string>();
            for (const auto& label : way.back().at("labels"))
                expected += " " + label.get<std::string>();
            ++behind;
        }
        EXPECT_EQ(connectors[address], expected) << address;
    }
    EXPECT_EQ(behind, 8U);
}

TEST(MetricsCommand, TellsAbsentNamesWithTheirPlace) {
    const TemporaryFolder folder;
    const std::string state = "--state " + folder.path().string() + " ";
    ASSERT_EQ(runTavctl("list " + kDump + kDescriptions + state).exitStatus, 0);
    EXPECT_THAT(metricsOf(kDump + kDescriptions + state), HasSubstr("\ntav_names_not_stored 0\n"));
    const std::string empty = folder.file("empty.dump", "").string();
    const std::string text = metricsOf("--dump " + empty + " " + kDescriptions + state);
    EXPECT_THAT(text, HasSubstr("\ntav_devices 0\n"));
    EXPECT_THAT(text, HasSubstr("\ntav_absent_names 4\n"));
    EXPECT_THAT(text, HasSubstr("\ntav_name_absent_info{name=\"TAV1\",model=\"TAV-B3 Switch Box\","
                                "place=\"\"} 1\n"));
    std::string dump = testsupport::fileText(TAV_SOURCE_DIR "/samples/switchboxes.dump");
    const auto card = dump.find("\n04:00.0 ");
    ASSERT_NE(card, std::string::npos);
    dump.erase(card, dump.find("\n09:00.0 ") - card);
    const std::string without = folder.file("without.dump", dump).string();
    EXPECT_THAT(metricsOf("--dump " + without + " " + kDescriptions + state),
                HasSubstr("\ntav_name_absent_info{name=\"TAVCard1\",model=\"TAV-C1 Adapter "
                          "Card\",place=\"TAV1 connector 2\"} 1\n"));
}

TEST(MetricsCommand, StoresNamesOnDemandOnly) {
    const TemporaryFolder folder;
    const std::string state = "--state " + folder.path().string() + " ";
    EXPECT_THAT(metricsOf(kDump + kDescriptions + state), HasSubstr("\ntav_names_not_stored 4\n"));
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_THAT(metricsOf("--store " + kDump + kDescriptions + state),
                HasSubstr("\ntav_names_not_stored 0\n"));
    EXPECT_TRUE(says(runTavctl("list --json " + kDump + kDescriptions + state), 0,
                     R"("name":"TAV1","model":"TAV-B3 Switch Box")"));
    EXPECT_TRUE(fs::exists(folder.path() / "zotavpci.ini"));
}

// Root may write anywhere, and takes the right from himself.
TEST(MetricsCommand, LooksWithoutStoringWhereNothingCanBeStored) {
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms(0555));
    const std::string user =
        geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const std::string sample = TAV_SOURCE_DIR "/samples/switchboxes.dump";
    for (const std::string& bus : {kDump, "--dump - <" + sample + " "}) {
        const auto result =
            testsupport::runCommand(user + TAVCTL_FILE " metrics --store " + bus + kDescriptions +
                                    "--state " + folder.path().string() + " 2>&1");
        EXPECT_TRUE(says(result, 0, "tavctl: nothing is stored (" + folder.path().string() + ": "));
        EXPECT_TRUE(says(result, 0, "\ntav_devices 4\n"));
        EXPECT_TRUE(says(result, 0, "\ntav_last_look_success 1\n"));
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
    fs::permissions(folder.path(), fs::perms(0755));
}

TEST(MetricsCommand, TellsWhenItLookedAndHowLong) {
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    };
    const double before = now() - 0.001;
    const std::string text = outputOf("metrics " + kDump + kDescriptions);
    EXPECT_GE(metricValueOf(text, "tav_last_look_timestamp_seconds"), before);
    EXPECT_LE(metricValueOf(text, "tav_last_look_timestamp_seconds"), now() + 0.001);
    EXPECT_GE(metricValueOf(text, "tav_last_look_duration_seconds"), 0);
    EXPECT_LE(metricValueOf(text, "tav_last_look_duration_seconds"), now() - before + 0.001);
}

TEST(MetricsCommand, ALookThatFailsIsTold) {
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "tav.prom").string();
    const std::string machine =
        "--dump " + (folder.path() / "none.dump").string() + " " + kDescriptions + "-o " + file;
    const auto result = runTavctl("metrics " + machine);
    EXPECT_TRUE(says(result, 3, "tavctl: "));
    EXPECT_TRUE(says(result, 3, "none.dump"));
    EXPECT_THAT(testsupport::fileText(file), HasSubstr("\ntav_last_look_success 0\n"));
    EXPECT_THAT(testsupport::fileText(file), Not(HasSubstr("tav_device")));
    EXPECT_THAT(outputOf("metrics --openmetrics --dump /nonexistent " + kDescriptions),
                HasSubstr("\ntav_last_look_success 0\n"));
}

TEST(MetricsCommand, WritesAWholeFileThatEverybodyReads) {
    const TemporaryFolder folder;
    const fs::path file = folder.file("tav.prom", "old");
    fs::permissions(file, fs::perms::owner_read);
    const auto result = testsupport::runCommand("umask 077 && " TAVCTL_FILE " metrics " + kDump +
                                                kDescriptions + "-o " + file.string() + " 2>&1");
    EXPECT_TRUE(says(result, 0, ""));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0644));
    EXPECT_THAT(testsupport::fileText(file), HasSubstr("tav_devices 4\n"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
    EXPECT_TRUE(says(runTavctl("metrics " + kDump + kDescriptions + "-o " +
                               (folder.path() / "none" / "x").string()),
                     3, "tavctl: write result ("));
}

TEST(MetricsCommand, LeavesTheFileOfBeforeWhereAnotherFindsNoRoom) {
    const TemporaryFolder folder;
    const fs::path file = folder.file("tav.prom", "tav_devices 7\n");
    const auto result = testsupport::runCommand("ulimit -f 1; " TAVCTL_FILE " metrics " + kDump +
                                                kDescriptions + "-o " + file.string() + " 2>&1");
    EXPECT_TRUE(says(result, 3, "write result (" + file.string() + "): File too large"));
    EXPECT_EQ(testsupport::fileText(file), "tav_devices 7\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

// A collector reads whenever it likes.
TEST(MetricsCommand, NeverShowsAHalfFile) {
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "tav.prom").string();
    const std::string once = TAVCTL_FILE " metrics " + kDump + kDescriptions + "-o " + file;
    ASSERT_EQ(testsupport::runCommand(once).exitStatus, 0);
    const auto lines = [&] {
        const std::string text = testsupport::fileText(file);
        return std::count(text.begin(), text.end(), '\n');
    };
    const auto whole = lines();
    auto writer = std::async(std::launch::async, [&] {
        return testsupport::runCommand("for i in 1 2 3 4 5 6 7 8 9 10; do " + once +
                                       " || exit 1; done");
    });
    std::size_t reads = 0;
    while (writer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        EXPECT_EQ(lines(), whole);
        ++reads;
    }
    EXPECT_EQ(writer.get().exitStatus, 0);
    EXPECT_GT(reads, 10U);
}

TEST(MetricsCommand, ReadsStandardInput) {
    const auto result = testsupport::runCommand(TAVCTL_FILE " metrics --dump - " + kDescriptions +
                                                " <" TAV_SOURCE_DIR "/samples/switchboxes.dump");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.output, HasSubstr("\ntav_link_degraded{name=\"TAV1\",port=\"1\"} 0\n"));
}

} // namespace

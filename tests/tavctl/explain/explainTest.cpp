// What explain says agrees with what the plug-in lists, its reasons stand in the order in which the
// plug-in tests, and the changes that it proposes do what they promise.
#include "tests/support/effort.h"
#include "tests/support/fileFolder.h"
#include "tests/support/fileText.h"
#include "tests/tavctl/documents/guide.h"
#include "tests/tavctl/explain/descriptionMutations.h"
#include "tests/tavctl/explain/randomMachine.h"
#include "tests/tavctl/runTavctl.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tavctltest::runTavctlForOutput;

// The answer, behind what is said beside it.
std::string lastLine(const std::string& output) {
    const std::size_t end = output.empty() ? 0 : output.rfind('\n', output.size() - 2);
    return end == std::string::npos ? output : output.substr(end + 1);
}
using testsupport::FileFolder;

std::string inQuotes(const fs::path& path) {
    return "'" + path.string() + "'";
}

// Model and address of each device, in a fixed order.
using Devices = std::multiset<std::string>;

constexpr std::size_t kDomain = 5; // of "0000:" before an address

// A dump and a folder of descriptions.
struct Machine {
    fs::path dump;
    fs::path descriptions;

    [[nodiscard]] std::string options() const {
        return " --json --dump " + inQuotes(dump) + " --descriptions " + inQuotes(descriptions);
    }

    // Nothing when the plug-in cannot be initialised.
    [[nodiscard]] std::optional<Devices> listed() const {
        const FileFolder state;
        const auto result =
            runTavctlForOutput("list" + options() + " --state " + inQuotes(state.file("")));
        if (result.exitStatus != 0)
            return std::nullopt;
        Devices devices;
        const json whole = json::parse(lastLine(result.output));
        for (const json& each : whole.at("devices")) {
            devices.insert(each.at("model").get<std::string>() + " " +
                           each.at("address").get<std::string>().substr(kDomain));
        }
        return devices;
    }

    [[nodiscard]] json explained(const std::string& model = {}) const {
        const auto result =
            runTavctlForOutput("explain" + options() + (model.empty() ? "" : " '" + model + "'"));
        const json whole = json::parse(lastLine(result.output), nullptr, false);
        if (whole.is_discarded())
            throw std::runtime_error("explain printed " + result.output);
        return whole;
    }
};

Devices listedBy(const json& explanation) {
    Devices devices;
    for (const json& model : explanation.at("models")) {
        std::size_t count = 0;
        for (const json& candidate : model.at("candidates")) {
            const bool failed =
                std::any_of(candidate.at("steps").begin(), candidate.at("steps").end(),
                            [](const json& step) { return step.at("result") == "failed"; });
            if (candidate.at("outcome") == "listed") {
                EXPECT_FALSE(failed) << candidate;
                devices.insert(model.at("model").get<std::string>() + " " +
                               candidate.at("reported").get<std::string>().substr(kDomain));
                ++count;
            } else if (candidate.at("outcome") == "rejected") {
                EXPECT_TRUE(failed) << "no reason is given: " << model;
                EXPECT_EQ(candidate.at("steps").back().at("result"), "failed")
                    << "something was tested after the first failure: " << candidate;
            }
        }
        EXPECT_EQ(model.at("listed"), count);
    }
    return devices;
}

TEST(Explain, AgreesWithThePluginOnEveryWholeSystemCase) {
    std::size_t cases = 0;
    for (const auto& entry :
         fs::directory_iterator(fs::path(TAV_SOURCE_DIR) / "tests" / "system" / "cases")) {
        const auto part = [&](const char* name, const char* link) {
            if (fs::exists(entry.path() / name))
                return entry.path() / name;
            std::string target = testsupport::fileText(entry.path() / link);
            target.erase(target.find_last_not_of('\n') + 1);
            return fs::path(TAV_SOURCE_DIR) / target;
        };
        const Machine machine{part("bus.dump", "bus.path"),
                              part("descriptions", "descriptions.path")};
        ++cases;
        const auto listed = machine.listed();
        const auto result = runTavctlForOutput("explain" + machine.options());
        if (!listed || !fs::exists(machine.descriptions / "PCI Hardware Descriptions")) {
            EXPECT_EQ(result.exitStatus, 3) << entry.path() << result.output;
            EXPECT_TRUE(json::parse(lastLine(result.output)).contains("error"));
            continue;
        }
        EXPECT_EQ(result.exitStatus, 0) << entry.path() << result.output;
        EXPECT_EQ(listedBy(json::parse(lastLine(result.output))), *listed) << entry.path();
    }
    EXPECT_GT(cases, 15U);
}

struct ExplainTally {
    std::size_t listed = 0;
    std::size_t rejected = 0;
    std::size_t changes = 0;
};

TEST(Explain, SendsWhoeverCannotLoadToLint) {
    const FileFolder folder;
    fs::create_directory(folder.file("PCI Hardware Descriptions"));
    folder.write("PCI Hardware Descriptions/box.ini", "[UpstreamTAV]\nModel = Box\n");
    const Machine machine{TAV_SOURCE_DIR "/samples/switchboxes.dump", folder.file("")};
    const auto result = runTavctlForOutput("explain" + machine.options());
    EXPECT_EQ(result.exitStatus, 3);
    const json error = json::parse(lastLine(result.output)).at("error");
    EXPECT_EQ(error.at("operation"), "load description");
    EXPECT_EQ(error.at("status"), -313322);
    EXPECT_EQ(error.at("object"), folder.file("PCI Hardware Descriptions/box.ini:1:2"));
    EXPECT_EQ(error.at("reason"), "[UpstreamTAV] has no key DeviceCategory; expected "
                                  "DeviceCategory, spelled exactly so");
    EXPECT_EQ(error.at("see"), "tavctl lint");
}

TEST(Explain, ModelThatIsNotListedOrNotDescribedExitsWithOne) {
    const std::string sample = " --dump " TAV_SOURCE_DIR "/samples/switchboxes.dump";
    const std::string descriptions = " --descriptions " TAV_SOURCE_DIR "/descriptions";
    EXPECT_EQ(runTavctlForOutput("explain 'TAV-B3 Switch Box'" + sample + descriptions).exitStatus,
              0);
    const FileFolder folder;
    const std::string nothing = " --dump " + folder.write("empty.dump", "");
    EXPECT_EQ(runTavctlForOutput("explain 'TAV-B3 Switch Box'" + nothing + descriptions).exitStatus,
              1);
    EXPECT_EQ(runTavctlForOutput("explain" + nothing + descriptions).exitStatus, 0);
    const auto unknown = runTavctlForOutput("explain 'TAV-B3 Switchbox'" + sample + descriptions);
    EXPECT_EQ(unknown.exitStatus, 1);
    EXPECT_NE(unknown.output.find("did you mean \"TAV-B3 Switch Box\"?"), std::string::npos)
        << unknown.output;
}

TEST(Explain, NamesOtherIdentifiersWhenNothingHasTheAnchors) {
    const std::string cases = TAV_SOURCE_DIR "/tests/system/cases/nothing-described";
    const Machine machine{TAV_SOURCE_DIR "/samples/switchboxes.dump", cases + "/descriptions"};
    const json whole = machine.explained();
    const json& model = whole.at("models").at(0);
    EXPECT_TRUE(model.at("candidates").empty());
    const json& near = model.at("near").at(0);
    EXPECT_EQ(near.at("address"), "0000:01:00.0");
    ASSERT_EQ(near.at("changes").size(), 1U);
    EXPECT_EQ(near.at("changes").at(0).at("section"), "Anchor");
    EXPECT_EQ(near.at("changes").at(0).at("key"), "Pid");
    EXPECT_EQ(near.at("changes").at(0).at("value"), "8232");
}

TEST(Explain, AnchorOnARootBusHasNoBridgeAboveIt) {
    const std::string folder = TAV_SOURCE_DIR "/tests/system/cases/endpoint-on-root-bus";
    const Machine machine{TAV_SOURCE_DIR "/samples/switchboxes.dump", folder + "/descriptions"};
    const json whole = machine.explained();
    const json& step = whole.at("models").at(0).at("candidates").at(0).at("steps").at(0);
    EXPECT_EQ(step.at("result"), "failed");
    EXPECT_EQ(step.at("condition"), "a bridge stands above it");
    EXPECT_EQ(step.at("found"), "none, since bus 00 is a root bus");
}

using testsupport::BusBuilder;

constexpr testsupport::Ids kRootIds{0x8086, 0x1901};
constexpr testsupport::Ids kUpIds{0x104C, 0x8232};
constexpr testsupport::Ids kPortIds{0x104C, 0x8233};

// Counts how often a file is opened.
class Openings {
public:
    explicit Openings(const fs::path& file) : queue_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        // Equal events in a row are put together into one; a closing keeps two openings apart.
        if (inotify_add_watch(queue_, file.c_str(), IN_OPEN | IN_CLOSE) < 0)
            throw std::runtime_error("cannot watch " + file.string());
    }
    ~Openings() { close(queue_); }
    Openings(const Openings&) = delete;
    Openings& operator=(const Openings&) = delete;

    // Since the last time.
    [[nodiscard]] std::size_t count() const {
        std::size_t openings = 0;
        inotify_event event{};
        while (read(queue_, &event, sizeof event) == sizeof event)
            openings += (event.mask & IN_OPEN) != 0 ? 1U : 0U;
        return openings;
    }

private:
    int queue_;
};

// A machine made for one description.
class Described {
public:
    Described(const BusBuilder& bus, const std::string& text) {
        folder_.write("bus.dump", bus.dump());
        fs::create_directory(folder_.file("PCI Hardware Descriptions"));
        folder_.write("PCI Hardware Descriptions/box.ini", text);
    }

    [[nodiscard]] Machine machine() const { return {folder_.file("bus.dump"), folder_.file("")}; }
    [[nodiscard]] std::string asText() const {
        return runTavctlForOutput("explain --dump " + inQuotes(machine().dump) +
                                  " --descriptions " + inQuotes(machine().descriptions))
            .output;
    }
    // Of the only model, which must be explained as it is listed.
    [[nodiscard]] json model() const {
        const json whole = machine().explained();
        EXPECT_EQ(listedBy(whole), machine().listed().value()) << whole;
        return whole.at("models").at(0);
    }

private:
    FileFolder folder_;
};

const json& lastStep(const json& model) {
    return model.at("candidates").at(0).at("steps").back();
}

// A box with the upstream port for its anchor and one connector at `map`.
std::string boxAt(const std::string& anchorPid, const std::string& map) {
    return "[UpstreamTAV]\nModel = Box\nDeviceCategory = SwitchboxTav\n"
           "InternalBridges = \"\"\nConnectorLabels = HOST,A\nDownstreamPorts = 1\n"
           "HasUpstreamPort = 1\n"
           "[Anchor]\nPciHeaderType = 1\nVid = 104C\nPid = " +
           anchorPid +
           "\nSsVid = 0\nSsPid = 0\n"
           "[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = \"\"\n"
           "[DownstreamPort1]\nVid = 104C\nPid = 8233\nSsVid = 0\nSsPid = 0\n"
           "TraversalMapFromAnchor = " +
           map + "\n";
}

// A card that has no connectors; `alternate` is a second device that it may be.
std::string cardOr(const std::string& alternate) {
    return "[UpstreamTAV]\nModel = Card\nDeviceCategory = PCI\nInternalBridges = \"\"\n"
           "ConnectorLabels = \"\"\nDownstreamPorts = \"\"\nHasUpstreamPort = 0\n"
           "[Anchor]\nAlternateAnchors = Other\nPciHeaderType = 0\nVid = 1172\nPid = E001\n"
           "SsVid = 0\nSsPid = 0\n"
           "[AlternateAnchorOther]\nPciHeaderType = 0\nVid = 1172\nPid = " +
           alternate + "\nSsVid = 0\nSsPid = 0\n";
}

// The box, and a card that has nearly the identifiers of the box but none of its bridges.
BusBuilder boxAndCard() {
    BusBuilder bus;
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, kUpIds);
    bus.bridge(up, 0, 0, kPortIds);
    bus.endpoint(bus.rootPort(0, 2, 0, kRootIds), 0, 0, {0x104C, 0x8231, 0x1234, 0x0001});
    return bus;
}

TEST(Explain, ShowsTheNearFunctionsThatWouldBeListedAndTheirChanges) {
    const std::string text = Described(boxAndCard(), boxAt("8231", "d0f0")).asText();
    EXPECT_NE(text.find("  No function of this bus has the anchor's identifiers.\n"
                        "  Nearly the anchor's identifiers:\n"
                        "    01:00.0  104C:8232"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find(", a bridge\n      change: [Anchor] Pid = 8232\n"), std::string::npos)
        << text;
    EXPECT_EQ(text.find("1234:0001"), std::string::npos) << text;
}

TEST(Explain, ShowsNearFunctionsThatWouldNotBeListedForWantOfBetterOnes) {
    const std::string text = Described(boxAndCard(), boxAt("8231", "d9f0")).asText();
    EXPECT_NE(text.find("01:00.0  104C:8232"), std::string::npos) << text;
    EXPECT_NE(text.find("1234:0001, no bridge; not listed with these\n             either\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("change:"), std::string::npos) << text;
}

// A description with these identifiers for the anchor, of a box that has 104C:8232 with the
// subsystem 1234:0007.
json nearestBy(const std::string& vendor, const std::string& device, const std::string& subVendor,
               const std::string& subsystem) {
    BusBuilder bus;
    // One that has more of the identifiers than the box.
    bus.endpoint(bus.rootPort(0, 1, 0, kRootIds), 0, 0, {0x104C, 0x3282, 0x1234, 0x0700});
    const auto up =
        bus.bridge(bus.rootPort(0, 2, 0, kRootIds), 0, 0, {0x104C, 0x8232, 0x1234, 0x0007});
    bus.bridge(up, 0, 0, kPortIds);
    std::string text = boxAt(device, "d0f0");
    const std::string written = "SsVid = 0\nSsPid = 0\n";
    text.replace(text.find("Vid = 104C"), 10, "Vid = " + vendor);
    text.replace(text.find(written), written.size(),
                 "SsVid = " + subVendor + "\nSsPid = " + subsystem + "\n");
    return Described(bus, text).model().at("near").at(0);
}

std::string changesOf(const json& near) {
    std::string text;
    for (const json& change : near.at("changes"))
        text +=
            change.at("key").get<std::string>() + "=" + change.at("value").get<std::string>() + " ";
    return text;
}

TEST(Explain, RecognisesIdentifiersThatWereExchanged) {
    const json devices = nearestBy("8232", "104C", "1234", "0007");
    EXPECT_EQ(devices.at("address"), "0000:02:00.0");
    EXPECT_EQ(devices.at("slip"), "Vid and Pid are exchanged");
    EXPECT_EQ(changesOf(devices), "Vid=104C Pid=8232 ");
    const json subsystems = nearestBy("104C", "8232", "0007", "1234");
    EXPECT_EQ(subsystems.at("slip"), "SsVid and SsPid are exchanged");
    EXPECT_EQ(changesOf(subsystems), "SsVid=1234 SsPid=0007 ");
    const json all = nearestBy("8232", "104C", "0007", "1234");
    EXPECT_EQ(all.at("slip"), "Vid and Pid are exchanged and SsVid and SsPid are exchanged");
    EXPECT_EQ(changesOf(all), "Vid=104C Pid=8232 SsVid=1234 SsPid=0007 ");
}

TEST(Explain, RecognisesNumbersWhoseBytesWereExchanged) {
    const json device = nearestBy("104C", "3282", "1234", "0007");
    EXPECT_EQ(device.at("address"), "0000:02:00.0");
    EXPECT_EQ(device.at("slip"), "the bytes of Pid are exchanged");
    EXPECT_EQ(changesOf(device), "Pid=8232 ");
    const json all = nearestBy("4C10", "3282", "3412", "0700");
    EXPECT_EQ(all.at("slip"),
              "the bytes of Vid and Pid are exchanged and the bytes of SsVid and SsPid are "
              "exchanged");
    EXPECT_EQ(changesOf(all), "Vid=104C Pid=8232 SsVid=1234 SsPid=0007 ");
    const json vendor = nearestBy("4C10", "8232", "1234", "0007");
    EXPECT_EQ(vendor.at("slip"), "the bytes of Vid are exchanged");
}

TEST(Explain, SlipThatDoesNotExplainTheNumbersIsNone) {
    const json other = nearestBy("104C", "8299", "1234", "0007");
    EXPECT_EQ(other.at("address"), "0000:02:00.0");
    EXPECT_TRUE(other.at("slip").is_null());
    EXPECT_TRUE(nearestBy("104C", "8232", "3412", "0008").at("slip").is_null());
}

// Of many that share vendor and device, the few that share more are looked at and shown.
TEST(Explain, NearestFunctionsAreShownAndNoMoreThanAFew) {
    BusBuilder bus;
    for (unsigned i = 0; i < 20; ++i)
        bus.rootEndpoint(0, i, 0, {0x104C, 0x8232, 0x5678, 0x0001});
    const auto up =
        bus.bridge(bus.rootPort(0, 30, 0, kRootIds), 0, 0, {0x104C, 0x8232, 0x1234, 0x0007});
    bus.bridge(up, 0, 0, kPortIds);
    std::string text = boxAt("8232", "d9f0");
    const std::string written = "SsVid = 0\nSsPid = 0\n";
    text.replace(text.find(written), written.size(), "SsVid = 1234\nSsPid = 0008\n");
    const json model = Described(bus, text).model();
    ASSERT_EQ(model.at("near").size(), 5U);
    EXPECT_EQ(model.at("near").at(0).at("address"), "0000:01:00.0");
    EXPECT_EQ(Described(boxAndCard(), boxAt("8231", "d0f0")).model().at("near").size(), 3U);
}

TEST(Explain, ShowsTheSlipBesideTheFunctionThatWasMeant) {
    std::string text = boxAt("104C", "d0f0");
    text.replace(text.find("Vid = 104C"), 10, "Vid = 8232");
    const std::string told = Described(boxAndCard(), text).asText();
    EXPECT_NE(
        told.find(
            "    01:00.0  104C:8232 subsystem 0000:0000, a bridge; Vid and Pid are exchanged\n"
            "      change: [Anchor] Vid = 104C\n"),
        std::string::npos)
        << told;
}

// A port that is counted, with exchanged identifiers in its section.
TEST(Explain, RecognisesExchangedIdentifiersOfADescribedBridge) {
    BusBuilder bus;
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, {0x8232, 0x104C});
    bus.bridge(up, 0, 0, kUpIds);
    std::string text = boxAt("8232", "d0f0");
    const std::string written = "Vid = 104C\nPid = 8232";
    text.replace(text.find(written), written.size(), "Vid = 8232\nPid = 104C");
    text.replace(text.find("Vid = 104C\nPid = 8233"), 21, "Vid = 8232\nPid = 104C");
    const json change = Described(bus, text).model().at("candidates").at(0).at("changes").at(0);
    EXPECT_EQ(change.at("section"), "DownstreamPort1");
    EXPECT_EQ(change.at("value"), "104C, 8232, 0000, 0000");
    EXPECT_EQ(change.at("reason"), "the identifiers of 02:00.0 (Vid and Pid are exchanged), in "
                                   "place of IDsSameAs if that is there");
}

// Two boxes of one model, the ports of the first one as given, the second one whole.
BusBuilder twoBoxes(bool firstIsWhole, bool secondIsWhole) {
    BusBuilder bus;
    unsigned root = 1;
    for (const bool isWhole : {firstIsWhole, secondIsWhole}) {
        const auto up = bus.bridge(bus.rootPort(0, root++, 0, kRootIds), 0, 0, kUpIds);
        if (isWhole)
            bus.bridge(up, 0, 0, kPortIds);
    }
    return bus;
}

bool proposesLabels(const json& candidate) {
    return std::any_of(candidate.at("changes").begin(), candidate.at("changes").end(),
                       [](const json& change) { return change.at("key") == "ConnectorLabels"; });
}

TEST(Explain, LabelsThatAnotherBoxIsListedWithAreNotToBeChanged) {
    const json model = Described(twoBoxes(true, false), boxAt("8232", "d0f0")).model();
    const json& candidate = model.at("candidates").at(1);
    EXPECT_EQ(candidate.at("outcome"), "rejected");
    EXPECT_FALSE(proposesLabels(candidate)) << candidate;
    EXPECT_EQ(candidate.at("hint"),
              "01:00.0 is a box of this model that comes out even with these labels, so no others "
              "are proposed: look for what is missing here");
}

// The failure of the first one ends the model's turn, so that the second one is not listed either.
TEST(Explain, LabelsThatAnotherBoxWouldBeListedWithAreNotToBeChanged) {
    const Described described(twoBoxes(false, true), boxAt("8232", "d0f0"));
    const json model = described.model();
    const json& candidate = model.at("candidates").at(0);
    EXPECT_EQ(candidate.at("address"), "0000:01:00.0");
    EXPECT_FALSE(proposesLabels(candidate)) << candidate;
    EXPECT_NE(described.asText().find("      hint: 03:00.0 is a box of this model that comes out "),
              std::string::npos)
        << described.asText();
}

TEST(Explain, LabelsThatNoBoxIsListedWithMayBeChanged) {
    const json model = Described(twoBoxes(false, false), boxAt("8232", "d0f0")).model();
    const json& candidate = model.at("candidates").at(0);
    EXPECT_TRUE(proposesLabels(candidate)) << candidate;
    EXPECT_TRUE(candidate.at("hint").is_null());
}

std::string explainedByHeaders(const std::string& description) {
    BusBuilder bus;
    bus.bridge(bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, {0x104C, 0x8232, 0x1234, 0x0007}),
               0, 0, kPortIds);
    const FileFolder folder;
    fs::create_directory(folder.file("PCI Hardware Descriptions"));
    folder.write("PCI Hardware Descriptions/box.ini", description);
    const std::string dump =
        folder.write("bus.dump", bus.dump({.bytes = testsupport::kHeaderBytes}));
    return tavctltest::outputOf("explain --dump " + dump + " --descriptions " + folder.file(""));
}

TEST(Explain, SaysWhatARecordingOfTheHeadersAloneDoesNotShow) {
    std::string text = boxAt("8232", "d0f0");
    const std::string head = "  Of 3 functions this recording has 64 bytes alone. Bridges among "
                             "them show no\n  ";
    EXPECT_EQ(explainedByHeaders(text).find("64 bytes"), std::string::npos);
    const std::string written = "SsVid = 0\nSsPid = 0\n";
    text.replace(text.find(written), written.size(), "SsVid = 1234\nSsPid = 0007\n");
    std::string told = explainedByHeaders(text);
    EXPECT_NE(told.find(head + "subsystem identifiers, which this description goes by: record the "
                               "bus with\n  tavctl record, or with 256 bytes of each function.\n"),
              std::string::npos)
        << told;
    text.replace(text.find("HasUpstreamPort"), 0, "LinkWidthPerLabel = 4\n");
    told = explainedByHeaders(text);
    EXPECT_NE(told.find(head + "subsystem identifiers and no link widths, which"),
              std::string::npos)
        << told;
    text.replace(text.find("SsVid = 1234\nSsPid = 0007\n"), 26, written);
    told = explainedByHeaders(text);
    EXPECT_NE(told.find(head + "link widths, which this description goes by"), std::string::npos)
        << told;
}

// Boxes whose ports have the anchor's identifiers, so that the search looks for each: the first has
// none, the second one a bridge of another kind, the third one port, the fourth both.
BusBuilder boxesEverNearer() {
    BusBuilder bus;
    const auto box = [&](unsigned number) {
        return bus.bridge(bus.rootPort(0, number, 0, kRootIds), 0, 0, kUpIds);
    };
    box(1);
    bus.bridge(box(2), 0, 0, kPortIds);
    bus.bridge(box(3), 0, 0, kUpIds);
    const auto whole = box(4);
    bus.bridge(whole, 0, 0, kUpIds);
    bus.bridge(whole, 1, 0, kUpIds);
    return bus;
}

std::string boxOfAlikePorts() {
    std::string text = boxAt("8232", "d0f0");
    text.replace(text.find("HOST,A"), 6, "HOST,A,B");
    text.replace(text.find("DownstreamPorts = 1"), 19, "DownstreamPorts = 1,2");
    text.replace(text.find("Pid = 8233"), 10, "Pid = 8232");
    return text + "[DownstreamPort2]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = d1f0\n";
}

TEST(Explain, NearestMissComesFirst) {
    const Described described(boxesEverNearer(), boxOfAlikePorts());
    const json model = described.model();
    std::string addresses;
    std::size_t before = std::string::npos;
    for (const json& candidate : model.at("candidates")) {
        addresses += candidate.at("address").get<std::string>().substr(kDomain) + " " +
                     candidate.at("outcome").get<std::string>() + "\n";
        if (candidate.at("outcome") != "rejected")
            continue;
        std::size_t met = 0;
        for (const json& step : candidate.at("steps"))
            met += step.at("result") == "met" ? 1U : 0U;
        EXPECT_LE(met, before) << candidate;
        before = met;
    }
    // What came equally near stands as on the bus, ports that are tried for boxes included.
    EXPECT_EQ(addresses, "09:00.0 listed\n"
                         "06:00.0 rejected\n"
                         "01:00.0 rejected\n"
                         "03:00.0 rejected\n"
                         "07:00.0 rejected\n"
                         "0a:00.0 partOfOther\n"
                         "0a:01.0 partOfOther\n");
}

TEST(Explain, SaysWhereTheCandidateIsAllThatWasFound) {
    const auto found = [](testsupport::Ids first, testsupport::Ids second) {
        BusBuilder bus;
        const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, kUpIds);
        bus.bridge(up, 0, 0, first);
        bus.bridge(up, 1, 0, second);
        const json model = Described(bus, boxOfAlikePorts()).model();
        EXPECT_EQ(lastStep(model).at("expected"), "3 bridges");
        return lastStep(model).at("found");
    };
    EXPECT_EQ(found(kPortIds, kPortIds), "1 bridge, the candidate itself");
    EXPECT_EQ(found(kUpIds, kPortIds), "2 bridges");
}

// An answer is to come at once, however many boxes fail alike.
TEST(Explain, ChangesAreLookedForAtTheNearestFew) {
    BusBuilder bus;
    for (unsigned number = 1; number <= 6; ++number)
        bus.bridge(bus.bridge(bus.rootPort(0, number, 0, kRootIds), 0, 0, kUpIds), 0, 0, kUpIds);
    std::string text = boxAt("8232", "d9f0");
    text.replace(text.find("Pid = 8233"), 10, "Pid = 8232");
    const json model = Described(bus, text).model();
    const json& candidates = model.at("candidates");
    // Every other candidate is a port, for which there is no change.
    for (const std::size_t box : {0U, 2U, 4U, 6U, 8U, 10U})
        EXPECT_EQ(candidates.at(box).at("changes").empty(), box >= 4) << candidates.at(box);
}

// Of many models the conditions of one candidate are told: those of the one that came nearest.
TEST(Explain, ConditionsOfTheNearestMissAreTold) {
    std::string text = boxOfAlikePorts();
    text.replace(text.rfind("d1f0"), 4, "d9f0");
    const Described described(boxesEverNearer(), text);
    const FileFolder other;
    fs::create_directory(other.file("PCI Hardware Descriptions"));
    other.write("PCI Hardware Descriptions/a.ini", text);
    text.replace(text.find("Model = Box"), 11, "Model = Bin");
    other.write("PCI Hardware Descriptions/b.ini", text);
    const std::string told =
        tavctltest::outputOf("explain --dump " + described.machine().dump.string() +
                             " --descriptions " + other.file(""));
    EXPECT_NE(told.find("    06:00.0  not listed\n      ok "), std::string::npos) << told;
    EXPECT_NE(told.find("    01:00.0  not listed: expected that"), std::string::npos) << told;
}

// Once by the bridge library, as the plug-in has it read, and once for all that is tried: a live
// bus may change meanwhile, and a large one is slow to read.
TEST(Explain, ReadsTheBusOnceWhateverIsTried) {
    const Described described(boxAndCard(), boxAt("8231", "d0f0"));
    const Openings openings(described.machine().dump);
    const std::string text = described.asText();
    EXPECT_EQ(openings.count(), 2U);
    EXPECT_NE(text.find("change: [Anchor] Pid = 8232"), std::string::npos) << text;
}

// The walk of the second device begins where the first one stands: the plug-in begins its pass over
// the devices again for each anchor, and takes the slot paths by their number.
TEST(Explain, DeviceOfAnAlternateAnchorIsLookedForFromAnotherOnesSlotPath) {
    BusBuilder bus;
    bus.endpoint(bus.rootPort(0, 1, 0, kRootIds), 0, 0, {0x1172, 0xE001});
    bus.endpoint(bus.rootPort(0, 2, 0, kRootIds), 0, 0, {0x1172, 0xE002});
    const json model = Described(bus, cardOr("E002")).model();
    EXPECT_EQ(model.at("listed"), 2);
    ASSERT_EQ(model.at("candidates").size(), 2U);
    const json& second = model.at("candidates").at(1);
    EXPECT_EQ(second.at("address"), "0000:02:00.0");
    EXPECT_EQ(second.at("slotPath"), "MR00:00,10");
    EXPECT_EQ(second.at("steps").at(0).at("condition"), "a bridge stands above it");
    const json& noted = second.at("steps").at(1);
    EXPECT_EQ(noted.at("result"), "noted");
    EXPECT_EQ(noted.at("condition"), "its places are looked for from its own slot path");
    EXPECT_EQ(noted.at("expected"), "MR00:00,10");
    EXPECT_EQ(noted.at("found"), "MR00:00,08, that of another anchor of the model");
}

TEST(Explain, DeviceThatTwoAnchorsDescribeIsListedTwice) {
    BusBuilder bus;
    bus.endpoint(bus.rootPort(0, 1, 0, kRootIds), 0, 0, {0x1172, 0xE001});
    const json model = Described(bus, cardOr("E001")).model();
    EXPECT_EQ(model.at("listed"), 2);
    ASSERT_EQ(model.at("candidates").size(), 2U);
    for (const json& candidate : model.at("candidates")) {
        EXPECT_EQ(candidate.at("address"), "0000:01:00.0");
        EXPECT_EQ(candidate.at("slotPath"), "MR00:00,08");
    }
}

TEST(Explain, ModelThatIsToHaveNoNameGetsNoTerminalName) {
    std::string text = boxAt("8232", "d0f0");
    text.replace(text.find("Box"), 3, "_");
    const json model = Described(boxAndCard(), text).model();
    EXPECT_EQ(lastStep(model).at("result"), "failed");
    EXPECT_EQ(lastStep(model).at("condition"), "a terminal name can be given");
    EXPECT_EQ(lastStep(model).at("expected"), "no failure");
    EXPECT_EQ(lastStep(model).at("found"), model.at("failure"));
}

TEST(Explain, MapThatCannotBeAppliedEndsTheLookUp) {
    const json model = Described(boxAndCard(), boxAt("8232", "-,-,-,d0f0")).model();
    EXPECT_EQ(lastStep(model).at("condition"), "[DownstreamPort1] can be looked up");
    EXPECT_EQ(lastStep(model).at("section"), "DownstreamPort1");
    EXPECT_EQ(lastStep(model).at("found"), model.at("failure"));
}

// A box with sixty bridges that no description means; its upstream port.
auto addWideBox(BusBuilder& bus) {
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, kUpIds);
    for (unsigned i = 0; i < 60; ++i)
        bus.bridge(up, i / 4, i % 4, {0x10B5, 0x8608});
    return up;
}

// A port that stands elsewhere is looked for among all bridges of the box but those that other
// sections describe; a section whose map leads nowhere describes none.
TEST(Explain, PortIsMovedToTheBridgeThatHasItsIdentifiersOnAWideBox) {
    BusBuilder bus;
    const auto up = addWideBox(bus);
    bus.bridge(up, 31, 0, kPortIds);
    std::string text = boxAt("8232", "d30f7");
    text.replace(text.find("InternalBridges = \"\""), 20, "InternalBridges = Nowhere");
    text += "[InternalBridgeNowhere]\nIDsSameAs = DownstreamPort1\n"
            "TraversalMapFromAnchor = -,-,-,-\n";
    const json model = Described(bus, text).model();
    EXPECT_EQ(model.at("listed"), 0);
    const json& change = model.at("candidates").at(0).at("changes").at(0);
    EXPECT_EQ(change.at("section"), "DownstreamPort1");
    EXPECT_EQ(change.at("key"), "TraversalMapFromAnchor");
    EXPECT_EQ(change.at("value"), "d31f0");
}

// Nothing says then which of the bridges it is, and not all of them are tried.
TEST(Explain, PortIsMovedToTheFirstBridgeWhenNoneHasItsIdentifiers) {
    BusBuilder bus;
    addWideBox(bus);
    const json model = Described(bus, boxAt("8232", "d30f7")).model();
    EXPECT_EQ(model.at("candidates").at(0).at("changes").at(0).at("value"), "d0f0");
}

// Seen from a card, the bridges of its box are up and down again.
TEST(Explain, BridgeBesideAnAnchorThatIsNoBridgeIsReachedOverTheOneAbove) {
    BusBuilder bus;
    const auto up = bus.bridge(bus.rootPort(0, 1, 0, kRootIds), 0, 0, kUpIds);
    bus.endpoint(up, 1, 0, {0x1172, 0xE001});
    bus.bridge(up, 2, 0, kPortIds);
    std::string text = cardOr("E002");
    text.replace(text.find("InternalBridges = \"\""), 20, "InternalBridges = Card");
    text += "[InternalBridgeCard]\nVid = 104C\nPid = 8233\nSsVid = 0\nSsPid = 0\n"
            "TraversalMapFromAnchor = -,d9f0\nReportAddressFromThisBridge = 1\n";
    const json model = Described(bus, text).model();
    EXPECT_EQ(model.at("listed"), 0);
    const json& change = model.at("candidates").at(0).at("changes").at(0);
    EXPECT_EQ(change.at("section"), "InternalBridgeCard");
    EXPECT_EQ(change.at("value"), "-,d2f0");
}

// Makes each proposed change to the file and looks whether the plug-in lists the candidate then.
void expectChangesWork(const Machine& machine, const fs::path& file, const json& model,
                       ExplainTally& tally) {
    const std::string text = testsupport::fileText(file);
    for (const json& candidate : model.at("candidates")) {
        for (const json& change : candidate.at("changes")) {
            const std::string section = change.at("section");
            std::string changed = text;
            std::string keys = change.at("key");
            std::string values = change.at("value");
            if (keys.find(',') == std::string::npos) {
                const bool isNew = text.find("[" + section + "]") == std::string::npos;
                changed = testtavctl::withValue(changed, section, keys, values);
                if (isNew) { // the section that describes the anchor
                    changed = testtavctl::withValue(changed, section, "IDsSameAs", "Anchor");
                    changed =
                        testtavctl::withValue(changed, "UpstreamTAV", "InternalBridges", "Anchor");
                }
            } else {
                changed = testtavctl::withValue(changed, section, "IDsSameAs", "");
                std::istringstream keyList(keys);
                std::istringstream valueList(values);
                std::string key;
                std::string value;
                while (std::getline(keyList >> std::ws, key, ',') &&
                       std::getline(valueList >> std::ws, value, ','))
                    changed = testtavctl::withValue(changed, section, key, value);
            }
            std::ofstream(file, std::ios::binary) << changed;
            const json after = machine.explained(model.at("model").get<std::string>());
            bool found = false;
            for (const json& each : after.at("models").at(0).at("candidates"))
                found = found || (each.at("address") == candidate.at("address") &&
                                  each.at("outcome") == "listed");
            EXPECT_TRUE(found) << change << "\n" << text << "\n" << changed << after;
            const auto listed = machine.listed();
            ASSERT_TRUE(listed) << changed;
            EXPECT_EQ(listedBy(machine.explained()), *listed) << changed;
            ++tally.changes;
        }
    }
    std::ofstream(file, std::ios::binary) << text;
}

TEST(Explain, AgreesWithThePluginOnGeneratedMachines) {
    std::mt19937 random(1503); // NOLINT(bugprone-random-generator-seed): the same each time
    ExplainTally tally;
    const int machines = testsupport::isSanitized() ? 70 : 150;
    for (int i = 0; i < machines; ++i) {
        const FileFolder folder;
        const auto made = testtavctl::randomMachine(random);
        const fs::path descriptions = folder.file("PCI Hardware Descriptions");
        fs::create_directory(descriptions);
        Machine machine{folder.write("bus.dump", made.bus.dump()), folder.file("")};
        for (const char* name : {"a", "b"})
            std::ofstream(descriptions / (std::string(name) + ".ini"))
                << testtavctl::randomDescription(made, random, std::string("Model ") + name);
        const auto listed = machine.listed();
        ASSERT_TRUE(listed);
        const json explanation = machine.explained();
        ASSERT_EQ(listedBy(explanation), *listed)
            << testsupport::fileText(descriptions / "a.ini")
            << testsupport::fileText(descriptions / "b.ini") << explanation;
        tally.listed += listed->size();
        for (const json& model : explanation.at("models")) {
            for (const json& candidate : model.at("candidates"))
                tally.rejected += candidate.at("outcome") == "rejected" ? 1U : 0U;
            if (i < 60) {
                ASSERT_NO_FATAL_FAILURE(
                    expectChangesWork(machine, model.at("file").get<std::string>(), model, tally));
            }
        }
    }
    // Both kinds must occur often, or the test shows nothing.
    EXPECT_GT(tally.listed, 50U);
    EXPECT_GT(tally.rejected, 50U);
    EXPECT_GT(tally.changes, 20U);
}

} // namespace

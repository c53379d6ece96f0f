#include "bench/compare/busRace.h"

#include "bench/compare/childProcess.h"
#include "bench/compare/floors.h"
#include "bench/compare/stopwatch.h"
#include "bench/machine.h"
#include "bench/require.h"
#include "pcibus/readBus.h"
#include "tests/support/busBuilder.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>

namespace bench {

namespace {

constexpr std::size_t kModels = 200;
constexpr std::size_t kDevices = 50;
constexpr const char* kLspci = "/usr/bin/lspci";

using Command = std::vector<std::string>;

struct Times {
    Best ours, peer, least, nothing;
};

double seconds(const Command& command) {
    return runChild(command).seconds;
}

std::size_t countLines(const std::string& text) {
    std::size_t lines = 0;
    for (const char c : text)
        lines += c == '\n';
    return lines;
}

Row rowOf(const std::string& what, double ours, const std::string& peer, double peerSeconds,
          double target) {
    Row row;
    row.what = what;
    row.ours = timeText(ours);
    row.peer = peer + ' ' + timeText(peerSeconds);
    row.ratio = peerSeconds / ours;
    row.target = target;
    return row;
}

std::vector<std::string> configFiles(const std::filesystem::path& root) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(root / "bus/pci/devices"))
        files.push_back((entry.path() / "config").string());
    return files;
}

} // namespace

std::vector<Row> raceBuses(int rounds) {
    const testsupport::BusBuilder bus = testsupport::bigBus();
    const testsupport::TemporaryFolder folder;
    const std::string dump = folder.file("bus.dump", bus.dump()).string();
    const std::string sysfs = (folder.path() / "sysfs").string();
    bus.writeSysfs(sysfs, testsupport::kStandardBytes);
    Machine machine(bus);
    machine.describe(kModels);
    require(machine.devices() == kDevices, "50 models are to match");

    const auto list = [&](const std::string& location) {
        return Command{TAV_BENCH_TAVCTL, "list", "--dump", location};
    };
    const Command lspciDump = {kLspci, "-F", dump, "-n"};
    const Command lspciSysfs = {
        kLspci, "-A", "linux-sysfs", "-O", "sysfs.path=" + sysfs + "/bus/pci", "-n"};
    const std::size_t functions = bus.functions().size();
    for (const std::string& location : {dump, sysfs})
        require(countLines(runChild(list(location), true).output) >= kDevices,
                "tavctl does not list every device");
    for (const Command& command : {lspciDump, lspciSysfs})
        require(countLines(runChild(command, true).output) == functions,
                "lspci does not list every function");

    Times onDump;
    Times onSysfs;
    Best reading;
    for (int round = 0; round < rounds; ++round) {
        onDump.ours.take(seconds(list(dump)));
        onDump.peer.take(seconds(lspciDump));
        onDump.least.take(seconds({"/bin/cat", dump}));
        onDump.nothing.take(seconds({"/bin/true"}));
        onSysfs.ours.take(seconds(list(sysfs)));
        onSysfs.peer.take(seconds(lspciSysfs));
        reading.take(secondsOf([&] {
            require(pcibus::readBus(sysfs).functions().size() == functions,
                    "functions are missing");
        }));
    }
    const double headers = headersSeconds(configFiles(sysfs));

    std::vector<Row> rows;
    rows.push_back(rowOf("tavctl list, 200 descriptions, dump of 1,750 functions",
                         onDump.ours.value(), "lspci -F -n", onDump.peer.value(), 4));
    rows.back().limit =
        "cat " + timeText(onDump.least.value()) + ", true " + timeText(onDump.nothing.value());
    rows.push_back(rowOf("  the same bus as sysfs files", onSysfs.ours.value(),
                         "lspci -A linux-sysfs -n", onSysfs.peer.value(), 2));
    rows.back().limit = "open+read 64 bytes of each " + timeText(headers);
    rows.push_back(rowOf("  reading it", reading.value(), "open+read of each", headers, 0.5));
    return rows;
}

} // namespace bench

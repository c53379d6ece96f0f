#include "bench/compare/startRace.h"

#include "bench/compare/childProcess.h"
#include "bench/machine.h"
#include "bench/require.h"
#include "tests/support/busBuilder.h"
#include "tests/support/temporaryFolder.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace bench {

namespace {

using Command = std::vector<std::string>;

struct Cost {
    double instructions = 0;
    double pages = 0;
};

Cost costOf(const Command& command) {
    runChild(command); // what is read for the first time is the disk's
    Command counting{"/usr/bin/valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                     "--log-fd=1"};
    counting.insert(counting.end(), command.begin(), command.end());
    const std::string told = runChild(counting, true).output;
    constexpr std::string_view kSum = "Collected : ";
    const std::size_t at = told.find(kSum);
    require(at != std::string::npos, "valgrind counts nothing: " + told);
    return {std::strtod(told.c_str() + at + kSum.size(), nullptr),
            static_cast<double>(runChild(command).pages)};
}

std::string countText(const char* format, double count) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, count);
    return text.data();
}

void addRows(const std::string& what, const Command& ours, const std::string& peer,
             const Command& theirs, std::vector<Row>& rows) {
    const Cost our = costOf(ours);
    const Cost their = costOf(theirs);
    const auto millions = [](double count) { return countText("%.2f million", count / 1e6); };
    const auto pages = [](double count) { return countText("%.0f", count); };
    rows.push_back({what + ", instructions", millions(our.instructions),
                    peer + ' ' + millions(their.instructions),
                    their.instructions / our.instructions, 1, ""});
    rows.push_back({"  pages touched", pages(our.pages), peer + ' ' + pages(their.pages),
                    their.pages / our.pages, 1, ""});
}

// One card below a bridge, and eleven others that nobody describes.
testsupport::BusBuilder smallBus() {
    constexpr unsigned kOthers = 11;
    testsupport::BusBuilder bus;
    const auto port = bus.rootPort(0, 1, 0, {0x10B5, 0x8749, 0x1234, 0x0200}, 8, 3);
    bus.endpoint(port, 0, 0, {0x1172, 0xE000, 0x1234, 0x0001});
    for (unsigned other = 0; other < kOthers; ++other)
        bus.endpoint(bus.rootPort(0, 2 + other, 0, {0x8086, 0x3420}, 4, 2), 0, 0, {0x8086, 0x10D3});
    return bus;
}

} // namespace

std::vector<Row> raceStarts() {
    const testsupport::BusBuilder small = smallBus();
    const testsupport::TemporaryFolder folder;
    const std::string sysfs = (folder.path() / "sysfs").string();
    small.writeSysfs(sysfs, testsupport::kStandardBytes);
    Machine machine(small);
    machine.describe(cardDescription(0, 0, 0x0001));
    require(machine.initializeOnce().devices == 1, "one model is to match");
    const std::string tavctl = TAV_BENCH_TAVCTL;
    const std::string lspci = "/usr/bin/lspci";
    std::vector<Row> rows;
    addRows("tavctl --version", {tavctl, "--version"}, "lspci --version", {lspci, "--version"},
            rows);
    // As where no database of hardware is installed, in which lspci looks for every function.
    addRows("tavctl list, 24 functions as sysfs files", {tavctl, "list", "--dump", sysfs},
            "lspci -n",
            {lspci, "-A", "linux-sysfs", "-O", "sysfs.path=" + sysfs + "/bus/pci", "-O",
             "hwdb.disable=1", "-n"},
            rows);
    return rows;
}

} // namespace bench

// Processes that initialise at once on one state folder.
#include "tests/plugin/pluginCopy.h"
#include "tests/support/busBuilder.h"
#include "tests/support/program.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using testplugin::SampleMachine;
using testsupport::BusBuilder;
using testsupport::ProgramResult;
using testsupport::TemporaryFolder;

constexpr unsigned kProcesses = 8;
constexpr unsigned kBoxesEach = 4;

// A machine whose boxes stand in slots of their own, so that every process needs new names.
std::string busOfProcess(unsigned process) {
    BusBuilder machine;
    for (unsigned box = 0; box < kBoxesEach; ++box) {
        const auto root = machine.rootPort(0, 1 + process, box, {0x8086, 0x3420, 0, 0}, 1);
        const auto up = machine.bridge(root, 0, 0, {0x104C, 0x8232, 0, 0}, 1);
        for (unsigned port = 0; port < 3; ++port)
            machine.bridge(up, port, 0, {0x104C, 0x8233, 0, 0}, 1);
    }
    return machine.dump();
}

std::vector<std::string> storedNames(const std::string& nameFile) {
    std::vector<std::string> names;
    std::istringstream lines(nameFile);
    const std::string key = "TerminalName = ";
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) // lines end with CR LF
            names.push_back(line.substr(key.size(), line.find('\r') - key.size()));
    }
    return names;
}

TEST(SeveralProcesses, NeverGiveOneNameTwice) {
    const SampleMachine machine;
    const TemporaryFolder buses;
    std::vector<ProgramResult> results(kProcesses);
    {
        std::vector<std::jthread> hosts;
        for (unsigned process = 0; process < kProcesses; ++process) {
            const std::string bus =
                buses.file("bus" + std::to_string(process), busOfProcess(process)).string();
            hosts.emplace_back([&, process, bus] {
                results[process] =
                    testsupport::runProgram(TAVCTL_FILE, {"list", "--json", "--dump", bus,
                                                          "--state", machine.state().string()});
            });
        }
    }
    for (const ProgramResult& result : results)
        EXPECT_EQ(result.exitStatus, 0) << result.error;

    const std::vector<std::string> names = storedNames(machine.names());
    EXPECT_EQ(names.size(), kProcesses * kBoxesEach) << machine.names();
    std::set<std::string> expected;
    for (unsigned number = 1; number <= kProcesses * kBoxesEach; ++number)
        expected.insert("TAV" + std::to_string(number));
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected) << machine.names();
}

} // namespace

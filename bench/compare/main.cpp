// This project beside its peers and beside what the machine allows: one table, best of several
// rounds in which everybody has a turn.
//
//     tav_compare [ROUNDS [DLL...]]      DLL: the plug-in for Windows, told by its size only
#include "bench/compare/busRace.h"
#include "bench/compare/iniRace.h"
#include "bench/compare/pluginRows.h"
#include "bench/compare/startRace.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

int main(int argc, char** argv) {
    try {
        const std::string first = argc > 1 ? argv[1] : "5";
        if (first == "--ini" && argc == 5) {
            bench::runIniChild(std::strtoul(argv[2], nullptr, 10),
                               std::strtoul(argv[3], nullptr, 10), argv[4]);
            return 0;
        }
        if (first == "--folder" && argc == 4) {
            bench::runIniFolderChild(std::strtoul(argv[2], nullptr, 10), argv[3]);
            return 0;
        }
        const int rounds = std::atoi(first.c_str());
        if (rounds < 1) {
            std::fprintf(stderr, "usage: tav_compare [ROUNDS [DLL...]]\n");
            return 2;
        }
        std::vector<bench::Row> rows = bench::raceInis("/proc/self/exe", rounds);
        for (const bench::Row& row : bench::raceBuses(rounds * 2))
            rows.push_back(row);
        for (const bench::Row& row : bench::raceStarts())
            rows.push_back(row);
        for (const bench::Row& row : bench::pluginRows({argv + std::min(argc, 2), argv + argc}))
            rows.push_back(row);
        bench::printTable(rows);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tav_compare: %s\n", failure.what());
        return 1;
    }
}

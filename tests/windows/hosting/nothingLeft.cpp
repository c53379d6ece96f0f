#include "tests/windows/hosting/nothingLeft.h"

#include "tests/support/program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>

namespace testwindows {

namespace {

struct Figure {
    long long before = -1;
    long long after = -2;
};

// What the host prints, by name.
std::map<std::string, Figure> figuresOf(const std::string& mode, int cycles) {
    const testsupport::ProgramResult result = testsupport::runProgram(
        TAV_LOADING_HOST, {mode, std::filesystem::path(ZOTAVPCI_FILE).parent_path().string(),
                           std::to_string(cycles)});
    EXPECT_EQ(result.exitStatus, 0) << result.output << result.error;
    std::map<std::string, Figure> figures;
    std::istringstream lines(result.output);
    std::string name;
    Figure figure;
    while (lines >> name >> figure.before >> figure.after)
        figures[name] = figure;
    return figures;
}

// Wine's own noise: its heap keeps what it has freed in lists by size, and takes memory of the
// system in pieces of up to 64 kB; a message of its own that has come in between may be one more
// block. A single byte a cycle would be more than is allowed here.
constexpr long long kHeapNoise = 1000;
constexpr long long kPrivateNoise = 128 * 1024LL;

} // namespace

void expectNothingLeft(const std::string& mode, int count) {
    std::map<std::string, Figure> figures = figuresOf(mode, count);
    EXPECT_GT(figures["slots"].before, 0);
    EXPECT_EQ(figures["slots"].after, figures["slots"].before);
    EXPECT_GT(figures["handles"].before, 0);
    EXPECT_EQ(figures["handles"].after, figures["handles"].before);
    EXPECT_GT(figures["modules"].before, 0);
    EXPECT_EQ(figures["modules"].after, figures["modules"].before);
    EXPECT_GT(figures["heap"].before, 0);
    EXPECT_LE(figures["heap"].after, figures["heap"].before + kHeapNoise);
    EXPECT_GT(figures["private"].before, 0);
    EXPECT_LE(figures["private"].after, figures["private"].before + kPrivateNoise);
    for (const auto& [name, figure] : figures)
        std::cout << "figure: " << count << " times " << mode << ", " << name << ' '
                  << figure.before << " before, " << figure.after << " after\n";
}

} // namespace testwindows

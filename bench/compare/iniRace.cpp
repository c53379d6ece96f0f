#include "bench/compare/iniRace.h"

#include "bench/compare/childProcess.h"
#include "bench/compare/floors.h"
#include "bench/compare/iniRun.h"
#include "bench/compare/stopwatch.h"
#include "bench/machine.h"
#include "bench/require.h"
#include "tests/support/temporaryFolder.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace bench {

namespace {

struct Input {
    const char* name;
    const IniShape* shape; // null: the description
    double findTarget;
};
constexpr std::array<Input, 4> kInputs = {{
    {"2.2 kB, a description", nullptr, 0},
    {"10 MB, 20,000 sections", &kManySections, 2},
    {"13 MB, 200,000 sections", &kVeryManySections, 1},
    {"4.3 MB, one section", &kOneLargeSection, 1},
}};
constexpr std::size_t kClass = 0;
constexpr std::size_t kEngine = 1;

std::string textOf(const Input& input) {
    return input.shape == nullptr ? switchDescription(0, 0x0100) : iniText(*input.shape);
}

void write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

struct BestFigures {
    Best load, find, copy, save, resident;
    std::size_t saved = 0; // bytes

    void take(const IniFigures& figures) {
        load.take(figures.load);
        if (figures.find != 0)
            find.take(figures.find);
        if (figures.copy != 0)
            copy.take(figures.copy);
        if (figures.save != 0)
            save.take(figures.save);
        resident.take(figures.resident);
    }
};

using Field = Best BestFigures::*;

std::string speedText(std::size_t bytes, double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.0f MB/s",
                  static_cast<double>(bytes) / seconds / 1e6);
    return text.data();
}

// Ours beside the best peer.
template <class Text>
Row compare(const std::string& what, const std::vector<BestFigures>& figures, std::size_t ours,
            Field field, double target, Text text) {
    std::size_t best = kOwnEntrants;
    for (std::size_t peer = kOwnEntrants; peer < figures.size(); ++peer)
        if ((figures[peer].*field).value() < (figures[best].*field).value())
            best = peer;
    Row row;
    row.what = what;
    row.ours = text(figures[ours], (figures[ours].*field).value());
    row.peer = std::string(iniEntrants()[best].name) + ' ' +
               text(figures[best], (figures[best].*field).value());
    row.ratio = (figures[best].*field).value() / (figures[ours].*field).value();
    row.target = target;
    return row;
}

void addRows(const Input& input, const std::vector<BestFigures>& figures, const std::string& path,
             std::vector<Row>& rows) {
    const std::string text = textOf(input);
    write(path, text);
    const std::string name = input.name;
    const auto time = [](const BestFigures&, double seconds) { return timeText(seconds); };
    const auto loaded = [&](const BestFigures&, double seconds) {
        return timeText(seconds) + ", " + speedText(text.size(), seconds);
    };
    const auto saved = [&](const BestFigures& of, double seconds) {
        return timeText(seconds) + ", " + speedText(of.saved, seconds);
    };
    const auto memory = [](const BestFigures&, double bytes) { return memoryText(bytes); };
    const std::string limit =
        "memchr " + timeText(memchrSeconds(path)) + ", open+read " + timeText(readSeconds(path));

    rows.push_back(compare("load " + name, figures, kEngine, &BestFigures::load, 3, loaded));
    rows.back().limit = limit;
    rows.push_back(compare("  by the class", figures, kClass, &BestFigures::load,
                           input.shape == nullptr ? 2.5 : 3, loaded));
    rows.push_back(
        compare(input.shape == nullptr ? "  resident memory of each of 200" : "  resident memory",
                figures, kClass, &BestFigures::resident, 1, memory));
    if (input.shape != nullptr) {
        rows.push_back(compare("  look up a random key", figures, kEngine, &BestFigures::find,
                               input.findTarget, time));
        rows.push_back(compare("  by the class", figures, kClass, &BestFigures::find, 1, time));
        rows.push_back(compare("  by the class, with a copy of the value", figures, kClass,
                               &BestFigures::copy, 1, time));
    }
    rows.push_back(compare("  save", figures, kClass, &BestFigures::save,
                           input.shape == nullptr ? 0 : 3, saved));
    rows.back().limit = "one write " + timeText(writeSeconds(path, figures[kClass].saved));
}

// The folder beside every file: what a host does at its start.
constexpr std::size_t kDescriptions = 200;

void writeDescriptions(const std::filesystem::path& folder) {
    std::filesystem::create_directory(folder);
    for (unsigned number = 0; number < kDescriptions; ++number)
        write((folder / (std::to_string(number) + ".ini")).string(),
              number % 2 == 0 ? switchDescription(number, 0x0100 + number)
                              : cardDescription(number, 0, number));
}

double folderInChild(const std::string& program, std::size_t entrant, const std::string& folder) {
    const ChildRun run = runChild({program, "--folder", std::to_string(entrant), folder}, true);
    double seconds = 0;
    require(std::sscanf(run.output.c_str(), "%lf", &seconds) == 1, "no figure: " + run.output);
    return seconds;
}

Row folderRow(const std::vector<Best>& seconds) {
    std::vector<BestFigures> figures(seconds.size());
    for (std::size_t entrant = 0; entrant < seconds.size(); ++entrant)
        figures[entrant].load = seconds[entrant];
    return compare("load a folder of 200 descriptions, by the class", figures, kClass,
                   &BestFigures::load, 3,
                   [](const BestFigures&, double time) { return timeText(time); });
}

IniFigures runInChild(const std::string& program, std::size_t entrant, std::size_t input,
                      const std::string& path) {
    const ChildRun run =
        runChild({program, "--ini", std::to_string(entrant), std::to_string(input), path}, true);
    IniFigures figures;
    require(std::sscanf(run.output.c_str(), "%lf %lf %lf %lf %lf", &figures.load, &figures.find,
                        &figures.copy, &figures.save, &figures.resident) == 5,
            "no figures: " + run.output);
    return figures;
}

} // namespace

std::vector<Row> raceInis(const std::string& program, int rounds) {
    const testsupport::TemporaryFolder folder;
    const std::string path = (folder.path() / "file.ini").string();
    const std::size_t entrants = iniEntrants().size();
    std::vector<std::vector<BestFigures>> figures(kInputs.size(),
                                                  std::vector<BestFigures>(entrants));
    const std::string descriptions = (folder.path() / "descriptions").string();
    writeDescriptions(descriptions);
    std::vector<Best> folderSeconds(entrants);
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t entrant = 0; entrant < entrants; ++entrant)
            folderSeconds[entrant].take(folderInChild(program, entrant, descriptions));
        for (std::size_t input = 0; input < kInputs.size(); ++input) {
            const std::string text = textOf(kInputs[input]);
            for (std::size_t entrant = 0; entrant < entrants; ++entrant) {
                write(path, text);
                BestFigures& best = figures[input][entrant];
                best.take(runInChild(program, entrant, input, path));
                best.saved = std::filesystem::file_size(path);
            }
        }
    }
    std::vector<Row> rows;
    for (std::size_t input = 0; input < kInputs.size(); ++input) {
        addRows(kInputs[input], figures[input], path, rows);
        if (input == 0)
            rows.push_back(folderRow(folderSeconds));
    }
    return rows;
}

void runIniChild(std::size_t entrant, std::size_t input, const std::string& path) {
    const IniFigures figures = runIni(iniEntrants().at(entrant), path, kInputs.at(input).shape);
    std::printf("%.12f %.12f %.12f %.12f %.0f\n", figures.load, figures.find, figures.copy,
                figures.save, figures.resident);
}

void runIniFolderChild(std::size_t entrant, const std::string& folder) {
    std::printf("%.12f\n", runIniFolder(iniEntrants().at(entrant), folder, kDescriptions));
}

} // namespace bench

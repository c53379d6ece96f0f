#include "bench/compare/iniRun.h"

#include "bench/changedFile.h"
#include "bench/compare/stopwatch.h"
#include "bench/require.h"
#include "bench/residentMemory.h"

#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr std::size_t kSmallFile = 100'000; // bytes; below, one run is too short to be timed alone
constexpr int kRunsOfSmall = 200;
constexpr int kTries = 3;

// Without what it takes to drop the load before.
double loadSeconds(IniContender& contender, const std::string& path, int runs) {
    double seconds = 0;
    for (int run = 0; run < runs; ++run) {
        contender.unload();
        seconds += secondsOf([&] { contender.load(path); });
    }
    return seconds / runs;
}

// A small file is lost in what the process itself takes: what each of many adds to it.
double residentBytesOfSmall(const IniEntrant& entrant, const std::string& path) {
    std::vector<IniContenderOwner> kept;
    kept.reserve(kRunsOfSmall);
    const double before = residentBytes();
    for (int run = 0; run < kRunsOfSmall; ++run)
        kept.emplace_back(entrant.make())->load(path);
    return (residentBytes() - before) / kRunsOfSmall;
}

struct Question {
    std::string section;
    std::string key;
};
// Names in random order, always the same.
std::vector<Question> questions(const IniShape& shape) {
    constexpr std::size_t kQuestions = 65'536;
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same ones in every run
    std::vector<Question> result;
    for (std::size_t i = 0; i < kQuestions; ++i)
        result.push_back({sectionName(random() % shape.sections), keyName(random() % shape.keys)});
    return result;
}

// `ask` answers with the size of a key's value.
template <class Ask>
double secondsOfEach(const std::vector<Question>& asked, std::size_t valueSize, Ask ask) {
    std::size_t bytes = 0;
    const double seconds = secondsOf([&] {
        for (const Question& question : asked)
            bytes += ask(question);
    });
    require(bytes == asked.size() * valueSize, "a key was not found");
    return seconds / static_cast<double>(asked.size());
}

double saveSeconds(IniContender& contender, const std::string& path, int runs) {
    double seconds = 0;
    for (int run = 0; run < runs; ++run) {
        changeFile(path); // not timed
        seconds += secondsOf([&] { contender.save(path); });
    }
    requireSaved(path);
    return seconds / runs;
}

} // namespace

IniFigures runIni(const IniEntrant& entrant, const std::string& path, const IniShape* shape) {
    const bool isSmall = std::filesystem::file_size(path) < kSmallFile;
    const int runs = isSmall ? kRunsOfSmall : 1;
    const IniContenderOwner contender = entrant.make();
    IniFigures figures;
    contender->load(path);
    if (!isSmall)
        figures.resident = residentBytes();
    Best load;
    for (int attempt = 0; attempt < kTries; ++attempt)
        load.take(loadSeconds(*contender, path, runs));
    figures.load = load.value();
    if (shape != nullptr) {
        const std::vector<Question> asked = questions(*shape);
        Best find;
        Best copy;
        std::string value;
        for (int attempt = 0; attempt < kTries; ++attempt) {
            find.take(secondsOfEach(asked, shape->value, [&](const Question& question) {
                return contender->find(question.section, question.key).size();
            }));
            copy.take(secondsOfEach(asked, shape->value, [&](const Question& question) {
                value = contender->find(question.section, question.key);
                return value.size();
            }));
        }
        figures.find = find.value();
        figures.copy = copy.value();
    }
    if (entrant.canSave) {
        Best save;
        for (int attempt = 0; attempt < kTries; ++attempt)
            save.take(saveSeconds(*contender, path, runs));
        figures.save = save.value();
    }
    contender->unload();
    if (isSmall) // last, so that nobody is timed on what this leaves of the heap
        figures.resident = residentBytesOfSmall(entrant, path);
    return figures;
}

double runIniFolder(const IniEntrant& entrant, const std::string& folder, std::size_t files) {
    constexpr int kPasses = 10;
    const IniContenderOwner contender = entrant.make();
    Best best;
    for (int pass = 0; pass < kPasses; ++pass)
        best.take(secondsOf([&] {
            const std::vector<std::string> paths = contender->list(folder);
            require(paths.size() == files, "files are missing in " + folder);
            for (const std::string& path : paths) {
                contender->load(path);
                contender->unload();
            }
        }));
    return best.value();
}

} // namespace bench

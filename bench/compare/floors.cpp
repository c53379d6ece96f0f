#include "bench/compare/floors.h"

#include "bench/compare/stopwatch.h"
#include "bench/lineEnds.h"
#include "bench/require.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>

namespace bench {

namespace {

constexpr int kTries = 5;

template <class Work>
double bestSeconds(Work work) {
    Best best;
    for (int attempt = 0; attempt < kTries; ++attempt)
        best.take(secondsOf(work));
    return best.value();
}

void readFile(const std::string& path, char* buffer, std::size_t size) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    require(file >= 0 && read(file, buffer, size) == static_cast<ssize_t>(size),
            "cannot read " + path);
    close(file);
}

std::string content(const std::string& path) {
    std::string text(std::filesystem::file_size(path), '\0');
    readFile(path, text.data(), text.size());
    return text;
}

} // namespace

double memchrSeconds(const std::string& path) {
    const std::string text = content(path);
    std::size_t lines = 0;
    const double seconds = bestSeconds([&] { lines += countLineEnds(text); });
    require(lines != 0, "no line in " + path);
    return seconds;
}

double readSeconds(const std::string& path) {
    std::string text = content(path);
    return bestSeconds([&] { readFile(path, text.data(), text.size()); });
}

double writeSeconds(const std::string& path, std::size_t bytes) {
    const std::string text(bytes, 'x');
    return bestSeconds([&] {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        require(file >= 0 && write(file, text.data(), bytes) == static_cast<ssize_t>(bytes),
                "cannot write " + path);
        close(file);
    });
}

double headersSeconds(const std::vector<std::string>& paths) {
    std::array<char, 64> header{};
    return bestSeconds([&] {
        for (const std::string& path : paths)
            readFile(path, header.data(), header.size());
    });
}

} // namespace bench

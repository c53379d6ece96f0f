#include "tests/tavctl/explain/descriptionMutations.h"

#include "tests/support/fileText.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testtavctl {

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

Lines split(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string merge(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text.append(line).append("\n");
    return text;
}

void changeValue(std::string& line, std::mt19937& random) {
    static const char* const kValues[] = {"",
                                          "\"\"",
                                          "\" \"",
                                          "0",
                                          "1",
                                          "2",
                                          "-1",
                                          "0x",
                                          "xyz",
                                          "12345",
                                          "1 x",
                                          "PCI",
                                          "pci",
                                          "d0f0",
                                          "d0f0,-",
                                          "d0f0,,",
                                          "_",
                                          "Ancor",
                                          "Anchor",
                                          "A,B,C",
                                          ",",
                                          "A,,B",
                                          "4294967296",
                                          "\"_\"",
                                          "UpstreamPort",
                                          "1,2,3",
                                          "DownstreamPort1",
                                          "2147483648",
                                          "FFFFFFFFF",
                                          "\"1\" ; c"};
    const auto separator = line.find('=');
    if (separator == std::string::npos)
        return;
    line.erase(separator + 1);
    line.append(" ").append(kValues[below(random, std::size(kValues))]);
}

void changeCharacter(std::string& line, std::mt19937& random) {
    static const std::string kCharacters = "=[];\"', \t\r019xXabF_-";
    const std::size_t at = below(random, line.size() + 1);
    const char c = kCharacters[below(random, kCharacters.size())];
    switch (below(random, 3)) {
    case 0:
        line.insert(at, 1, c);
        break;
    case 1:
        if (at < line.size())
            line.erase(at, 1);
        break;
    default:
        if (at < line.size())
            line[at] = c;
    }
}

void change(Lines& lines, std::mt19937& random) {
    if (lines.empty())
        return;
    const std::size_t at = below(random, lines.size());
    const auto here = lines.begin() + static_cast<std::ptrdiff_t>(at);
    switch (below(random, 6)) {
    case 0:
        lines.erase(here);
        break;
    case 1: {
        const std::string line = lines[below(random, lines.size())];
        lines.insert(here, line);
        break;
    }
    case 2:
        std::swap(lines[at], lines[below(random, lines.size())]);
        break;
    case 3:
        changeCharacter(lines[at], random);
        break;
    default:
        changeValue(lines[at], random);
    }
}

} // namespace

std::size_t below(std::mt19937& random, std::size_t bound) {
    return static_cast<std::size_t>(random()) % bound;
}

std::vector<std::string> sampleDescriptions() {
    const fs::path project = TAV_SOURCE_DIR;
    std::vector<fs::path> paths;
    for (const auto& entry :
         fs::directory_iterator(project / "descriptions" / "PCI Hardware Descriptions"))
        paths.push_back(entry.path());
    for (const auto& entry :
         fs::directory_iterator(project / "tests" / "tavctl" / "lint" / "rules")) {
        for (const auto& file : fs::directory_iterator(entry.path() / "good"))
            paths.push_back(file.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> texts;
    for (const fs::path& path : paths) {
        texts.push_back(testsupport::fileText(path));
    }
    return texts;
}

std::string mutated(std::string text, std::mt19937& random) {
    Lines lines = split(text);
    for (std::size_t changes = 1 + below(random, 4); changes > 0; --changes)
        change(lines, random);
    return merge(lines);
}

} // namespace testtavctl

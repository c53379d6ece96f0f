// Runs one target over the files of the named folders, as a test that needs no fuzzer. A folder
// that is missing or has no file fails: then nothing was tried.
#include "fuzz/expect.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream)
        return false;
    // Said beforehand: what fails ends the program.
    std::cout << file.string() << std::endl;
    // A block of exactly that size, so that a step beyond it shows.
    const std::vector<unsigned char> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::cerr << "usage: " << arguments[0] << " FOLDER...\n";
        return 2;
    }
    const std::vector<std::string> folders(arguments + 1, arguments + count);
    for (const std::string& folder : folders) {
        std::error_code error;
        if (!fs::is_directory(folder, error)) {
            std::cerr << folder << ": no such folder\n";
            return 1;
        }
        const std::vector<fs::path> files = filesIn(folder);
        if (files.empty()) {
            std::cerr << folder << ": no file to replay\n";
            return 1;
        }
        for (const fs::path& file : files)
            if (!replay(file)) {
                std::cerr << file.string() << ": cannot be read\n";
                return 1;
            }
    }
    return 0;
}

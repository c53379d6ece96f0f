#include "tests/faults/namesCommand.h"

#include "tests/support/fileText.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <set>
#include <vector>

// The program's entry, under the name that the build gives it here: a process that starts would
// make a thousand calls that are not the product's.
int tavctlMain(int argc, char** argv);

namespace testfaults {

namespace {

namespace fs = std::filesystem;

int runTavctl(std::vector<std::string> words) {
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    const WatchedPart watched;
    return tavctlMain(static_cast<int>(words.size()), pointers.data());
}

const char* wordOf(NamesCommand::Word word) {
    return word == NamesCommand::Word::restore ? "restore" : "backup";
}

} // namespace

void NamesCommand::reset() const {
    machine_.reset(FaultMachine::Names::some);
    for (const auto& entry : fs::directory_iterator(folder_.path()))
        fs::remove(entry.path());
    std::ofstream(saved_, std::ios::binary)
        << "[MR00:00,28]\r\nModel = TAV-B3 Switch Box\r\nTerminalName = TAV9\r\n";
}

TracedEnd NamesCommand::run(const Decide& decide) const {
    return runTraced(
        [&] {
            return runTavctl({"tavctl", "names", wordOf(word_), "--force", "--state",
                              machine_.state().string(), saved_.string()});
        },
        decide);
}

std::string NamesCommand::written() const {
    return testsupport::fileTextIfAny(target());
}

bool NamesCommand::hasLeftovers() const {
    const std::set<std::string> known{"saved.ini", "zotavpci.ini", "zotavpci.loc"};
    for (const auto& entry : fs::directory_iterator(target().parent_path())) {
        if (!known.contains(entry.path().filename().string()))
            return true;
    }
    return false;
}

std::string NamesCommand::name() const {
    return std::string("tavctl names ") + wordOf(word_);
}

fs::path NamesCommand::target() const {
    return word_ == Word::restore ? machine_.nameFile() : saved_;
}

} // namespace testfaults

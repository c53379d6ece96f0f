#include "tests/faults/namesCommand.h"

#include "tests/faults/tavctlRun.h"
#include "tests/support/fileText.h"

#include <fstream>
#include <iterator>
#include <set>

namespace testfaults {

namespace {

namespace fs = std::filesystem;

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
    return runTavctl(
        {"names", wordOf(word_), "--force", "--state", machine_.state().string(), saved_.string()},
        decide);
}

std::string NamesCommand::written() const {
    return testsupport::fileTextIfAny(target());
}

bool NamesCommand::hasLeftovers() const {
    const std::set<std::string> known{"saved.ini", "zotavpci.ini", "zotavpci.ini.before",
                                      "zotavpci.loc"};
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

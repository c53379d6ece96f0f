#include "tests/faults/namesCommand.h"

#include "tests/faults/tavctlRun.h"
#include "tests/support/fileText.h"

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace testfaults {

namespace fs = std::filesystem;

const char* wordOf(NamesCommand::Word word) {
    switch (word) {
    case NamesCommand::Word::restore:
        return "restore";
    case NamesCommand::Word::backup:
        return "backup";
    case NamesCommand::Word::rename:
        return "rename";
    }
    return "";
}

void NamesCommand::reset() const {
    machine_.reset(FaultMachine::Names::some);
    for (const auto& entry : fs::directory_iterator(folder_.path()))
        fs::remove(entry.path());
    std::ofstream(saved_, std::ios::binary)
        << "[MR00:00,28]\r\nModel = TAV-B3 Switch Box\r\nTerminalName = TAV9\r\n";
}

TracedEnd NamesCommand::run(const Decide& decide) const {
    std::vector<std::string> words{"names", wordOf(word_), "--state", machine_.state().string()};
    if (word_ == Word::rename)
        words.insert(words.end(), {"TAV7", "TAV9"});
    else
        words.insert(words.end(), {"--force", saved_.string()});
    return runTavctl(words, decide);
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
    return word_ == Word::backup ? saved_ : machine_.nameFile();
}

} // namespace testfaults

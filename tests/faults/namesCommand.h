// A command of tavctl's that writes a file of names through the safe write-back, and the folders
// that it works in.
#pragma once

#include "tests/faults/faultMachine.h"
#include "tests/faults/tracedRun.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>
#include <string>

namespace testfaults {

class NamesCommand {
public:
    enum class Word { restore, backup, rename };
    explicit NamesCommand(Word word) : word_(word) {}

    // As if the command had never run: stored names, and others in a saved file.
    void reset() const;

    // Runs it in a child. Says nothing: both outputs go nowhere.
    [[nodiscard]] TracedEnd run(const Decide& decide) const;

    // Whether it can be run again after it was done.
    [[nodiscard]] bool isRepeatable() const { return word_ != Word::rename; }

    // What it writes now: the stored names, or the saved file.
    [[nodiscard]] std::string written() const;
    // Whether anything stands beside that, the names from before and the lock file.
    [[nodiscard]] bool hasLeftovers() const;

    // "tavctl names restore"
    [[nodiscard]] std::string name() const;

    // The file that it writes.
    [[nodiscard]] std::filesystem::path target() const;

private:
    Word word_;
    FaultMachine machine_;
    testsupport::TemporaryFolder folder_; // of the saved file
    std::filesystem::path saved_ = folder_.path() / "saved.ini";
};

// "restore"
const char* wordOf(NamesCommand::Word word);

} // namespace testfaults

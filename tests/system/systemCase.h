// One whole-system case: a folder with a bus, descriptions, the names stored before, and what
// tavctl must print and the name file must hold afterwards.
//
//     about.txt             what is odd about this machine, in its first line
//     bus.dump              the recorded bus; or bus.path, the path of one in the project
//     descriptions/         holds "PCI Hardware Descriptions"; or descriptions.path
//     names-before.ini      the name file before the run; may be missing
//     expected.json         the listing, spread over lines so that a change can be read; or
//     expected-error.txt    what stands on standard error, and the exit status
//     expected-names.ini    the name file after the run
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace testsystem {

// What one run of tavctl came to.
struct CaseResult {
    int exitStatus = -1;
    std::string output;
    std::string error; // folders of this machine as PROJECT and STATE, source lines as N
    std::string names; // the name file; empty when there is none
};

class SystemCase {
public:
    explicit SystemCase(std::filesystem::path folder);

    // The cases of the project, by name. Raises when a folder lacks a part.
    static std::vector<SystemCase> all();

    // The folder's name as a test's: a hyphen in a test filter would begin what is left out.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] bool expectsError() const;

    // The names stored before; empty where there are none.
    [[nodiscard]] std::string namesBefore() const;

    // Puts them into a state folder.
    void prepare(const std::filesystem::path& state) const;

    // How tavctl is told of the machine: by its options, or by the machine's own configuration.
    enum class Way { options, configuration };

    // Runs tavctl in a fresh process. With `json` it prints JSON.
    [[nodiscard]] CaseResult run(const std::filesystem::path& state, bool json, Way way) const;

    // The bytes that tavctl must print with --json, made from the spread-out listing.
    [[nodiscard]] std::string expectedOutput() const;
    [[nodiscard]] std::string expectedError() const;
    [[nodiscard]] std::string expectedNames() const;

    // Writes what a run came to as what is expected from now on.
    void rewrite(const CaseResult& listing, const CaseResult& plain) const;

private:
    [[nodiscard]] std::filesystem::path part(const std::string& name) const;

    std::filesystem::path folder_;
    std::filesystem::path bus_;
    std::filesystem::path descriptions_;
};

// The text that expected-error.txt holds for a result.
std::string errorText(const CaseResult& result);

} // namespace testsystem

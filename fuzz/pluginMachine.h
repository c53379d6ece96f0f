// The machine that a run of the plug-in sees: a recorded bus, description files and a name file, in
// files that are made once, in memory where the system has such a folder, and written anew for each
// run.
#pragma once

#include "tests/support/temporaryFolder.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// What one input says, part by part; a part begins behind a line of its own:
//
//   %bus          the bus in short (see busText.h)
//   %dump         the bus as lspci prints it; the last of these two counts
//   %description  a description file; the first few count, see kMostDescriptions
//   %names        the name file, empty without this part; the last one counts
struct PluginInput {
    std::string dump;
    std::vector<std::string_view> descriptions;
    std::string_view names;
};

inline constexpr std::size_t kMostDescriptions = 3;

PluginInput readPluginInput(std::string_view input);

// A file that stays open, so that each run writes it with few calls of the system.
class KeptFile {
public:
    explicit KeptFile(const std::string& path);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    void write(std::string_view content) const;
    [[nodiscard]] std::string read() const;

private:
    int descriptor_;
};

// One of a process: it is named in the environment.
class PluginMachine {
public:
    PluginMachine();

    void show(const PluginInput& input);
    // The name file as it now is.
    [[nodiscard]] std::string names() const { return names_.read(); }

private:
    // The machine with so many description files.
    struct Side {
        Side(const testsupport::TemporaryFolder& folder, std::size_t count);

        std::vector<std::unique_ptr<KeptFile>> files;
        std::string configuration; // NAME=VALUE, as the environment has it
    };

    testsupport::TemporaryFolder folder_;
    std::string dumpVariable_;
    KeptFile dump_;
    KeptFile names_;
    std::array<Side, kMostDescriptions + 1> sides_;
};

} // namespace fuzz

// The machine that is made to fail: a small recorded bus with four devices of three models, of
// which one has a name from before and three are given new ones.
#pragma once

#include "tests/support/configuredMachine.h"
#include "tests/support/temporaryFolder.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace testfaults {

// What a name file holds: for each slot the model and the name. Lines in any other form stand under
// their own text.
using StoredName = std::pair<std::string, std::string>;
using StoredNames = std::map<std::string, StoredName>;

// A name file's content as a plain value.
struct NamesSeen {
    bool isThere = false;
    std::size_t length = 0;
    std::array<char, 4096> content{};

    [[nodiscard]] std::string text() const { return {content.data(), length}; }
};

// Each model has a base of its own, so that a device's name does not depend on which other models
// were found.
class FaultMachine {
public:
    FaultMachine();

    [[nodiscard]] std::filesystem::path folder() const { return folder_.path(); }
    [[nodiscard]] std::filesystem::path state() const { return folder_.path() / "state"; }
    [[nodiscard]] std::filesystem::path nameFile() const { return state() / "zotavpci.ini"; }

    // What the state folder holds: a name file with one of the devices and one that is gone, the
    // same with so many more that it is written in several pieces, or nothing at all.
    enum class Names { some, many, none };
    // Makes the state folder so.
    void reset(Names names) const;
    // The text of the name file then.
    [[nodiscard]] static std::string textOf(Names names);

    // The name file's text now; nothing when there is no such file.
    [[nodiscard]] std::optional<std::string> names() const;
    // The same without memory of its own.
    void look(NamesSeen& seen) const;

    static constexpr unsigned kDevices = 4;

private:
    testsupport::TemporaryFolder folder_;
    testsupport::ConfiguredMachine machine_;
};

[[nodiscard]] StoredNames parseNames(const std::string& text);

} // namespace testfaults

// What the matching of one model came across, ready to be told: each candidate with the conditions
// that were tested, in their order, and what would have to change.
#pragma once

#include "pcibus/leftOut.h"
#include "quil/tBusAddress.h"
#include "source/modelDescription.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl::explain {

// One condition.
struct Step {
    enum class Result { met, failed, noted };
    Result result = Result::met;
    std::string condition; // what was tested
    std::string expected;
    std::string found;
    // Which described bridge it was about: a section; empty when it was about none.
    std::string section;
};

// One change to the description that makes the plug-in list the device.
struct Change {
    std::string section;
    std::string key;
    std::string value; // what to write behind "=", in quotes where they are needed
    std::string reason;
};

enum class Outcome {
    listed,
    rejected,    // the first failed step tells why
    partOfOther, // serves as a bridge of another anchor
    notReached,  // an earlier candidate of this model ended the model's turn
};

// One function of the bus that has an anchor's identifiers.
struct Candidate {
    std::size_t anchor = 0;            // the position of the anchor among the model's
    std::uint32_t handle = 0xFFFFFFFF; // of a bridge; none for other functions
    nZoTavManagerPciPlugin_15_0::tBusAddress address;
    std::string slotPath;   // machine form; empty when it could not be had
    bool qualified = false; // taken for an anchor
    bool walked = false;
    Outcome outcome = Outcome::rejected;
    std::vector<Step> steps;
    std::vector<Change> changes;
    std::string hint; // why no change is proposed where one would do; mostly empty
    nZoTavManagerPciPlugin_15_0::tBusAddress reported; // of a listed device

    // How near it came: the number of conditions met before the first that failed.
    [[nodiscard]] std::size_t conditionsMet() const;
    [[nodiscard]] const Step* firstFailure() const;
};

// A function that has nearly the anchor's identifiers.
struct NearFunction {
    std::size_t anchor = 0;
    nZoTavManagerPciPlugin_15_0::tBusAddress address;
    nZoTavManagerPciPlugin_15_0::tPciIds ids;
    bool isBridge = false;
    std::string slip;            // how its identifiers were miswritten, if it looks like that
    std::vector<Change> changes; // that make the plug-in list it
};

struct Explanation {
    std::string model;
    std::string file;
    std::vector<std::string> anchors;   // "[Anchor] bridge 104C:8232 subsystem 0000:0000"
    std::vector<Candidate> candidates;  // listed ones first, then the nearest miss first
    std::vector<NearFunction> near;     // looked for only when there is no candidate
    std::vector<std::string> elsewhere; // functions of other domains that have them: addresses
    std::string failure;                // what ended the model's turn; empty when nothing did
    // Whether the description goes by what bridges have in their capabilities.
    bool asksForSubsystems = false;
    bool asksForLinkWidths = false;

    [[nodiscard]] std::size_t listed() const;
};

std::string addressText(const nZoTavManagerPciPlugin_15_0::tBusAddress& address);
// "104C:8232 subsystem 0000:0000"
std::string idsText(const nZoTavManagerPciPlugin_15_0::tPciIds& ids);

// With all conditions of every candidate or, for a look at many models, with those of the one that
// came nearest. `leftOut` is what the reader of the bus passed over: not looked at, it may hold
// what was not found.
std::string explanationAsText(const Explanation& explanation, bool inFull,
                              const std::optional<pcibus::LeftOut>& leftOut);

// A JSON object, without a line feed.
std::string explanationAsJson(const Explanation& explanation);

} // namespace tavctl::explain

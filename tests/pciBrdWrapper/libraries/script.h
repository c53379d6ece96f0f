// What the scripted bridge library is to answer, and what it was asked. The library is built for
// tests and loaded as the real one is, by its bare name; a test reaches its script through one more
// export. A process that cannot do that says what shall go wrong in the environment.
//
// A call is answered by the first of these that applies: a fault that names a status; the next
// prepared answer of the function; the library behind; status 0 with nothing written. The other
// kinds of fault change the answer on its way out.
//
// Environment, read when the library is loaded:
//   SCRIPTED_BRIDGE_FAULTS   as readFaults() reads it
//   SCRIPTED_BRIDGE_BEHIND   path of a bridge library that answers
//   SCRIPTED_BRIDGE_CALLS    file that gets one line "GetBridgeIds 0" for each call, with the
//                            answered status, appended when the library is unloaded
#pragma once

#include "pciBrdWrapper/bridgeLibrary.h"
#include "zopcibrd/zopcibrd.h"

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scripted {

using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::BridgeFunction;
using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::kBridgeFunctionCount;
using nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0::kPciBrdErrBufferTooSmall;

// One call that the library got.
struct Call {
    BridgeFunction function{};
    // In order; addresses as numbers. A text is not among them but in `text`.
    std::vector<std::uint64_t> arguments;
    std::string text;
    // What the count or size said on entry, where the function has one.
    std::optional<std::uint32_t> room;
    std::int32_t status = 0; // what was answered
};

// One prepared answer. Nothing is written that it does not hold, nor to a null pointer.
struct Answer {
    std::int32_t status = 0;
    // For the outputs in their order, or the elements of a list as far as the array has room.
    std::vector<std::uint32_t> values;
    // Written to the count of a list or the size of a text.
    std::optional<std::uint32_t> count;
    // Written to the text buffer byte by byte as far as it has room; ends without a zero unless it
    // holds one.
    std::string text;
};

enum class FaultKind {
    status,  // the call answers a status, and nothing is done
    shrink,  // a list has one element less when it is fetched than was announced
    absurd,  // a list or text is announced with the greatest length there is
    endless, // a text fills its buffer without a terminating zero
};

struct Fault {
    std::optional<BridgeFunction> function; // none: all of them
    std::uint32_t nth = 0;                  // of the calls that it is for, from 1; 0: each
    FaultKind kind = FaultKind::status;
    std::int32_t status = 0;
    std::uint32_t met = 0; // calls that it was for, so far
};

// All functions of the bus, which a library need not list.
struct FunctionList {
    std::uint32_t announced = 0;
    std::vector<tZoPciBrdFunction> given; // as far as there is room
    std::uint32_t fetched = 0;            // how often the list was asked for, not its length
};

struct Script {
    std::optional<FunctionList> functions;
    std::array<std::deque<Answer>, kBridgeFunctionCount> answers; // used up from the front
    std::vector<Fault> faults;
    std::string behind; // empty: none
    std::string callsFile;
    std::vector<Call> calls;
    bool* unloaded = nullptr; // becomes true when the library is unloaded

    void prepare(BridgeFunction function, const Answer& answer) {
        answers[static_cast<std::size_t>(function)].push_back(answer);
    }
};

// Reads "GetBridgeIds=-313001;GetBridgeChildren=shrink;OpenBridge#3=-1;*#17=-313001": function (its
// name without "ZoPciBrd_", or "*" for all), number of the call, what happens. Raises
// std::invalid_argument for anything else.
std::vector<Fault> readFaults(std::string_view text);

// The script of the loaded library; its export has C linkage and this type and name.
using ScriptAccess = Script* (*)();
inline constexpr const char* kScriptSymbol = "ScriptedBridge_Script";

} // namespace scripted

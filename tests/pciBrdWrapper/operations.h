// The eighteen operations of the binding and of the wrapper, each with arguments that are all
// different, for tests that go through all of them.
#pragma once

#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace operations {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;

// Where the operations let the library write. Each output holds a value of its own before a call,
// so that a test sees whether it was written.
struct Outputs {
    static constexpr std::uint32_t kUntouched = 0x77777777;

    std::uint32_t handle = kUntouched;
    std::uint32_t value = kUntouched;
    std::uint32_t array[2] = {kUntouched, kUntouched};
    std::uint32_t count = 2;
    std::uint8_t bytes[3] = {0x77, 0x77, 0x77};
    std::uint16_t words[4] = {0x7777, 0x7777, 0x7777, 0x7777};
    char data = 'd';

    // The wrapper's lists.
    tBridgeList bridges;
    tBusList buses;
    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath path;

    Outputs(); // the path is MR0A:E0,01
};

inline constexpr std::uint32_t kSession = 0x5E551011;
inline constexpr std::uint32_t kBridge = 0xB71D6E01;

// What the library must see: the arguments in order (addresses as numbers, texts left out).
struct BindingOperation {
    BridgeFunction function;
    std::int32_t (*run)(cPciBrdDynLib& library, Outputs& outputs);
    std::vector<std::uint64_t> (*arguments)(const Outputs& outputs);
};

// `line` is the one that the record of a failure names (of the first call, for lists); 0 for the
// two that never raise. `arguments` are those after the session, as far as the caller gives them: a
// list or text ends with the null array of the first call, whose count is the wrapper's own.
struct WrapperOperation {
    BridgeFunction function;
    std::int32_t line;
    std::int32_t (*run)(cPciBrdWrapper_ex& wrapper, Outputs& outputs);
    std::vector<std::uint64_t> (*arguments)(const Outputs& outputs);
};

// The wrapper's lists, with what the second call's failure names.
struct ListOperation {
    BridgeFunction function;
    std::int32_t lineOfFirstCall;
    std::int32_t lineOfSecondCall;
    // Runs the operation on a list that holds `contents`, and puts there what it holds then; when
    // it raises, too.
    std::int32_t (*run)(cPciBrdWrapper_ex& wrapper, std::vector<std::uint32_t>& contents);
};

extern const std::vector<BindingOperation> kBinding;
extern const std::vector<WrapperOperation> kWrapper;
extern const std::vector<ListOperation> kLists;

// For messages: "ZoPciBrd_OpenSession".
const char* nameOf(BridgeFunction function);

} // namespace operations

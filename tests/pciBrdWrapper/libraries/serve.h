// How each export of the scripted bridge library answers: records the call, asks the script, and
// hands the answer to the outputs of the call.
#pragma once

#include "tests/pciBrdWrapper/libraries/script.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

namespace scripted {

// The script of this library.
Script& script();

// The function of the library behind, or null when there is no library behind. Ends the process
// when there ought to be one and it cannot be had.
void* behind(BridgeFunction function);

// The faults that this call meets; counts the call for each that is for the function.
std::vector<Fault> faultsNow(BridgeFunction function);

inline constexpr std::uint32_t kGreatestLength = 0xFFFFFFFF;

// Single outputs; none at all for functions that have none.
template <typename... Outputs>
class Values {
public:
    explicit Values(Outputs*... outputs) : outputs_(outputs...) {}

    [[nodiscard]] std::optional<std::uint32_t> room() const { return std::nullopt; }
    void write(const Answer& answer) const {
        std::size_t next = 0;
        std::apply([&](auto*... output) { (put(output, answer, next++), ...); }, outputs_);
    }
    void distort(FaultKind, std::int32_t&) const {}

private:
    template <typename Output>
    static void put(Output* output, const Answer& answer, std::size_t index) {
        if (output && index < answer.values.size())
            *output = static_cast<Output>(answer.values[index]);
    }
    std::tuple<Outputs*...> outputs_;
};

// An array or text buffer with the count that goes with it.
template <typename Element>
class Room {
public:
    Room(Element* array, std::uint32_t* count) : array_(array), count_(count), room_(*count) {}

    [[nodiscard]] std::optional<std::uint32_t> room() const { return room_; }
    void write(const Answer& answer) const {
        if (array_ && room_ > 0) {
            if constexpr (std::is_same_v<Element, char>)
                copy(answer.text);
            else
                copy(answer.values);
        }
        if (answer.count)
            *count_ = *answer.count;
    }
    void distort(FaultKind kind, std::int32_t& status) const {
        if (kind == FaultKind::absurd && !array_) {
            *count_ = kGreatestLength;
            status = kPciBrdErrBufferTooSmall;
        } else if (kind == FaultKind::shrink && array_ && status >= 0 && *count_ > 0) {
            array_[--*count_] = 0;
        } else if (kind == FaultKind::endless && array_ && status >= 0) {
            std::fill(std::find(array_, array_ + room_, Element{}), array_ + room_, Element{'0'});
        }
    }

private:
    template <typename Source>
    void copy(const Source& source) const {
        const std::size_t length = std::min<std::size_t>(source.size(), room_);
        std::transform(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(length), array_,
                       [](auto value) { return static_cast<Element>(value); });
    }
    Element* array_;
    std::uint32_t* count_;
    std::uint32_t room_;
};

template <typename Argument>
void note(Call& call, Argument argument) {
    if constexpr (std::is_same_v<Argument, const char*>)
        call.text = argument;
    else if constexpr (std::is_pointer_v<Argument>)
        call.arguments.push_back(reinterpret_cast<std::uintptr_t>(argument));
    else
        call.arguments.push_back(argument);
}

template <typename Outputs, typename... Arguments>
std::int32_t answer(BridgeFunction function, const Outputs& outputs, Arguments... arguments) {
    auto& prepared = script().answers[static_cast<std::size_t>(function)];
    if (!prepared.empty()) {
        const Answer next = std::move(prepared.front());
        prepared.pop_front();
        outputs.write(next);
        return next.status;
    }
    using Target = std::int32_t (*)(Arguments...);
    if (void* const target = behind(function))
        return reinterpret_cast<Target>(target)(arguments...);
    return 0;
}

template <typename Outputs, typename... Arguments>
std::int32_t serve(BridgeFunction function, const Outputs& outputs, Arguments... arguments) {
    Call call{function, {}, {}, outputs.room(), 0};
    (note(call, arguments), ...);

    const std::vector<Fault> faults = faultsNow(function);
    const auto refusal = std::find_if(faults.begin(), faults.end(), [](const Fault& fault) {
        return fault.kind == FaultKind::status;
    });
    if (refusal != faults.end()) {
        call.status = refusal->status;
    } else {
        call.status = answer(function, outputs, arguments...);
        for (const Fault& fault : faults)
            outputs.distort(fault.kind, call.status);
    }
    script().calls.push_back(call);
    return call.status;
}

} // namespace scripted

// How a target says that something does not hold: the fuzzer, and the replay, take an abort as a
// crash and keep the input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void expect(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

} // namespace fuzz

// What a fuzzer or a replay calls with each input. Answers 0.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

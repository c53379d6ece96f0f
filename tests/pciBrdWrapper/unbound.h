// What a binding answers from `first` on when its functions there are not bound.
#pragma once

#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/raised.h"

#include <gtest/gtest.h>

#include <algorithm>

inline bool isClosing(operations::BridgeFunction function) {
    return function == operations::BridgeFunction::CloseSession ||
           function == operations::BridgeFunction::CloseBridge;
}

// Asserts the answers of the binding's operations from number `first` on, and that they leave every
// output alone.
inline void expectUnbound(operations::cPciBrdDynLib& binding, std::size_t first) {
    using operations::Outputs;
    std::size_t refused = 0;
    std::size_t closed = 0;
    for (std::size_t i = first; i < operations::kBinding.size(); ++i) {
        const auto& operation = operations::kBinding[i];
        SCOPED_TRACE(operations::nameOf(operation.function));
        Outputs outputs;
        const std::int32_t status = operation.run(binding, outputs);
        EXPECT_EQ(status, isClosing(operation.function) ? 0 : -313008);
        (isClosing(operation.function) ? closed : refused) += 1;

        EXPECT_EQ(outputs.handle, Outputs::kUntouched);
        EXPECT_EQ(outputs.value, Outputs::kUntouched);
        EXPECT_EQ(outputs.array[0], Outputs::kUntouched);
        EXPECT_EQ(outputs.count, 2U);
        EXPECT_EQ(outputs.bytes[0], 0x77);
        EXPECT_EQ(outputs.words[0], 0x7777);
        EXPECT_EQ(outputs.path.rootBus, 0x0A);
        EXPECT_EQ(outputs.path.hops.size(), 2U);
    }
    EXPECT_EQ(refused + closed, 18 - first);
    EXPECT_EQ(closed, first <= 1 ? 2U : 1U);
}

// The same through the wrapper: what is not bound raises, the two that close do not.
inline void expectUnbound(operations::cPciBrdWrapper_ex& wrapper, std::size_t first) {
    std::size_t raised = 0;
    for (std::size_t i = first; i < operations::kWrapper.size(); ++i) {
        const auto& operation = operations::kWrapper[i];
        SCOPED_TRACE(operations::nameOf(operation.function));
        operations::Outputs outputs;
        const Raised outcome = outcomeOf([&] { return operation.run(wrapper, outputs); });
        EXPECT_EQ(outcome.raised, !isClosing(operation.function));
        EXPECT_EQ(outcome.status, isClosing(operation.function) ? 0 : -313008);
        if (outcome.raised) {
            EXPECT_EQ(outcome.record, wrapperRecord(operation.line));
            ++raised;
        }
    }
    EXPECT_EQ(raised, 18 - first - (first <= 1 ? 2 : 1));
}

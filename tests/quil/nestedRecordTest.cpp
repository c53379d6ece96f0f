// The text of a record that nests as deeply as it may be read in little stack.
#include "quil/jsonText.h"
#include "tests/support/guardedStack.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string nested(std::size_t depth) {
    std::string text;
    for (std::size_t level = 0; level < depth; ++level)
        text += level % 2 == 0 ? R"({"k":)" : "[";
    text += "1";
    for (std::size_t level = depth; level-- > 0;)
        text += level % 2 == 0 ? "}" : "]";
    return text;
}

TEST(JsonText, DeepestNestingFitsASmallStack) {
    for (const std::size_t depth : {1U, 60U, 65U, 66U, 10'000U, 1'000'000U}) {
        SCOPED_TRACE(depth);
        const std::string text = nested(depth);
        testsupport::GuardedStack stack(24 * std::size_t{1024});
        const char* closing = nullptr;
        stack.runThread([&] { closing = nZOQUIL000::findClosingBracket(text.c_str()); });
        EXPECT_EQ(closing, depth <= 65 ? &text.back() : nullptr);
        EXPECT_EQ(stack.changedBehindGuard(), 0U);
    }
}

} // namespace

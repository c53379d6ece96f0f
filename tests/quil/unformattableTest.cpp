// Formats that the C library cannot carry out. The one of Windows prints any wide character
// somehow.
#include "quil/debugPrinter.h"
#include "quil/tConsoleTraceDestination.h"
#include "quil/tTrace.h"
#include "tests/support/debugOutputCapture.h"

#include <gtest/gtest.h>

namespace {

using namespace nZOQUIL000;
using testsupport::debugOutputOf;

TEST(DebugPrinter, FormatThatCannotBeCarriedOutPrintsNothing) {
    const wchar_t unprintable[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(debugOutputOf([&] { debugPrint("before %ls", unprintable); }), "");
}

TEST(Trace, MessageThatCannotBeFormattedIsLeftOut) {
    tTrace own;
    tConsoleTraceDestination console;
    own.setDestination(&console);
    const wchar_t unprintable[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(debugOutputOf([&] { own.write("source", 42, "%ls", unprintable); }), "");
}

} // namespace

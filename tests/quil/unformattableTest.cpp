// Formats that the C library cannot carry out. The one of Windows prints any wide character
// somehow.
#include "quil/debugPrinter.h"
#include "quil/tConsoleTraceDestination.h"
#include "quil/tTrace.h"
#include "tests/support/debugOutputCapture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace nZOQUIL000;
using testsupport::debugOutputOf;

constexpr wchar_t kUnprintable[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};

TEST(DebugPrinter, FormatThatCannotBeCarriedOutPrintsTheTextUpToThere) {
    EXPECT_EQ(debugOutputOf([&] { debugPrint("%s %ls behind", "before", kUnprintable); }),
              "before ");
    EXPECT_EQ(debugOutputOf([&] { debugPrint("%ls", kUnprintable); }), "");
    const std::string longText(600, 'x');
    EXPECT_EQ(debugOutputOf([&] { debugPrint("%s%ls", longText.c_str(), kUnprintable); }),
              longText.substr(0, 511));
}

TEST(Trace, MessageThatCannotBeFormattedIsWrittenUpToThere) {
    tTrace own;
    tConsoleTraceDestination console;
    own.setDestination(&console);
    const std::string prefix = "[  zotavpci|                          source|  42] ";
    EXPECT_EQ(debugOutputOf([&] { own.write("source", 42, "at %d %ls", 7, kUnprintable); }),
              prefix + "at 7 \n");
    EXPECT_EQ(debugOutputOf([&] { own.write("source", 42, "%ls", kUnprintable); }), prefix + "\n");
    const std::string longText(600, 'x');
    EXPECT_EQ(
        debugOutputOf([&] { own.write("source", 42, "%s%ls", longText.c_str(), kUnprintable); }),
        prefix + longText.substr(0, 510 - prefix.size()) + "\n");
}

} // namespace

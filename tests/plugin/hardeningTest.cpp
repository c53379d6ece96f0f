// What ships is built so that a fault in it ends the process rather than being of use to somebody.
// Read from the files themselves.
#include "tests/support/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

struct Shipped {
    const char* name;
    const char* file;
    bool isProgram;
};

void PrintTo(const Shipped& shipped, std::ostream* stream) {
    *stream << shipped.file;
}

class Hardening : public testing::TestWithParam<Shipped> {
protected:
    // What readelf says of the file, asked with these options.
    static std::string readelf(const std::string& options) {
        const auto listed =
            testsupport::runCommand("readelf -W " + options + " '" + GetParam().file + "'");
        EXPECT_EQ(listed.exitStatus, 0) << listed.output;
        return listed.output;
    }

    static std::string imported() {
        const auto listed = testsupport::runCommand("nm -D --undefined-only '" +
                                                    std::string(GetParam().file) + "'");
        EXPECT_EQ(listed.exitStatus, 0) << listed.output;
        return listed.output;
    }
};

TEST_P(Hardening, AddressesAreResolvedAtOnceAndWriteProtectedAfterwards) {
    EXPECT_THAT(readelf("--program-headers"), HasSubstr("GNU_RELRO"));
    const std::string dynamic = readelf("--dynamic");
    EXPECT_THAT(dynamic, ContainsRegex("\\(FLAGS\\) +BIND_NOW"));
    EXPECT_THAT(dynamic, ContainsRegex("\\(FLAGS_1\\) +Flags:.* NOW"));
    EXPECT_THAT(dynamic, Not(HasSubstr("TEXTREL")));
}

TEST_P(Hardening, CodeStandsAnywhereInMemory) {
    EXPECT_THAT(readelf("--file-header"), ContainsRegex("Type: +DYN"));
    if (GetParam().isProgram) {
        EXPECT_THAT(readelf("--dynamic"), ContainsRegex("\\(FLAGS_1\\) +Flags:.* PIE"));
    }
}

TEST_P(Hardening, StackIsNoCodeAndNoSegmentIsWritableCode) {
    const std::string headers = readelf("--program-headers");
    EXPECT_THAT(headers, ContainsRegex("GNU_STACK +0x[0-9a-f x]+ RW "));
    EXPECT_THAT(headers, Not(HasSubstr("RWE")));
}

TEST_P(Hardening, StackIsProtected) {
    EXPECT_THAT(imported(), HasSubstr(" __stack_chk_fail@"));
}

TEST_P(Hardening, LibrariesComeFromBesideTheFileOnly) {
    const std::string dynamic = readelf("--dynamic");
    EXPECT_THAT(dynamic, Not(HasSubstr("(RPATH)")));
    if (dynamic.find("(RUNPATH)") != std::string::npos) {
        EXPECT_THAT(dynamic, ContainsRegex("runpath: \\[\\$ORIGIN(:\\$ORIGIN/[^:]+)*\\]"));
    }
}

#ifdef TAV_OPTIMISED
TEST_P(Hardening, SizesAreCheckedByTheCLibrary) {
    EXPECT_THAT(imported(), ContainsRegex(" __[a-z]+printf_chk@"));
}
#endif

#ifdef __x86_64__
// A program's first instruction is the C library's, which says nothing of where branches may land.
TEST_P(Hardening, ControlFlowIsMarked) {
    const std::string notes = readelf("--notes");
    EXPECT_THAT(notes, ContainsRegex("x86 feature:.*SHSTK"));
    if (!GetParam().isProgram) {
        EXPECT_THAT(notes, ContainsRegex("x86 feature: IBT"));
        EXPECT_THAT(readelf("--dynamic"), Not(ContainsRegex("\\((INIT|FINI)\\)")));
    }
}
#endif

INSTANTIATE_TEST_SUITE_P(Of, Hardening,
                         testing::Values(Shipped{"zotavpci", ZOTAVPCI_FILE, false},
                                         Shipped{"zopcibrd", ZOPCIBRD_FILE, false},
                                         Shipped{"tavctl", TAVCTL_FILE, true}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace

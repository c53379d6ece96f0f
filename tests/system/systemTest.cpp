// Runs every whole-system case; with --rewrite, makes what happens now what is expected.
#include "tests/support/temporaryFolder.h"
#include "tests/system/systemCase.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <exception>

namespace {

using testsupport::TemporaryFolder;
using testsystem::CaseResult;
using testsystem::errorText;
using testsystem::SystemCase;

void expectListing(const SystemCase& each, const CaseResult& result) {
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(result.output, each.expectedOutput());
    EXPECT_EQ(result.names, each.expectedNames());
}

class SystemCaseTest : public testing::Test {
public:
    explicit SystemCaseTest(SystemCase each) : case_(std::move(each)) {}

    void TestBody() override {
        run(SystemCase::Way::options);
        run(SystemCase::Way::configuration);
    }

private:
    void run(SystemCase::Way way) {
        SCOPED_TRACE(way == SystemCase::Way::options ? "told by options" : "told by configuration");
        const TemporaryFolder state;
        case_.prepare(state.path());
        if (case_.expectsError()) {
            const CaseResult result = case_.run(state.path(), false, way);
            EXPECT_EQ(result.output, "");
            EXPECT_EQ(errorText(result), case_.expectedError());
            EXPECT_EQ(result.names, case_.expectedNames());
            return;
        }
        if (way == SystemCase::Way::configuration) {
            expectLook(case_.run(state.path(), true, way));
            return;
        }
        // What was found once is found again under the same names.
        for (int start = 1; start <= 3; ++start)
            expectListing(case_, case_.run(state.path(), true, way));
    }

    // A bus that is recorded is looked at, and no name is stored.
    void expectLook(CaseResult result) const {
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        const std::string notStored = R"("stored":false)";
        for (std::size_t at = 0; (at = result.output.find(notStored, at)) != std::string::npos;)
            result.output.replace(at, notStored.size(), R"("stored":true)");
        EXPECT_EQ(result.output, case_.expectedOutput());
        EXPECT_EQ(result.names, case_.namesBefore());
    }

    SystemCase case_;
};

void rewriteAll() {
    for (const SystemCase& each : SystemCase::all()) {
        const TemporaryFolder first;
        each.prepare(first.path());
        const CaseResult plain = each.run(first.path(), false, SystemCase::Way::options);
        const TemporaryFolder second;
        each.prepare(second.path());
        each.rewrite(each.run(second.path(), true, SystemCase::Way::options), plain);
        std::printf("rewrote %s\n", each.name().c_str());
    }
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    try {
        if (argc > 1 && std::strcmp(argv[1], "--rewrite") == 0) {
            rewriteAll();
            return 0;
        }
        for (const SystemCase& each : SystemCase::all())
            testing::RegisterTest("WholeSystem", each.name().c_str(), nullptr, nullptr, __FILE__,
                                  __LINE__, [each] { return new SystemCaseTest(each); });
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "whole-system cases: %s\n", exception.what());
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    if (!testing::GTEST_FLAG(list_tests) &&
        testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::fputs("whole-system cases: the filter leaves none to run\n", stderr);
        return 1;
    }
    return result;
}

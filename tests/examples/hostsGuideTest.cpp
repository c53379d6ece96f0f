// The guide to hosts, whose hosts are compiled and run. Not of a checked build: a checked plug-in
// finds what checks it in its host, and these hosts are not checked.
#include "tests/examples/exampleRun.h"

#include <gmock/gmock.h>

namespace {

TEST(HostsGuide, EveryHostIsBuiltAndPrintsWhatItSays) {
    const testexamples::ExampleFile file =
        testexamples::readExamples(TAV_SOURCE_DIR "/docs/hosts.md");
    EXPECT_THAT(file.notRun, testing::IsEmpty());
    testexamples::ExampleRun run;
    std::size_t commands = 0;
    for (const testexamples::Example& example : file.examples) {
        for (const std::string& complaint : run.run(example))
            ADD_FAILURE() << "docs/hosts.md:" << complaint;
        commands += example.commands.size();
    }
    EXPECT_GE(commands, 18U);
}

} // namespace

// Every example of the README, the guides and the manual pages does what it says.
#include "tests/examples/exampleRun.h"
#include "tests/support/fileFolder.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

namespace fs = std::filesystem;
using namespace testexamples;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<fs::path> filesIn(const fs::path& folder, const std::string& extension) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension)
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Answers how many commands were run.
std::size_t runDocument(const fs::path& path) {
    const ExampleFile file = readExamples(path);
    EXPECT_THAT(file.notRun, IsEmpty()) << path << " shows command lines that no test runs";
    ExampleRun run;
    std::size_t commands = 0;
    for (const Example& example : file.examples) {
        for (const std::string& complaint : run.run(example))
            ADD_FAILURE() << path.string() << ":" << complaint;
        commands += example.commands.size();
    }
    return commands;
}

TEST(Examples, OfTheReadmeAreTrue) {
    EXPECT_GT(runDocument(TAV_SOURCE_DIR "/README.md"), 0U);
    for (const char* other : {"CHANGELOG.md", "CONTRIBUTING.md"})
        runDocument(fs::path(TAV_SOURCE_DIR) / other);
}

TEST(Examples, OfTheGuidesAreTrue) {
    std::size_t commands = 0;
    for (const fs::path& file : filesIn(TAV_SOURCE_DIR "/docs", ".md")) {
        if (file.filename() != "hosts.md") // which has a test of its own
            commands += runDocument(file);
    }
    EXPECT_GT(commands, 0U);
}

TEST(Examples, OfTheManualPagesAreTrue) {
    const auto files = filesIn(TAV_BINARY_DIR "/man", ".1");
    EXPECT_FALSE(files.empty());
    for (const fs::path& file : files)
        EXPECT_GT(runDocument(file), 0U) << file << " has no example";
}

// The runner itself: a document with a wrong example must not pass.
struct Document {
    testsupport::FileFolder folder;

    [[nodiscard]] ExampleFile read(const std::string& name, const std::string& text) const {
        return readExamples(folder.write(name, text));
    }

    [[nodiscard]] std::size_t complaints(const std::string& text) const {
        ExampleRun run;
        std::size_t count = 0;
        for (const Example& example : read("a.md", text).examples)
            count += run.run(example).size();
        return count;
    }
};

TEST(ExampleRunner, FindsWrongOutputAndWrongStatus) {
    const Document document;
    EXPECT_EQ(document.complaints("```console\n$ echo a\na\n$ echo b\nb\n```\n"), 0U);
    EXPECT_EQ(document.complaints("```console\n$ echo a\nb\n$ echo b\n```\n"), 1U);
    EXPECT_EQ(document.complaints("```console\n$ false\n```\n"), 1U);
    EXPECT_EQ(document.complaints("```console\n$ echo found; false\nfound\n```\n"), 0U);
    EXPECT_EQ(document.complaints("```console\n$ (exit 2)\n$ echo $?\n2\n```\n"), 0U);
    EXPECT_EQ(document.complaints("```console\n$ (exit 2)\n$ echo $?\n3\n```\n"), 1U);
    EXPECT_EQ(document.complaints("```console\n$ exit 0\n$ echo a\n```\n"), 1U);
}

TEST(ExampleRunner, DotsStandForAnyLines) {
    EXPECT_TRUE(matchesLines({"a", "b", "c"}, {"a", "...", "c"}));
    EXPECT_TRUE(matchesLines({"a", "c"}, {"a", "...", "c"}));
    EXPECT_TRUE(matchesLines({"a", "b"}, {"a", "..."}));
    EXPECT_FALSE(matchesLines({"a", "b"}, {"a", "...", "c"}));
    EXPECT_FALSE(matchesLines({"a", "b"}, {"a"}));
    EXPECT_FALSE(matchesLines({"a"}, {"a", "b"}));
}

TEST(ExampleRunner, EditsChangeWhatACommandWrote) {
    const Document document;
    EXPECT_EQ(
        document.complaints("```console\n$ printf '[A]\\nx = 1\\n[B]\\nx = 2\\n' > f.ini\n```\n"
                            "```ini\n; in f.ini, [B]\nx = 3\ny = 4\n```\n"
                            "```console\n$ cat f.ini\n[A]\nx = 1\n[B]\ny = 4\nx = 3\n```\n"),
        0U);
}

TEST(ExampleRunner, LongCommandsGoOnInTheNextLine) {
    const Document document;
    EXPECT_EQ(document.complaints("```console\n$ echo a \\\n    b\na b\n```\n"), 0U);
}

TEST(ExampleRunner, FindsCommandLinesThatNobodyRuns) {
    const Document document;
    EXPECT_THAT(
        document.read("a.md", "```\ntavctl list\n```\n    tavctl tree\n`tavctl x`\n").notRun,
        ElementsAre("2: tavctl list", "4: tavctl tree"));
    EXPECT_THROW(static_cast<void>(document.read("a.md", "```console\nno prompt\n```\n")),
                 std::runtime_error);
}

TEST(ExampleRunner, ReadsManualPages) {
    const Document document;
    const ExampleFile file =
        document.read("a.1", ".SH X\n.EX\n$ echo \\-\\-a \\eb\n\\&.c\n.EE\ntext\n");
    ASSERT_EQ(file.examples.size(), 1U);
    EXPECT_EQ(file.examples[0].commands.at(0).text, "echo --a \\b");
    EXPECT_THAT(file.examples[0].commands.at(0).output, ElementsAre(".c"));
}

} // namespace

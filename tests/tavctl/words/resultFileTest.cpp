#include "tavctl/words/resultFile.h"

#include "platform/utf8Path.h"
#include "tavctl/words/failure.h"
#include "tests/support/fileText.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace {

namespace fs = std::filesystem;
using tavctl::FailureException;
using tavctl::writeResult;
using testsupport::TemporaryFolder;

std::string failureOf(const std::string& text, const tavctl::ResultTarget& target) {
    try {
        writeResult(text, target);
        return {};
    } catch (const FailureException& exception) {
        EXPECT_EQ(exception.exitStatus(), tavctl::ExitStatus::failed);
        return exception.what();
    }
}

std::ptrdiff_t filesIn(const TemporaryFolder& folder) {
    return std::distance(fs::directory_iterator(folder.path()), {});
}

TEST(ResultFile, IsWrittenAsItIs) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "result";
    writeResult("a\r\n\033", {platform::utf8Text(file), false});
    EXPECT_EQ(testsupport::fileText(file), "a\r\n\033");
    EXPECT_EQ(filesIn(folder), 1) << "nothing is left beside it";
}

TEST(ResultFile, ThatIsThereIsReplacedOnlyOnDemand) {
    const TemporaryFolder folder;
    const fs::path file = folder.file("result", "mine");
    EXPECT_EQ(failureOf("new", {platform::utf8Text(file), false}),
              "write result (" + platform::utf8Text(file) +
                  "): the file exists; --force replaces it");
    EXPECT_EQ(testsupport::fileText(file), "mine");
    writeResult("new", {platform::utf8Text(file), true});
    EXPECT_EQ(testsupport::fileText(file), "new");
    EXPECT_EQ(filesIn(folder), 1);
}

TEST(ResultFile, ThatCannotBeMadeIsNamedWithTheReason) {
    const TemporaryFolder folder;
    const std::string file = platform::utf8Text(folder.path() / "none" / "result");
    EXPECT_TRUE(failureOf("new", {file, true}).starts_with("write result (" + file + "): "));
    const std::string itself = platform::utf8Text(folder.path());
    EXPECT_TRUE(failureOf("new", {itself, true}).starts_with("write result (" + itself + "): "));
    EXPECT_EQ(filesIn(folder), 0);
}

TEST(ResultFile, RequireFreeTellsBeforeTheWork) {
    const TemporaryFolder folder;
    const std::string file = platform::utf8Text(folder.file("result", "mine"));
    EXPECT_THROW(tavctl::requireFree({file, false}), FailureException);
    EXPECT_NO_THROW(tavctl::requireFree({file, true}));
    EXPECT_NO_THROW(tavctl::requireFree({file + "x", false}));
    EXPECT_NO_THROW(tavctl::requireFree({}));
}

} // namespace

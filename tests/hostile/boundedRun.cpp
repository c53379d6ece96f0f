#include "tests/hostile/boundedRun.h"

#include "tests/support/fileText.h"
#include "tests/support/program.h"
#include "tests/support/temporaryFolder.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace testhostile {

BoundedResult runBounded(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments, unsigned processorSeconds) {
    const testsupport::TemporaryFolder folder;
    const std::filesystem::path report = folder.path() / "report";
    const std::filesystem::path output = folder.path() / "output";
    const std::filesystem::path error = folder.path() / "error";
    std::vector<std::string> words{report.string(), output.string(), error.string(),
                                   std::to_string(processorSeconds), program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const auto run = testsupport::runProgram(BOUNDED_RUNNER_FILE, words);
    BoundedResult result;
    std::size_t kilobytes = 0;
    std::ifstream stream(report);
    stream >> result.hung >> result.exitStatus >> result.signal >> kilobytes;
    if (run.exitStatus != 0 || !stream)
        throw std::runtime_error("cannot run " + program.string() + ": " + run.error);
    result.peak = kilobytes * 1024;
    result.output = testsupport::fileText(output);
    result.error = testsupport::fileText(error);
    return result;
}

} // namespace testhostile

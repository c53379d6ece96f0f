// Recorded machines by the thousand: one is forgotten before the next but few is read.
#include "tests/hostile/boundedRun.h"
#include "tests/hostile/memory.h"
#include "tests/support/environmentValue.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

namespace {

namespace fs = std::filesystem;
using testhostile::runBounded;

class ManyRecordings : public testing::Test {
protected:
    // So many of one machine's recording, under names of their own.
    [[nodiscard]] fs::path lab(int count) const {
        const fs::path folder = folder_.path() / std::to_string(count);
        fs::create_directory(folder);
        const fs::path first = folder / "host0.dump";
        fs::copy_file(TAV_SOURCE_DIR "/samples/full-bus.dump", first);
        for (int i = 1; i < count; ++i)
            fs::create_hard_link(first, folder / ("host" + std::to_string(i) + ".dump"));
        return folder;
    }

    [[nodiscard]] std::size_t peakOf(std::vector<std::string> arguments, int exitStatus = 0) const {
        arguments.insert(arguments.end(),
                         {"--json", "--descriptions", TAV_SOURCE_DIR "/descriptions"});
        const auto result = runBounded(TAVCTL_FILE, arguments);
        EXPECT_FALSE(result.hung);
        EXPECT_EQ(result.exitStatus, exitStatus) << result.error;
        EXPECT_TRUE(nlohmann::json::accept(result.output));
        return result.peak;
    }

    testsupport::TemporaryFolder folder_;
    // The address sanitizer keeps what was freed, up to a quarter of a gigabyte of it, which many
    // recordings fill and few do not. Programs built without it do not look at this.
    testsupport::EnvironmentValue forgetsWhatWasFreed_{
        "ASAN_OPTIONS", "quarantine_size_mb=0:thread_local_quarantine_size_kb=0"};
};

constexpr int kFew = 100;
constexpr int kMany = 2'000;
// For the path of each, which is known before the first is read.
constexpr std::size_t kForEach = 1'500;

TEST_F(ManyRecordings, TakeNoMoreMemoryThanFewInAList) {
    const std::size_t few = peakOf({"list", "--dump", lab(kFew).string()});
    const std::size_t many = peakOf({"list", "--dump", lab(kMany).string()});
    EXPECT_LT(many, few + testhostile::kMegabyte + kForEach * kMany);
}

} // namespace

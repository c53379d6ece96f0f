// However many models are explained at once, each is explained as if it were alone.
#include "pcibus/dump.h"
#include "tavctl/explain/explain.h"
#include "tavctl/explain/nearFunctions.h"
#include "tavctl/match/busBridges.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/explain/randomMachine.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <stdexcept>

namespace {

using namespace tavctl;
using lint::Description;

std::shared_ptr<const pcibus::Bus> busOf(const testtavctl::RandomMachine& machine) {
    return std::make_shared<const pcibus::Bus>(pcibus::parseDump(machine.bus.dump(), "machine"));
}

std::vector<std::string> explanationsOf(const std::vector<std::string>& files,
                                        const std::shared_ptr<const pcibus::Bus>& bus) {
    explain::LoadedModels models;
    for (const std::string& file : files)
        models.add(Description(file, Description::Text::unwanted));
    ModelMatcher matcher(recordedBus(bus));
    std::vector<std::string> texts;
    explain::explain(std::move(models), matcher, bus, [&](const explain::Explanation& each) {
        texts.push_back(explain::explanationAsJson(each));
    });
    return texts;
}

TEST(ExplainMany, ModelsThatAreAlikeAreExplainedAsEachAlone) {
    std::mt19937 random(22); // NOLINT(bugprone-random-generator-seed): the same each time
    std::size_t withChanges = 0;
    for (int i = 0; i < 60; ++i) {
        const testsupport::FileFolder folder;
        const auto made = testtavctl::randomMachine(random);
        const auto bus = busOf(made);
        std::vector<std::string> files;
        for (const char* name : {"one", "two", "three"}) {
            const auto state = random;
            for (const char* twin : {"", " again", " and again"}) {
                random = state; // the same but for its name
                const std::string model = std::string(name) + twin;
                files.push_back(folder.write(model + ".ini",
                                             testtavctl::randomDescription(made, random, model)));
            }
        }
        const auto all = explanationsOf(files, bus);
        ASSERT_EQ(all.size(), files.size());
        for (std::size_t file = 0; file < files.size(); ++file) {
            EXPECT_EQ(all[file], explanationsOf({files[file]}, bus).at(0));
            withChanges += all[file].find(R"("changes":[{)") != std::string::npos ? 1U : 0U;
        }
    }
    EXPECT_GT(withChanges, 30U);
}

TEST(ExplainMany, WhoeverIsToldMayRaise) {
    std::mt19937 random(23); // NOLINT(bugprone-random-generator-seed): the same each time
    const testsupport::FileFolder folder;
    const auto made = testtavctl::randomMachine(random);
    const auto bus = busOf(made);
    explain::LoadedModels models;
    for (const char* name : {"one.ini", "two.ini"})
        models.add(
            Description(folder.write(name, testtavctl::randomDescription(made, random, name))));
    ModelMatcher matcher(recordedBus(bus));
    int told = 0;
    EXPECT_THROW(explain::explain(std::move(models), matcher, bus,
                                  [&](const explain::Explanation&) {
                                      ++told;
                                      throw std::runtime_error("the disk is full");
                                  }),
                 std::runtime_error);
    EXPECT_EQ(told, 1);
}

TEST(NearFunctions, AreThoseThatLookingAtEachFinds) {
    std::mt19937 random(24); // NOLINT(bugprone-random-generator-seed): the same each time
    // 1, and 1 with its bytes exchanged.
    const auto number = [&] { return std::array<std::uint16_t, 3>{0, 1, 0x100}[random() % 3]; };
    const auto mayBe = [](std::uint16_t has, std::uint16_t written) {
        return has == written || has == static_cast<std::uint16_t>(written << 8 | written >> 8);
    };
    std::vector<pcibus::PciFunction> functions;
    for (unsigned i = 0; i < 200; ++i) {
        pcibus::PciFunction function;
        function.bus = 0;
        function.device = static_cast<std::uint8_t>(i / 8);
        function.function = static_cast<std::uint8_t>(i % 8);
        function.vendorId = number();
        function.deviceId = number();
        function.subsystemVendorId = number();
        function.subsystemId = number();
        functions.push_back(function);
    }
    const pcibus::Bus bus(std::move(functions), pcibus::addressText);
    const explain::NearFunctions near(bus);
    for (int i = 0; i < 50; ++i) {
        const pcibus::PciIds ids{number(), number(), number(), number()};
        std::vector<std::size_t> wanted;
        for (std::size_t at = 0; at < bus.functions().size(); ++at) {
            const pcibus::PciIds has = bus.functions()[at].ids();
            if ((mayBe(has.vendor, ids.vendor) && mayBe(has.device, ids.device)) ||
                (has.vendor == ids.device && has.device == ids.vendor) ||
                explain::sameIds(has, ids) == 3)
                wanted.push_back(at);
        }
        EXPECT_EQ(near.find(ids), wanted);
    }
}

} // namespace

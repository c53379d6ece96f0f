// Boxes that stand where the description of another one looks for bridges, and descriptions that
// the machine's own bridges must keep out of the way of.
#include "tavctl/mock/mock.h"
#include "tavctl/mock/planFile.h"
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/sample.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using testing::HasSubstr;

// A box whose second port is described below the first one; three labels for two of its three
// ports.
std::string nestingBox(const std::string& ids, const std::string& more) {
    const std::string port = "Vid = 9999\nPid = 2\nSsVid = 0\nSsPid = 0\nTraversalMapFromAnchor = ";
    return "[UpstreamTAV]\nModel = Nest\nDeviceCategory = PCI\nInternalBridges = \"\"\n"
           "ConnectorLabels = UP,A,B\nDownstreamPorts = 1,2,3\nHasUpstreamPort = 1\n" +
           more + "[Anchor]\nPciHeaderType = 1\n" + ids +
           "[UpstreamPort]\nIDsSameAs = Anchor\nTraversalMapFromAnchor = "
           "\"\"\n[DownstreamPort1]\n" +
           port + "d0f0\n[DownstreamPort2]\n" + port + "d0f0,d0f0\n[DownstreamPort3]\n" + port +
           "d1f0\n";
}

constexpr const char* kOwnIds = "Vid = 9999\nPid = 1\nSsVid = 0\nSsPid = 0\n";

class BoxesInTheWay : public testing::Test {
protected:
    std::string made(const std::string& description, const std::string& plan,
                     const std::string& on = {}, mock::Form form = mock::Form::dump) {
        const std::string folder = tavctltest::kSampleDescriptions + "/PCI Hardware Descriptions/";
        const mock::Catalog catalog(
            {folder_.write("nest.ini", description), folder + "tav-w7-wide-switch-box.ini"});
        try {
            std::optional<mock::RecordedMachine> recorded;
            if (!on.empty())
                recorded = mock::readRecordedMachine(on);
            return mock::makeBus(mock::readPlan(plan, "plan").front(), catalog,
                                 recorded ? &*recorded : nullptr, "a test", form)
                .text;
        } catch (const FailureException& exception) {
            return exception.failure().sentence();
        }
    }

    testsupport::FileFolder folder_;
};

TEST_F(BoxesInTheWay, AreToldWhenAnotherBoxTakesThemForPorts) {
    const std::string alone = "[Box N]\nModel = Nest\nMissing = DownstreamPort2\n";
    const std::string wide = "[Box W]\nModel = TAV-W7 Wide Switch Box\nIn = N:A\n";
    EXPECT_THAT(made(nestingBox(kOwnIds, ""), alone), HasSubstr("# 01:00.0 N: Nest"));
    EXPECT_THAT(made(nestingBox(kOwnIds, ""), alone + wide),
                HasSubstr("plan:1:2): the plug-in lists it with other ports than planned"));
    EXPECT_THAT(
        made(nestingBox(kOwnIds, "LinkWidthPerLabel = 4\n"), alone + wide),
        HasSubstr("plan:1:2): the plug-in does not list it: a port asks for 2 labels, and 1 "
                  "is left"));
}

TEST_F(BoxesInTheWay, AreToldWhenARecordedDeviceIsLost) {
    testsupport::BusBuilder machine;
    const auto root = machine.rootPort(0, 2, 0, {0x8086, 0x1234, 0, 0});
    const auto up = machine.bridge(root, 0, 0, {0x9999, 1, 0, 0}, 4);
    machine.bridge(up, 0, 0, {0x9999, 2, 0, 0}, 4);
    machine.bridge(up, 1, 0, {0x9999, 2, 0, 0}, 4);
    const std::string on = folder_.write("machine.dump", machine.dump());
    const std::string description = nestingBox(kOwnIds, "LinkWidthPerLabel = 4\n");
    EXPECT_THAT(made(description, "[Box W]\nModel = TAV-W7 Wide Switch Box\n", on),
                HasSubstr("W: TAV-W7 Wide Switch Box"));
    EXPECT_THAT(made(description, "[Box W]\nModel = TAV-W7 Wide Switch Box\nIn = TAV1:A\n", on),
                HasSubstr("(TAV1): with the boxes added the plug-in does not list it any more"));
}

// Root ports are given identifiers that no description asks for.
TEST_F(BoxesInTheWay, AreNotTheMachinesOwnBridges) {
    const std::string ids = "Vid = 8086\nPid = 3420\nSsVid = 8086\nSsPid = 0\n";
    EXPECT_THAT(made(nestingBox(ids, ""), "[Box N]\nModel = Nest\nMissing = DownstreamPort2\n"),
                testing::AllOf(HasSubstr("\n00:01.0 0604: 8086:3421\n"),
                               HasSubstr("\n01:00.0 0604: 8086:3420\n")));
}

TEST_F(BoxesInTheWay, CannotBeQemusWhereItHasOneLinkWidthOnly) {
    EXPECT_THAT(made(nestingBox("Vid = 104C\nPid = 8232\nSsVid = 0\nSsPid = 0\n",
                                "LinkWidthPerLabel = 4\n"),
                     "[Box N]\nModel = Nest\nMissing = DownstreamPort2\n", {},
                     mock::Form::qemuOptions),
                HasSubstr("the link of QEMU's x3130-upstream has the width that it has"));
}

} // namespace

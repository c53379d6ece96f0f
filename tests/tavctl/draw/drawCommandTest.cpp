// tavctl draw as a person runs it, with Graphviz.
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"

#include <algorithm>
#include <filesystem>

namespace {

using namespace tavctltest;
using testsupport::FileFolder;

std::string optionsOf(const FileFolder& folder) {
    return kDump + kDescriptions + "--state " +
           std::filesystem::path(folder.file("x")).parent_path().string() + " ";
}

TEST(DrawCommand, WritesAnSvgFileWithEveryDeviceAndConnector) {
    const FileFolder folder;
    const std::string file = folder.file("bus.svg");
    EXPECT_TRUE(says(runTavctl("draw -o " + file + " " + optionsOf(folder)), 0, ""));
    const std::string svg = folder.read("bus.svg");
    EXPECT_TRUE(svg.starts_with("<?xml"));
    EXPECT_TRUE(svg.ends_with("</svg>\n"));
    for (const char* text :
         {"switchboxes.dump", "4 devices", "TAV1", "TAV2", "TAV3", "TAVCard1",
          "TAV&#45;W7 Wide Switch Box", "LEFT", "RIGHT", "C4", "up to x16 16 GT/s"})
        EXPECT_NE(svg.find(">" + std::string(text)), std::string::npos) << text;
    EXPECT_TRUE(says(runTavctl("draw -o " + file + " " + optionsOf(folder)), 3,
                     "write result (" + file + "): the file exists; --force replaces it"));
    EXPECT_TRUE(says(runTavctl("draw --force -o " + file + " " + optionsOf(folder)), 0, ""));
    EXPECT_EQ(folder.read("bus.svg"), svg);
}

// A browser shows the title of the innermost part that has one.
TEST(DrawCommand, SvgTellsByTitlesWhatWasCut) {
    const FileFolder folder;
    const std::string ids =
        folder.write("pci.ids", "8086  Maker\n\t10d3  A Card With a Name That Goes On and On\n");
    for (const char* kind : {"", "--all ", "--front "}) {
        const std::string svg = outputOf("draw --pci-ids " + ids + " " + kind + optionsOf(folder));
        EXPECT_NE(svg.find("<title>switchboxes.dump</title>"), std::string::npos) << kind;
        EXPECT_NE(svg.find("<title>03:00.0 Maker A Card With a Name That Goes On and On"),
                  std::string::npos)
            << kind;
        EXPECT_NE(svg.find("<title>TAV1*: TAV&#45;B3 Switch Box (01:00.0)</title>"),
                  std::string::npos)
            << kind;
        for (const char* none : {"<title>d0", "<title>tavctl", "xlink:title", "href=", "<a"})
            EXPECT_EQ(svg.find(none), std::string::npos) << kind << none;
    }
}

TEST(DrawCommand, FrontAndAllAreTwoDrawings) {
    EXPECT_TRUE(says(runTavctl("draw --front --all " + kDump), 2, "--front"));
}

TEST(DrawCommand, OfNoDevicesIsADrawingThatSaysSo) {
    const FileFolder folder;
    const std::string empty = folder.write("empty.dump", "");
    const auto result = runTavctl("draw --dump " + empty + " " + kDescriptions + "--state " +
                                  std::filesystem::path(empty).parent_path().string());
    EXPECT_TRUE(says(result, 0, "no described device is present</text>"));
}

TEST(DrawCommand, DotNeedsNoGraphviz) {
    const FileFolder folder;
    const auto result = testsupport::runCommand(
        "PATH=/nonexistent " TAVCTL_FILE " draw --format dot " + optionsOf(folder) + "2>&1");
    EXPECT_TRUE(says(result, 0, "digraph tavctl {\n"));
}

TEST(DrawCommand, MissingGraphvizIsNamed) {
    const FileFolder folder;
    const auto result = testsupport::runCommand("PATH=/nonexistent " TAVCTL_FILE " draw " +
                                                optionsOf(folder) + "2>&1");
    EXPECT_TRUE(says(result, 3,
                     "tavctl: lay out the drawing (dot): No such file or directory; Graphviz does "
                     "this, --format dot works without it\n"));
}

TEST(DrawCommand, FailingGraphvizIsNamed) {
    const FileFolder folder;
    const std::string program = folder.write("dot", "#!/bin/sh\nexit 7\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const auto result =
        testsupport::runCommand("PATH=" + std::filesystem::path(program).parent_path().string() +
                                " " TAVCTL_FILE " draw " + optionsOf(folder) + "2>&1");
    EXPECT_TRUE(says(result, 3, "(dot): it ended with status 7; "));
}

TEST(DrawCommand, GraphvizIsNotTakenFromTheCurrentFolder) {
    const FileFolder folder;
    const std::string program = folder.write("dot", "#!/bin/sh\necho planted\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const std::string here =
        "cd " + std::filesystem::path(program).parent_path().string() + " && PATH=";
    for (const char* path : {":/nonexistent", "."})
        EXPECT_TRUE(says(testsupport::runCommand(here + path + " " TAVCTL_FILE " draw " +
                                                 optionsOf(folder) + "2>&1"),
                         3, "(dot): No such file or directory; "))
            << path;
    EXPECT_TRUE(says(testsupport::runCommand(here + ".:$PATH " TAVCTL_FILE " draw " +
                                             optionsOf(folder) + "2>&1"),
                     0, "</svg>"));
}

TEST(DrawCommand, UnknownFormatIsWrongUsage) {
    EXPECT_TRUE(says(runTavctl("draw --format png"), 2, "--format: png not in {svg,dot}"));
}

TEST(DrawCommand, PartThatIsNotThereExitsWithOne) {
    const FileFolder folder;
    EXPECT_TRUE(says(runTavctl("draw -s 09:09.0 " + optionsOf(folder)), 1,
                     "there is no function at this address"));
}

} // namespace

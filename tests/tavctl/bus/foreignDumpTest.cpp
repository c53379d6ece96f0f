// Files that are no dumps, given for one to every command that takes one: each is refused, and what
// it is is said where its beginning shows that.
#include "tests/support/fileFolder.h"
#include "tests/tavctl/runTavctl.h"
#include "tests/tavctl/sample.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace tavctltest;

struct Foreign {
    const char* name;
    std::string content;
    const char* kind;
};

// The sample's beginning, two bytes a character.
std::string inUtf16(bool bigEndian) {
    std::string text = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : testsupport::fileText(kSample).substr(0, 2000))
        text += bigEndian ? "\0"s + c : c + "\0"s;
    return text;
}

std::vector<Foreign> foreignFiles() {
    return {
        {"gzip", "\x1F\x8B\x08\0\0\0\0\0\0\x03\x03\0"s, "a file compressed with gzip"},
        {"bzip2", "BZh9\x31\x41\x59\x26\x53\x59\0\0"s, "a file compressed with bzip2"},
        {"xz", "\xFD\x37zXZ\0\0\x04"s, "a file compressed with xz"},
        {"zip", "PK\x03\x04\x14\0"s, "a zip archive"},
        {"utf16", inUtf16(false), "text in UTF-16"},
        {"utf16be", inUtf16(true), "text in UTF-16"},
        {"program", testsupport::fileText(TAVCTL_FILE).substr(0, 100000), "a program"},
        {"readme", testsupport::fileText(kProject / "README.md"), "no function"},
        {"pointer", "version https://git-lfs.github.com/spec/v1\noid sha256:00\nsize 3\n",
         "a Git LFS pointer in place of the file"},
        {"page", "<!DOCTYPE html>\n<p>Nothing here.</p>\n", "a web page"},
        {"json", outputOf("lint --rules --json"), "JSON"},
    };
}

TEST(ForeignDump, IsRefusedByEveryCommandWithWhatItIs) {
    const testsupport::FileFolder folder;
    fs::create_directory(folder.file("state"));
    const std::string state = "--state " + folder.file("state") + " ";
    for (const Foreign& foreign : foreignFiles()) {
        const std::string file = folder.write(foreign.name, foreign.content);
        const std::string expected = "(" + file + "): " + file +
                                     ":1: expected what lspci -x prints, got " + foreign.kind +
                                     "\n";
        const std::string bus = "--dump " + file + " " + kDescriptions;
        for (const std::string& command :
             {"lint " + kDescriptions + "--against " + file, "tree " + bus + state,
              "draw " + bus + state, "list " + bus + state, "explain " + bus,
              "describe 01:00.0 " + bus, "record " + bus, "record --scrub " + bus,
              "names list " + bus + state, "names check " + bus + state,
              "names preview " + kDump + kDescriptions + state + "--new-dump " + file})
            EXPECT_TRUE(says(runTavctl(command), 3, expected)) << command;
    }
}

} // namespace

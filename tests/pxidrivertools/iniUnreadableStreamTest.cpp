// A stream that says, when it is read, that it cannot be. The C library of Windows says that such a
// stream is at its end.
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

namespace {

using namespace ini;

TEST(IniUnreadableStream, IsAReaderErrorAndLeavesNothing) {
    const testsupport::FileFolder folder;
    const IniFileOwner file{createIniFile()};
    const auto load = [&](const char* mode) {
        const platform::Stream stream = platform::openStream(folder.file("file.ini").c_str(), mode);
        EXPECT_NE(stream, nullptr);
        return loadIni(*file, stream.get());
    };
    folder.write("file.ini", "[a]\nx=1");
    ASSERT_EQ(load("rb"), kIniDone);
    EXPECT_EQ(load("ab"), -5002);
    EXPECT_EQ(listing(*file), "");
}

} // namespace

// Loading from a stream: byte-order marks, short files, read errors.
#include "tests/pxidrivertools/iniHelpers.h"
#include "tests/support/fileFolder.h"

namespace {

using namespace ini;

class IniStreamTest : public testing::Test {
protected:
    IniStatus load(const std::string& content) {
        folder.write("file.ini", content);
        return loadPath(folder.file("file.ini"));
    }
    IniStatus loadPath(const std::string& path, const char* mode = "rb") {
        const platform::Stream stream = platform::openStream(path.c_str(), mode);
        EXPECT_NE(stream, nullptr);
        return loadIni(*file, stream.get());
    }

    testsupport::FileFolder folder;
    IniFileOwner file{createIniFile()};
};

TEST_F(IniStreamTest, ReadsFromTheFirstByte) {
    EXPECT_EQ(load("[a]\nx=1"), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
}

TEST_F(IniStreamTest, FilesShorterThanAnyMarkAreRead) {
    EXPECT_EQ(load(""), kIniDone);
    EXPECT_EQ(listing(*file), "");
    EXPECT_EQ(load("[a]"), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{}");
    EXPECT_EQ(load("x"), kIniDone);
    EXPECT_EQ(file->firstOddLine, 1);
    EXPECT_EQ(load("\xFF"), kIniDone);
    EXPECT_EQ(load("\xEF\xBB"), kIniDone);
    EXPECT_EQ(file->firstOddLine, 1);
}

TEST_F(IniStreamTest, TheUtf8MarkIsSkipped) {
    EXPECT_EQ(load("\xEF\xBB\xBF[a]\nx=1"), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
    EXPECT_EQ(load("\xEF\xBB\xBF"), kIniDone);
    EXPECT_EQ(listing(*file), "");
    EXPECT_EQ(file->firstOddLine, -1);
    EXPECT_EQ(load("\xEF\xBB\xBF["), kIniDone);
    EXPECT_EQ(file->firstOddLine, 1);
}

TEST_F(IniStreamTest, WideEncodingsAreRefusedAndTheContentStays) {
    ASSERT_EQ(load("[a]\nx=1"), kIniDone);
    for (const std::string& mark :
         {std::string("\xFF\xFE\0\0", 4), std::string("\0\0\xFE\xFF", 4), std::string("\xFF\xFE"),
          std::string("\xFE\xFF"), std::string("\xFF\xFE[\0", 4), std::string("\xFE\xFF\0[", 4)})
        EXPECT_EQ(load(mark), -3);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
    EXPECT_EQ(load(std::string("\0\0\xFE", 3)), kIniDone);
    EXPECT_EQ(load("\xFE[a]"), kIniDone);
}

TEST_F(IniStreamTest, ReadsMoreThanOneChunk) {
    const std::string value(10000, 'v');
    EXPECT_EQ(load("\xEF\xBB\xBF[a]\nx=" + value), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{x@2=" + value + ";}");
}

TEST_F(IniStreamTest, FilesOfAnySizeAreReadWhole) {
    for (const std::size_t size :
         {16360U, 16381U, 16382U, 16383U, 16384U, 16385U, 40000U, 5000000U}) {
        const std::string value(size - 6, 'v');
        for (const int buffered : {_IOFBF, _IONBF}) {
            folder.write("file.ini", "[a]\nx=" + value);
            const platform::Stream stream =
                platform::openStream(folder.file("file.ini").c_str(), "rb");
            ASSERT_EQ(std::setvbuf(stream.get(), nullptr, buffered, BUFSIZ), 0);
            ASSERT_EQ(loadIni(*file, stream.get()), kIniDone);
            ASSERT_EQ(findKey(*file, *findSection(*file, "a"), "x")->value.view(), value) << size;
        }
        platform::FileToLoad from(folder.file("file.ini").c_str());
        ASSERT_EQ(loadIni(*file, from), kIniDone);
        ASSERT_EQ(findKey(*file, *findSection(*file, "a"), "x")->value.view(), value) << size;
    }
}

// Each refused request leaves the sections of the complete lines that were read.
TEST_F(IniStreamTest, AFileThatDoesNotFitMemoryIsReadAsFarAsItDoes) {
    folder.write("file.ini", "[a]\nx=1\n[b]\nx=" + std::string(100000, 'v') + "\n[c]\n");
    TestMemory memory;
    file.reset(createIniFile(memory.memory()));
    memory.failAbove(50000);
    EXPECT_EQ(loadPath(folder.file("file.ini")), kIniOutOfMemory);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}b@3{}");
    memory.failAbove(10000);
    EXPECT_EQ(loadPath(folder.file("file.ini")), kIniOutOfMemory);
    EXPECT_EQ(listing(*file), "");
    file.reset();
}

TEST_F(IniStreamTest, AFileThatTellsItsSizeIsGivenNoMoreRoomThanItNeeds) {
    const std::string path = folder.write("file.ini", "[a]\nx=1");
    TestMemory memory;
    file.reset(createIniFile(memory.memory()));
    memory.failAbove(3000); // the records need some; a beginning of unknown size would need more
    platform::FileToLoad from(path.c_str());
    EXPECT_EQ(loadIni(*file, from), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
    EXPECT_EQ(loadPath(path), kIniOutOfMemory);
    file.reset();
}

TEST_F(IniStreamTest, AFileIsLoadedAsAStreamIs) {
    for (const std::string& text :
         {std::string(), std::string("x"), std::string("\xEF\xBB\xBF[a]\nx=1\n"),
          std::string("\xFF\xFE[\0", 4), "[a]\nx=1\n[b]\nx=" + std::string(20000, 'v') + "\ny"}) {
        const IniStatus expected = load(text);
        const std::string content = listing(*file);
        const std::int32_t oddLine = file->firstOddLine;
        file.reset(createIniFile());
        platform::FileToLoad from(folder.file("file.ini").c_str());
        EXPECT_EQ(loadIni(*file, from), expected);
        EXPECT_EQ(listing(*file), expected == kIniWideEncoding ? "" : content);
        EXPECT_EQ(file->firstOddLine, expected == kIniWideEncoding ? kNotFromFile : oddLine);
    }
}

// Each refused request of a file's load is told.
TEST_F(IniStreamTest, AFileThatDoesNotFitMemoryIsToldOfEveryRequest) {
    const std::string path =
        folder.write("file.ini", "[a]\nx=1\n[b]\nx=" + std::string(40000, 'v') + "\n");
    for (int request = 1;; ++request) {
        ASSERT_LT(request, 100);
        TestMemory memory;
        file.reset(createIniFile(memory.memory()));
        memory.failAt(request);
        platform::FileToLoad from(path.c_str());
        const IniStatus status = loadIni(*file, from);
        const bool isRefused = memory.requests() >= request;
        const std::string content = listing(*file);
        file.reset();
        if (!isRefused) {
            EXPECT_EQ(status, kIniDone);
            EXPECT_GT(request, 4);
            break;
        }
        // Not shrinking a block does no harm.
        EXPECT_TRUE(status == kIniOutOfMemory || (status == kIniDone && !content.empty()));
    }
}

TEST_F(IniStreamTest, StartsAtTheFirstByteWhereverTheStreamStood) {
    folder.write("file.ini", "[a]\nx=1");
    const platform::Stream stream = platform::openStream(folder.file("file.ini").c_str(), "rb");
    ASSERT_EQ(loadIni(*file, stream.get()), kIniDone);
    std::rewind(stream.get());
    ASSERT_EQ(loadIni(*file, stream.get()), kIniDone);
    EXPECT_EQ(listing(*file), "a@1{x@2=1;}");
}

} // namespace

#include "tavctl/host/namedDump.h"

#include "platform/commandLine.h"
#include "platform/file.h"
#include "platform/stream.h"
#include "platform/terminal.h"
#include "platform/utf8Path.h"
#include "tavctl/host/scratchFolder.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/shownName.h"

#include <cstdio>
#include <vector>

namespace tavctl {

namespace {

constexpr std::string_view kStandardInputSign = "-";

[[noreturn]] void fail(const char* operation, const std::string& object) {
    failBySystem(operation, object, platform::lastSystemCode());
}

void copyStandardInput(const std::string& file) {
    platform::Stream copy = platform::openStream(file.c_str(), "wb");
    if (!copy)
        fail("keep standard input", file);
    std::vector<char> piece(1 << 16);
    std::size_t size = piece.size();
    while (size == piece.size()) {
        size = platform::readStream(stdin, piece.data(), piece.size());
        if (std::ferror(stdin) != 0)
            fail("read the bus", std::string(kStandardInput));
        if (platform::writeStream(copy.get(), piece.data(), size) != size)
            fail("keep standard input", file);
    }
    if (!platform::closeStream(copy.release()))
        fail("keep standard input", file);
}

} // namespace

class NamedDump::Kept {
public:
    Kept() : file_(platform::utf8Text(folder_.path() / "dump")) {
        showAs(file_, std::string(kStandardInput));
        platform::prepareInput();
        if (platform::isTerminal(stdin))
            complain("reading a recorded bus from standard input");
        copyStandardInput(file_);
    }

    [[nodiscard]] const std::string& file() const { return file_; }

private:
    ScratchFolder folder_;
    std::string file_;
};

NamedDump::NamedDump(const std::string& name) : path_(name) {
    if (name != kStandardInputSign)
        return;
    static std::weak_ptr<const Kept> only;
    kept_ = only.lock();
    if (!kept_)
        only = kept_ = std::make_shared<const Kept>();
    path_ = kept_->file();
}

std::string NamedDump::titleOf(const std::string& name) {
    return name == kStandardInputSign ? std::string(kStandardInput)
                                      : platform::utf8Text(platform::utf8Path(name).filename());
}

} // namespace tavctl

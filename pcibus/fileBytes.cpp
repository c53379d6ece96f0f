#include "pcibus/fileBytes.h"

#include "pcibus/busError.h"

#include <cerrno>
#include <cstring>
#include <ios>
#include <system_error>

namespace pcibus {
namespace {

constexpr std::size_t kPiece = 128 * std::size_t{1024};

[[noreturn]] void refuse(const std::filesystem::path& file, int code) {
    throw BusError(pathText(file) + ": " +
                   (code != 0 ? std::generic_category().message(code) : "cannot be read"));
}

} // namespace

std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

FilePieces::FilePieces(const std::filesystem::path& file) : name_(file) {
    file_.pubsetbuf(nullptr, 0);
    errno = 0;
    if (file_.open(file, std::ios_base::in | std::ios_base::binary) == nullptr)
        refuse(name_, errno);
    buffer_.resize(kPiece);
}

std::string_view FilePieces::next() {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    for (;;) {
        if (end_ == buffer_.size())
            buffer_.resize(buffer_.size() * 2); // a line that is longer than a piece
        const std::size_t got = read(buffer_.data() + end_, buffer_.size() - end_);
        end_ += got;
        const std::string_view all(buffer_.data(), end_);
        const std::size_t lastLine = all.rfind('\n');
        if (got != 0 && lastLine == std::string_view::npos)
            continue;
        begin_ = got != 0 ? lastLine + 1 : end_;
        return all.substr(0, begin_);
    }
}

std::size_t FilePieces::read(char* to, std::size_t size) {
    errno = 0;
    try {
        return static_cast<std::size_t>(file_.sgetn(to, static_cast<std::streamsize>(size)));
    } catch (const std::ios_base::failure&) {
        refuse(name_, errno);
    }
}

} // namespace pcibus

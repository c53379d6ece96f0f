#include "pcibus/fileBytes.h"

#include "pcibus/busError.h"

#include <cstring>
#include <span>
#include <system_error>
#include <utility>

namespace pcibus {
namespace {

constexpr std::size_t kPiece = 128 * std::size_t{1024};

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
    throw BusError(file + ": " + reason);
}

} // namespace

FilePieces::FilePieces(const std::string& file)
    : name_(file), file_(file), capacity_(kPiece),
      buffer_(std::make_unique_for_overwrite<char[]>(kPiece)) {}

std::string_view FilePieces::next() {
    std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    for (;;) {
        if (end_ == capacity_) { // a line that is longer than a piece
            if (end_ >= kLongestLine)
                refuse(name_, "a line is longer than " + std::to_string(kLongestLine) + " bytes");
            auto wider = std::make_unique_for_overwrite<char[]>(capacity_ * 2);
            std::memcpy(wider.get(), buffer_.get(), end_);
            buffer_ = std::move(wider);
            capacity_ *= 2;
        }
        std::size_t got = 0;
        if (const int code = file_.read(std::span(buffer_.get(), capacity_).subspan(end_), got);
            code != 0)
            refuse(name_, std::generic_category().message(code));
        end_ += got;
        const std::string_view all(buffer_.get(), end_);
        const std::size_t lastLine = all.rfind('\n');
        if (got != 0 && lastLine == std::string_view::npos)
            continue;
        begin_ = got != 0 ? lastLine + 1 : end_;
        return all.substr(0, begin_);
    }
}

} // namespace pcibus

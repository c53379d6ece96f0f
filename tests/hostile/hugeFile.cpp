#include "tests/hostile/hugeFile.h"

#include <algorithm>
#include <stdexcept>

namespace testhostile {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 20;

} // namespace

HugeFile::HugeFile(const std::filesystem::path& path)
    : path_(path), stream_(path, std::ios::binary) {}

void HugeFile::put(const std::string& text) {
    stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream_)
        throw std::runtime_error("cannot write " + path_.string());
}

HugeFile& HugeFile::text(const std::string& text) {
    put(text);
    return *this;
}

HugeFile& HugeFile::fill(const std::string& text, std::uint64_t bytes) {
    std::string piece;
    while (piece.size() < kPiece)
        piece += text;
    piece.resize(piece.size() / text.size() * text.size());
    for (std::uint64_t written = 0; written < bytes; written += piece.size()) {
        const std::uint64_t copies = (bytes - written + text.size() - 1) / text.size();
        piece.resize(std::min<std::uint64_t>(piece.size(), copies * text.size()));
        put(piece);
    }
    return *this;
}

HugeFile& HugeFile::numbered(const std::string& text, std::uint64_t count) {
    std::string piece;
    for (std::uint64_t number = 0; number < count; ++number) {
        for (const char character : text) {
            if (character == '#')
                piece += std::to_string(number);
            else
                piece += character;
        }
        if (piece.size() >= kPiece) {
            put(piece);
            piece.clear();
        }
    }
    put(piece);
    return *this;
}

std::uint64_t HugeFile::finish() {
    stream_.close();
    if (!stream_)
        throw std::runtime_error("cannot write " + path_.string());
    return std::filesystem::file_size(path_);
}

} // namespace testhostile

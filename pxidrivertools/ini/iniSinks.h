// Where the text of a file object goes: into a file, or beside one to see what is different.
#pragma once

#include "platform/systemCode.h"
#include "pxidrivertools/ini/iniFileOperations.h"
#include "pxidrivertools/ini/iniMemory.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Takes a text piece by piece.
class IniSink {
public:
    virtual ~IniSink() = default;
    // False when the piece could not be taken.
    virtual bool take(std::string_view piece) noexcept = 0;

protected:
    IniSink() = default;
    IniSink(const IniSink&) = default;
    IniSink& operator=(const IniSink&) = default;
};

// Room for a piece, on the heap: few large transfers, and little of the caller's stack.
class IniBuffer {
public:
    static constexpr std::size_t kSize = 65536;

    explicit IniBuffer(const IniMemory& memory) noexcept
        : memory_(memory), bytes_(static_cast<char*>(memory.allocate(kSize))) {}
    ~IniBuffer() { memory_.release(bytes_); }
    IniBuffer(const IniBuffer&) = delete;
    IniBuffer& operator=(const IniBuffer&) = delete;

    // Empty when there was no memory.
    std::span<char> bytes() const noexcept {
        return {bytes_, bytes_ == nullptr ? std::size_t{0} : kSize};
    }

private:
    const IniMemory& memory_;
    char* bytes_;
};

// Measures the text and finds out how far a file holds the same bytes.
class IniComparison final : public IniSink {
public:
    // `old` is read from where it stands; null is an empty file. `buffer` has room for each piece.
    IniComparison(std::FILE* old, std::span<char> buffer) noexcept : old_(old), buffer_(buffer) {}

    bool take(std::string_view piece) noexcept override;

    // After the last piece: the file holds these bytes and no more.
    bool isSame() noexcept;

    // In bytes: the whole text, and what stands alike at the front of text and file.
    std::uint64_t size() const noexcept { return size_; }
    std::uint64_t same() const noexcept { return same_; }

private:
    std::FILE* old_;
    std::span<char> buffer_;
    std::uint64_t size_ = 0;
    std::uint64_t same_ = 0;
};

// Writes the text behind what stays.
class IniFileSink final : public IniSink {
public:
    // The first `kept` bytes of the text are in the file already, and the stream is behind them.
    IniFileSink(IniFileOperations& files, std::FILE* stream, std::uint64_t kept) noexcept
        : files_(files), stream_(stream), kept_(kept) {}

    bool take(std::string_view piece) noexcept override;

    // Why it failed.
    platform::SystemCode code() const noexcept { return code_; }

private:
    IniFileOperations& files_;
    std::FILE* stream_;
    std::uint64_t kept_;
    platform::SystemCode code_ = platform::kNoSystemError;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

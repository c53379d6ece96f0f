// What the tests of the INI engine share: input from a text, a listing of what was loaded, memory
// and file operations that fail at the Nth call.
#pragma once

#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniFileOperations.h"
#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniUpdate.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

inline std::string numbered(std::string text, long long number) {
    text += std::to_string(number);
    return text;
}

// Hands a text out in pieces, and may fail after some of it.
class TextReader {
public:
    explicit TextReader(std::string_view text) : text_(text) {}
    TextReader& inPiecesOf(std::uint32_t size) {
        piece_ = size;
        return *this;
    }
    TextReader& failingAtTheEnd() {
        end_ = -1;
        return *this;
    }

    ini::IniReader reader() {
        const auto read = [](void* context, char* buffer, std::uint32_t size) {
            return static_cast<TextReader*>(context)->give(buffer, size);
        };
        return {read, this};
    }
    const std::vector<std::uint32_t>& asked() const { return asked_; }

private:
    std::int32_t give(char* buffer, std::uint32_t size) {
        asked_.push_back(size);
        const std::string_view piece = text_.substr(0, std::min(size, piece_));
        text_.remove_prefix(piece.size());
        if (piece.empty())
            return end_;
        std::memcpy(buffer, piece.data(), piece.size());
        return static_cast<std::int32_t>(piece.size());
    }

    std::string_view text_;
    std::uint32_t piece_ = 0xFFFFFFFF;
    std::int32_t end_ = 0;
    std::vector<std::uint32_t> asked_;
};

inline ini::IniStatus loadText(ini::IniFileObject& file, std::string_view text) {
    TextReader reader(text);
    return ini::loadIni(file, reader.reader());
}

// "section@line{key@line=quote value;...}..." with the quote character left out when there is none.
inline std::string listing(const ini::IniFileObject& file) {
    std::string text;
    for (std::uint32_t s = 1; s <= ini::sectionCount(file); ++s) {
        const ini::IniSection& section = *ini::sectionAt(file, static_cast<std::int32_t>(s));
        text += std::string(section.name.view()) + "@" + std::to_string(section.line) + "{";
        for (std::uint32_t k = 1; k <= ini::keyCount(section); ++k) {
            const ini::IniKey& key = *ini::keyAt(section, static_cast<std::int32_t>(k));
            text += std::string(key.name.view()) + "@" + std::to_string(key.line) + "=";
            if (key.quote != ini::kNoQuote)
                text += key.quote;
            text += std::string(key.value.view()) + ";";
        }
        text += "}";
    }
    return text;
}

// Memory that counts and can refuse one request. At its end everything must have been given back.
class TestMemory {
public:
    TestMemory() = default;
    TestMemory(const TestMemory&) = delete;
    TestMemory& operator=(const TestMemory&) = delete;
    ~TestMemory() { EXPECT_EQ(blocks_, 0) << "memory was not given back"; }

    ini::IniMemory memory() {
        const auto resize = [](void* context, void* block, std::size_t size) {
            return static_cast<TestMemory*>(context)->resize(block, size);
        };
        return {resize, this};
    }
    // Refuses the Nth request from now on, counted from 1; 0 refuses none.
    void failAt(int request) {
        requests_ = 0;
        failAt_ = request;
    }
    // Refuses every request for more than this.
    void failAbove(std::size_t size) { largest_ = size; }
    int requests() const { return requests_; }

private:
    void* resize(void* block, std::size_t size) {
        if (size == 0) {
            blocks_ -= block != nullptr;
            std::free(block);
            return nullptr;
        }
        if (++requests_ == failAt_ || size > largest_)
            return nullptr;
        blocks_ += block == nullptr;
        return std::realloc(block, size);
    }

    int blocks_ = 0;
    int requests_ = 0;
    int failAt_ = 0;
    std::size_t largest_ = SIZE_MAX;
};

// The system's files, written down, with one operation that fails.
class TestFiles : public ini::IniFileOperations {
public:
    // The reason of what fails here.
    static constexpr Code kFailure = 4711;

    // Fails the Nth operation from now on, counted from 1; 0 fails none.
    void failAt(std::size_t operation) {
        calls.clear();
        failAt_ = operation;
    }

    ini::IniOpened open(const char* path, const char* mode) noexcept override {
        return next("open " + leaf(path) + " " + mode) ? real_.open(path, mode)
                                                       : ini::IniOpened{nullptr, kFailure};
    }
    Code write(std::FILE* stream, const char* data, std::size_t size) noexcept override {
        written.append(data, size);
        if (next("write"))
            return real_.write(stream, data, size);
        real_.write(stream, data, size / 2);
        return kFailure;
    }
    Code flush(std::FILE* stream) noexcept override {
        return next("flush") ? real_.flush(stream) : kFailure;
    }
    Code force(std::FILE* stream) noexcept override {
        return next("force") ? real_.force(stream) : kFailure;
    }
    Code close(std::FILE* stream) noexcept override {
        const bool fails = !next("close");
        const Code code = real_.close(stream);
        return fails ? kFailure : code;
    }
    ini::IniOpened openInPlace(const char* path) noexcept override {
        return next("open " + leaf(path)) ? real_.openInPlace(path)
                                          : ini::IniOpened{nullptr, kFailure};
    }
    Code secureSpace(std::FILE* stream, std::uint64_t size) noexcept override {
        return next("secure " + std::to_string(size)) ? real_.secureSpace(stream, size) : kFailure;
    }
    std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept override {
        return real_.keepFront(stream, size);
    }
    Code cutBehind(std::FILE* stream, std::uint64_t size) noexcept override {
        return next("cut " + std::to_string(size)) ? real_.cutBehind(stream, size) : kFailure;
    }
    Code followLinks(std::string& path) noexcept override {
        return next("follow " + leaf(path)) ? real_.followLinks(path) : kFailure;
    }
    ini::IniCreated createExclusively(const char* path) noexcept override {
        return next("create " + leaf(path)) ? real_.createExclusively(path)
                                            : ini::IniCreated{{nullptr, kFailure}};
    }
    Code takeAccess(std::FILE* from, std::FILE* to) noexcept override {
        return next("access") ? real_.takeAccess(from, to) : kFailure;
    }
    Code rename(const char* from, const char* to) noexcept override {
        return next("rename " + leaf(from) + " " + leaf(to)) ? real_.rename(from, to) : kFailure;
    }
    Code remove(const char* path) noexcept override {
        return next("remove " + leaf(path)) ? real_.remove(path) : kFailure;
    }
    std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept override {
        return next("time " + leaf(path)) ? real_.lastWriteTime(path) : std::nullopt;
    }
    void pause(std::chrono::milliseconds time) noexcept override {
        next("pause " + std::to_string(time.count()));
    }

    std::vector<std::string> calls;
    std::string written; // what writes were given

protected:
    static std::string leaf(std::string_view path) {
        return std::string(path.substr(path.find_last_of("/\\") + 1));
    }
    bool next(std::string call) {
        calls.push_back(std::move(call));
        return calls.size() != failAt_;
    }

    ini::IniFileOperations& real_ = ini::systemFileOperations();

private:
    std::size_t failAt_ = 0;
};

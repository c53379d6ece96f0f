#include "tavctl/host/namesCopy.h"

#include "platform/file.h"
#include "platform/stream.h"
#include "platform/utf8Path.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/words/failure.h"

#include <array>
#include <cstdio>
#include <optional>

namespace tavctl {

namespace {

std::string readAll(const platform::Stream& stream, const std::string& file) {
    std::string bytes;
    std::array<char, 2048> part{};
    for (std::size_t got = 0;
         (got = platform::readStream(stream.get(), part.data(), part.size())) != 0;)
        bytes.append(part.data(), got);
    if (std::ferror(stream.get()) != 0)
        failBySystem("read terminal names", file, platform::lastSystemCode());
    return bytes;
}

// Nothing, with the reason noted, for a file that is not there or that this user may not read.
std::optional<std::string> readOnce(const std::string& file, platform::SystemCode& refusal) {
    const platform::Stream stream = platform::openStream(file.c_str(), "rb");
    if (stream)
        return readAll(stream, file);
    const platform::SystemCode code = platform::lastSystemCode();
    if (platform::isRefusal(code))
        refusal = code;
    else if (platform::lastWriteTime(file.c_str()))
        failBySystem("read terminal names", file, code);
    return std::nullopt;
}

// Without the lock: until twice the same is read, which nobody is writing then.
std::optional<std::string> readUnlocked(const std::string& file, platform::SystemCode& refusal) {
    constexpr int kAttempts = 100;
    auto last = readOnce(file, refusal);
    for (int attempt = 0; last && attempt < kAttempts; ++attempt) {
        auto again = readOnce(file, refusal);
        if (again == last)
            break;
        last = std::move(again);
    }
    return last;
}

void write(const std::string& bytes, const std::string& target) {
    platform::Stream stream = platform::openStream(target.c_str(), "wb");
    if (!stream ||
        platform::writeStream(stream.get(), bytes.data(), bytes.size()) != bytes.size() ||
        !platform::closeStream(stream.release()))
        failBySystem("copy terminal names", target, platform::lastSystemCode());
}

} // namespace

std::string copyNames(const std::filesystem::path& names, const std::filesystem::path& copy) {
    const std::string file = platform::utf8Text(names);
    platform::SystemCode refusal = platform::kNoSystemError;
    std::optional<std::string> bytes;
    {
        const NameLock lock(names, NameLock::Purpose::reading);
        bytes = lock.isHeld() ? readOnce(file, refusal) : readUnlocked(file, refusal);
    }
    if (bytes)
        write(*bytes, platform::utf8Text(copy));
    return refusal == platform::kNoSystemError ? std::string() : platform::systemMessage(refusal);
}

} // namespace tavctl

#include "pcibus/fileKind.h"

#include <algorithm>
#include <cstddef>

namespace pcibus {
namespace {

using namespace std::string_view_literals;

struct Kind {
    std::string_view start;
    std::string_view name;
};

// None of these starts is that of a text in ASCII or UTF-8.
constexpr Kind kForeign[] = {
    {"\xFF\xFE"sv, "text in UTF-16"},
    {"\xFE\xFF"sv, "text in UTF-16"},
    {"\x1F\x8B"sv, "a file compressed with gzip"},
    {"\xFD"
     "7zXZ\0"sv,
     "a file compressed with xz"},
    {"\x28\xB5\x2F\xFD"sv, "a file compressed with zstd"},
    {"PK\x03\x04"sv, "a zip archive"},
    {"\x7F"
     "ELF"sv,
     "a program"},
};

constexpr Kind kTexts[] = {
    {"version https://git-lfs.github.com/spec/"sv, "a Git LFS pointer in place of the file"},
    {"<!DOCTYPE html"sv, "a web page"},
    {"<!doctype html"sv, "a web page"},
    {"<html"sv, "a web page"},
    {"{"sv, "JSON"},
};

// "BZh", a digit for the size of the blocks, and the mark of a block or of the end.
bool isBzip2(std::string_view beginning) {
    constexpr std::size_t kMark = 4;
    return beginning.starts_with("BZh"sv) && beginning.size() > kMark &&
           (beginning.substr(kMark).starts_with("\x31\x41\x59\x26\x53\x59"sv) ||
            beginning.substr(kMark).starts_with("\x17\x72\x45\x38\x50\x90"sv));
}

// Two letters are a program's only where a NUL follows in its first header.
bool isWindowsProgram(std::string_view beginning) {
    constexpr std::size_t kHeader = 64;
    return beginning.starts_with("MZ"sv) &&
           beginning.substr(0, kHeader).find('\0') != std::string_view::npos;
}

// Every other byte of the first four is NUL: ASCII characters of two bytes without a mark before.
bool isUtf16(std::string_view beginning) {
    if (beginning.size() < 4)
        return false;
    const auto isNul = [beginning](std::size_t at) { return beginning[at] == '\0'; };
    return isNul(0) == isNul(2) && isNul(1) == isNul(3) && isNul(0) != isNul(1);
}

template <std::size_t count>
std::string_view find(const Kind (&kinds)[count], std::string_view beginning) {
    const auto found = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& kind) {
        return beginning.starts_with(kind.start);
    });
    return found == std::end(kinds) ? std::string_view() : found->name;
}

} // namespace

std::string_view foreignKind(std::string_view beginning) {
    if (isBzip2(beginning))
        return "a file compressed with bzip2";
    if (isWindowsProgram(beginning))
        return "a program";
    if (isUtf16(beginning))
        return "text in UTF-16";
    return find(kForeign, beginning);
}

std::string_view textKind(std::string_view beginning) {
    return find(kTexts, beginning);
}

} // namespace pcibus

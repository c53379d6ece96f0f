#include "quil/tracePrefix.h"

#include <array>
#include <charconv>
#include <string_view>

namespace nZOQUIL000 {

namespace {

// The widths of the columns.
constexpr std::size_t kComponentWidth = 10;
constexpr std::size_t kFileWidth = 32;
constexpr std::size_t kLineWidth = 4;

constexpr std::string_view kOpening = "[";
constexpr std::string_view kSeparator = "|";
constexpr std::string_view kClosing = "] ";
static_assert(kTracePrefixLength == kOpening.size() + kComponentWidth + kSeparator.size() +
                                        kFileWidth + kSeparator.size() + kLineWidth +
                                        kClosing.size());

// Every writer takes the position and the space left there, and answers the new end, which is a
// NUL; without any space it answers the position.

char* writeText(char* out, std::size_t space, std::string_view text) noexcept {
    if (space == 0)
        return out;
    char* const end = out + text.copy(out, space - 1);
    *end = '\0';
    return end;
}

template <std::size_t Width>
char* writeColumn(char* out, std::size_t space, std::string_view text) noexcept {
    if (text.size() > Width)
        text.remove_prefix(text.size() - Width);
    std::array<char, Width> column{};
    column.fill(' ');
    text.copy(column.data() + Width - text.size(), text.size());
    return writeText(out, space, {column.data(), column.size()});
}

char* writeOpening(char* out, std::size_t space, const tTracePrefix&) noexcept {
    return writeText(out, space, kOpening);
}

char* writeComponent(char* out, std::size_t space, const tTracePrefix& prefix) noexcept {
    return writeColumn<kComponentWidth>(out, space, prefix.component);
}

char* writeSeparator(char* out, std::size_t space, const tTracePrefix&) noexcept {
    return writeText(out, space, kSeparator);
}

char* writeFile(char* out, std::size_t space, const tTracePrefix& prefix) noexcept {
    return writeColumn<kFileWidth>(out, space, prefix.file);
}

char* writeLine(char* out, std::size_t space, const tTracePrefix& prefix) noexcept {
    std::array<char, 16> digits{};
    const char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), prefix.line).ptr;
    return writeColumn<kLineWidth>(out, space,
                                   {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

char* writeClosing(char* out, std::size_t space, const tTracePrefix&) noexcept {
    return writeText(out, space, kClosing);
}

using FieldWriter = char* (*)(char*, std::size_t, const tTracePrefix&) noexcept;
constexpr FieldWriter kFields[] = {writeOpening,   writeComponent, writeSeparator, writeFile,
                                   writeSeparator, writeLine,      writeClosing};

} // namespace

char* writeTracePrefix(char* out, std::size_t space, const tTracePrefix& prefix) noexcept {
    const char* const limit = out + space;
    for (const FieldWriter write : kFields)
        out = write(out, static_cast<std::size_t>(limit - out), prefix);
    return out;
}

} // namespace nZOQUIL000

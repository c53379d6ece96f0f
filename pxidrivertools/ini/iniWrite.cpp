#include "pxidrivertools/ini/iniWrite.h"

#include "pxidrivertools/ini/iniContinuation.h"
#include "pxidrivertools/ini/iniList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

void IniOutput::put(std::string_view text) noexcept {
    for (;;) {
        const std::size_t feed = text.find('\n');
        putAsIs(text.substr(0, feed));
        if (feed == std::string_view::npos)
            return;
        endLine();
        text.remove_prefix(feed + 1);
    }
}

void IniOutput::putLong(std::string_view text) noexcept {
    while (!text.empty()) {
        if (used_ == buffer_.size())
            giveLines();
        const std::string_view piece = text.substr(0, buffer_.size() - used_);
        std::memcpy(buffer_.data() + used_, piece.data(), piece.size());
        used_ += piece.size();
        text.remove_prefix(piece.size());
    }
}

bool IniOutput::finish() noexcept {
    give(used_);
    return ok_;
}

void IniOutput::giveLines() noexcept {
    give(wholeLines_ != 0 ? wholeLines_ : used_);
}

void IniOutput::give(std::size_t size) noexcept {
    if (ok_ && size != 0)
        ok_ = sink_.take({buffer_.data(), size});
    used_ -= size;
    wholeLines_ = 0;
    std::memmove(buffer_.data(), buffer_.data() + size, used_);
}

namespace {

// What a split key line has beside its name and its piece: " Line", four digits, " = ", quotes. The
// room is the same with the short separator.
constexpr std::int64_t kPieceOverhead = 12;
constexpr std::int64_t kQuotes = 2;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class Writer {
public:
    Writer(const IniWriteOptions& options, IniOutput& output) noexcept
        : options_(options), output_(output),
          separator_(options.spacedSeparator ? std::string_view(" = ") : std::string_view("=")) {}

    IniStatus writeSection(const IniSection& section) noexcept {
        if (!isUnnamed(section)) {
            output_.putAsIs('[');
            put(section.name);
            output_.putAsIs("]\r\n");
        }
        for (const IniNamed* element : elementsOf(static_cast<const IniList*>(section.keys))) {
            const IniStatus status = writeKey(static_cast<const IniKey&>(*element));
            if (status != kIniDone)
                return status;
        }
        return output_.ok() ? kIniDone : kIniWriteFailed;
    }

private:
    // What stands in the loaded text has no line feeds in it.
    void put(const IniText& text) noexcept { put(text.view(), text.owned); }
    void put(std::string_view text, bool mayHaveFeeds) noexcept {
        if (mayHaveFeeds)
            output_.put(text);
        else
            output_.putAsIs(text);
    }

    IniStatus writeKey(const IniKey& key) noexcept {
        const std::string_view name = key.name.view();
        const std::string_view value = key.value.view();
        const std::int64_t quotes = key.quote == kNoQuote ? 0 : kQuotes;
        const auto lineLength =
            static_cast<std::int64_t>(name.size() + separator_.size() + value.size()) + quotes;
        if (options_.maximumLineLength == kNoMaximumLineLength ||
            lineLength <= options_.maximumLineLength) {
            put(key.name);
            writeValue(value, key.value.owned, key.quote);
            return kIniDone;
        }
        const std::int64_t room = options_.maximumLineLength - kPieceOverhead - quotes -
                                  static_cast<std::int64_t>(name.size());
        if (room <= 0)
            return kIniNameTooLong;
        writePieces(key, static_cast<std::size_t>(room));
        return kIniDone;
    }

    void writePieces(const IniKey& key, std::size_t room) noexcept {
        std::string_view rest = key.value.view();
        for (std::uint32_t number = 1; !rest.empty() && output_.ok(); ++number) {
            const std::string_view piece = rest.substr(0, pieceLength(rest, room));
            rest.remove_prefix(piece.size());
            put(key.name);
            output_.putAsIs(kContinuationWord);
            writeNumber(number);
            writeValue(piece, key.value.owned, key.quote);
        }
    }

    std::size_t pieceLength(std::string_view rest, std::size_t room) const noexcept {
        if (rest.size() <= room)
            return rest.size();
        if (options_.breakCharacter == kNoBreakCharacter)
            return room;
        const std::size_t last = rest.substr(0, room).rfind(options_.breakCharacter);
        return last == std::string_view::npos ? room : last + 1;
    }

    // With four digits at least.
    void writeNumber(std::uint32_t number) noexcept {
        constexpr std::ptrdiff_t kDigits = 4;
        std::array<char, 10> digits{};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        for (std::ptrdiff_t missing = kDigits - (end - digits.data()); missing > 0; --missing)
            output_.putAsIs('0');
        output_.putAsIs({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    // What follows the name of a key line.
    void writeValue(std::string_view value, bool mayHaveFeeds, char quote) noexcept {
        output_.putAsIs(separator_);
        if (quote != kNoQuote)
            output_.putAsIs(quote);
        put(value, mayHaveFeeds);
        if (quote != kNoQuote)
            output_.putAsIs(quote);
        output_.endLine();
    }

    const IniWriteOptions& options_;
    IniOutput& output_;
    std::string_view separator_;
};

bool isFromFile(const IniSection& section) noexcept {
    return section.line != kNotFromFile;
}

// Whether an empty line separates two neighbours.
bool isSeparated(const IniWriteOptions& options, const IniSection& before,
                 const IniSection& after) noexcept {
    if (!options.keepLayout)
        return true;
    if (isFromFile(before))
        return !isFromFile(after);
    return !isUnnamed(before);
}

} // namespace

IniStatus writeContents(const IniFileObject& file, IniOutput& output) noexcept {
    if (file.write.byteOrderMark)
        output.putAsIs(kByteOrderMark);
    Writer writer(file.write, output);
    const IniSection* before = nullptr;
    for (const IniNamed* element : elementsOf(static_cast<const IniList*>(file.sections))) {
        const IniSection& section = static_cast<const IniSection&>(*element);
        if (before != nullptr && isSeparated(file.write, *before, section))
            output.endLine();
        const IniStatus status = writer.writeSection(section);
        if (status != kIniDone)
            return status;
        before = &section;
    }
    return output.finish() ? kIniDone : kIniWriteFailed;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

#include "pcibus/dump.h"

#include "pcibus/address.h"
#include "pcibus/configSpace.h"
#include "pcibus/fileBytes.h"
#include "pcibus/fileKind.h"
#include "pcibus/hexRow.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace pcibus {
namespace {

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// A row's line begins with two or three digits of offset and a colon.
constexpr std::size_t kMinOffsetDigits = 2;
constexpr std::size_t kMaxOffsetDigits = 3;

// The text up to the next blank, cut where it goes on for too long.
std::string quoted(std::string_view text) {
    constexpr std::size_t kMost = 40;
    const auto end = std::find_if(text.begin(), text.end(), isBlank);
    const auto length = std::min(kMost, static_cast<std::size_t>(end - text.begin()));
    return '"' + std::string(text.substr(0, length)) + '"';
}

std::string hexText(std::size_t value) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (; value != 0 || text.size() < kMinOffsetDigits; value >>= 4)
        text.insert(text.begin(), kDigits[value & 15]);
    return text;
}

// One pass over the lines, with the function whose rows are being read. Too large for a stack.
class DumpReader {
public:
    DumpReader(const std::string& name, const FunctionSink& sink) : name_(name), sink_(sink) {}

    // Whole lines, the next ones.
    void take(std::string_view text) {
        if (line_ == 0)
            text = begin(text);
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            ++line_;
            takeLine(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    }

    Bus finish(LeftOut* leftOut) {
        finishFunction();
        if (firstText_ != 0 && !hasFunctions_)
            refuse(firstText_, "expected what lspci -x prints, got " +
                                   (kind_.empty() ? "no function" : std::string(kind_)));
        Bus bus(std::move(functions_),
                [this](const PciFunction& function) { return place(function.line); });
        if (leftOut != nullptr)
            *leftOut = leftOut_;
        return bus;
    }

private:
    // The text that a file begins with, without its byte-order mark.
    std::string_view begin(std::string_view text) {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (const std::string_view kind = foreignKind(text); !kind.empty())
            refuse(1, "expected what lspci -x prints, got " + std::string(kind));
        if (text.starts_with(kByteOrderMark))
            text.remove_prefix(kByteOrderMark.size());
        kind_ = textKind(text);
        return text;
    }

    void takeLine(std::string_view line) {
        if (takeFullRow(line))
            return;
        while (!line.empty() && (isBlank(line.back()) || line.back() == '\r'))
            line.remove_suffix(1);
        if (firstText_ == 0 && line.find_first_not_of(" \t\r\v\f") != std::string_view::npos)
            firstText_ = line_;
        if (line.empty() || isBlank(line.front()))
            return;
        if (const std::size_t digits = offsetDigits(line); digits != 0)
            return takeRow(line, digits);
        const auto address = readAddress(line);
        if (address && (line.size() == address->length || isBlank(line[address->length])))
            beginFunction(line, *address);
    }

    // Nearly every line is a row of sixteen bytes just as lspci prints them, at the offset that is
    // due. Any other line is left to those who can say what is wrong with it.
    bool takeFullRow(std::string_view line) {
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        const std::size_t digits = size_ < 0x100 ? 2 : 3;
        if (!address_ || line.size() != digits + 1 + kRowCharacters ||
            size_ + kRowBytes > bytes_.size() || line[digits] != ':')
            return false;
        int offset = 0; // negative once a character is no digit
        for (std::size_t i = 0; i < digits; ++i)
            offset = offset * 16 | hexValue(line[i]);
        if (offset < 0 || static_cast<std::size_t>(offset) != size_ ||
            !readHexRow(line.data() + digits + 1, bytes_.data() + size_))
            return false;
        size_ += kRowBytes;
        return true;
    }

    // How many digits of offset a row's line begins with; 0 for a line that is no row.
    static std::size_t offsetDigits(std::string_view line) {
        std::size_t digits = 0;
        while (digits < line.size() && digits <= kMaxOffsetDigits && hexValue(line[digits]) >= 0)
            ++digits;
        if (digits < kMinOffsetDigits || digits > kMaxOffsetDigits || digits == line.size() ||
            line[digits] != ':')
            return 0;
        return digits + 1 == line.size() || isBlank(line[digits + 1]) ? digits : 0;
    }

    void takeRow(std::string_view line, std::size_t digits) {
        std::size_t offset = 0;
        for (std::size_t i = 0; i < digits; ++i)
            offset = offset << 4 | static_cast<std::size_t>(hexValue(line[i]));
        if (!address_)
            refuse("expected a function before the first row, got " + quoted(line));
        if (offset != size_)
            refuse("expected the row of offset " + hexText(size_) + ", got " + quoted(line));
        const char* at = line.data() + digits + 1;
        const char* const end = line.data() + line.size();
        if (at == end)
            refuse("expected bytes behind the offset, got nothing");
        do {
            while (isBlank(*at)) // the line does not end with a blank
                ++at;
            takeByte(at, end);
            at += 2;
        } while (at != end);
    }

    void takeByte(const char* at, const char* end) {
        const int high = hexValue(at[0]);
        const int low = end - at >= 2 ? hexValue(at[1]) : -1;
        if (high < 0 || low < 0 || (end - at > 2 && !isBlank(at[2])))
            refuse("expected a byte as two hexadecimal digits, got " +
                   quoted(std::string_view(at, static_cast<std::size_t>(end - at))));
        if (size_ == bytes_.size())
            refuse("expected at most 4096 bytes for " + addressText(current_));
        bytes_[size_++] = static_cast<std::uint8_t>(high << 4 | low);
    }

    void beginFunction(std::string_view line, const Address& address) {
        finishFunction();
        hasFunctions_ = true;
        if (address.device > kMaxDevice || address.function > kMaxFunction)
            refuse("expected a device up to 1f and a function up to 7, got " + quoted(line));
        current_ = {};
        current_.bus = address.bus;
        current_.device = address.device;
        current_.function = address.function;
        current_.line = line_;
        address_ = address;
        size_ = 0;
        if (!remember(address))
            refuse("a second function at " + std::string(line.substr(0, address.length)));
    }

    // False when there was a function at this address before.
    bool remember(const Address& address) {
        if (address.domain != 0)
            return others_.insert(std::uint64_t{address.domain} << 16 | current_.handle()).second;
        if (seen_[current_.handle()])
            return false;
        seen_.set(current_.handle());
        return true;
    }

    void finishFunction() {
        if (!address_)
            return;
        if (size_ < kHeaderSize)
            refuse(current_.line, "expected at least 64 bytes for " + addressText(current_) +
                                      ", got " + std::to_string(size_));
        const std::span<const std::uint8_t> bytes = std::span(bytes_).first(size_);
        const bool isOther = address_->domain != 0;
        leftOut_.otherDomains += isOther ? 1 : 0;
        if (!isDead(bytes))
            take(bytes, isOther);
        else if (!isOther)
            ++leftOut_.dead;
        address_.reset();
    }

    void take(std::span<const std::uint8_t> bytes, bool isOther) {
        decodeConfigSpace(bytes, current_);
        if (sink_)
            sink_({address_->domain, current_, bytes, [said = decodeLink(bytes)] { return said; }});
        if (isOther)
            return;
        if (bytes.size() == kHeaderSize && saysCapabilities(bytes))
            ++leftOut_.headerOnly;
        functions_.push_back(current_);
    }

    [[nodiscard]] std::string place(std::uint32_t line) const {
        return name_ + ':' + std::to_string(line);
    }
    [[noreturn]] void refuse(std::uint32_t line, const std::string& reason) const {
        throw BusError(place(line) + ": " + reason);
    }
    [[noreturn]] void refuse(const std::string& reason) const { refuse(line_, reason); }

    const std::string& name_;
    const FunctionSink& sink_;
    std::uint32_t line_ = 0;
    std::uint32_t firstText_ = 0; // the first line that is not blank; 0 before it
    std::string_view kind_;       // what a text without functions is, where it can be told
    bool hasFunctions_ = false;   // of any domain, dead or alive
    LeftOut leftOut_;
    std::vector<PciFunction> functions_;
    std::bitset<0x10000> seen_;      // handles of domain 0
    std::set<std::uint64_t> others_; // domains and handles; ordered, for the text chooses them

    // The function whose rows are being read, while there is an address.
    std::optional<Address> address_;
    PciFunction current_;
    std::array<std::uint8_t, kMaxConfigSize> bytes_{};
    std::size_t size_ = 0;
};

} // namespace

Bus parseDump(std::string_view text, const std::string& name, const FunctionSink& sink,
              LeftOut* leftOut) {
    const auto reader = std::make_unique<DumpReader>(name, sink);
    reader->take(text);
    return reader->finish(leftOut);
}

Bus readDump(const std::string& file, LeftOut* leftOut, const FunctionSink& sink) {
    const auto reader = std::make_unique<DumpReader>(file, sink);
    FilePieces pieces(file);
    for (std::string_view lines = pieces.next(); !lines.empty(); lines = pieces.next())
        reader->take(lines);
    return reader->finish(leftOut);
}

} // namespace pcibus

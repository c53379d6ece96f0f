// Any bytes as an INI file. The load gives a documented status and what the format says, takes
// memory in proportion to the file, and every question that the INI file class answers about what
// was loaded comes to the value or to a documented status.
//
// A first byte from 0x80 to 0xBF chooses the options that files are read with (see iniReference.h);
// otherwise they are those of the INI file class.
#include "pxidrivertools/ini/iniLoad.h"

#include "fuzz/expect.h"
#include "fuzz/iniReference.h"
#include "fuzz/memoryFiles.h"
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/ini/iniLookup.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using fuzz::expect;
using fuzz::MemoryFiles;
using fuzz::Reference;
using fuzz::ReferenceKey;
using fuzz::ReferenceSection;
using namespace fuzz::ini;

// Counts what a file object holds, and the most that it held.
class CountedMemory {
public:
    IniMemory memory() {
        const auto resize = [](void* context, void* block, std::size_t size) {
            return static_cast<CountedMemory*>(context)->resize(block, size);
        };
        return {resize, this};
    }
    [[nodiscard]] std::size_t held() const { return held_; }
    [[nodiscard]] std::size_t most() const { return most_; }

private:
    void* resize(void* block, std::size_t size) {
        const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
        if (size == 0) {
            std::free(block);
            held_ -= before;
            return nullptr;
        }
        void* const resized = std::realloc(block, size);
        held_ += malloc_usable_size(resized) - before;
        most_ = std::max(most_, held_ + before);
        return resized;
    }

    std::size_t held_ = 0;
    std::size_t most_ = 0;
};

// The buffer that a load begins with, and the least of pools and lists.
constexpr std::size_t kMemoryOfAnyFile = 64U << 10;
// A key of four bytes, "a=b" and a line end, is a record of 40 with a place in a list.
constexpr std::size_t kMemoryOfAByte = 48;

// The section and the key that a look-up by name must come to: the first of that name.
template <class Records>
const auto* firstNamed(const Records& records, bool caseSensitive, const std::string& name) {
    const auto found = std::find_if(records.begin(), records.end(), [&](const auto& record) {
        return fuzz::sameName(caseSensitive, record.name, name);
    });
    return found == records.end() ? nullptr : &*found;
}

void lookUpEverything(IniFileObject& file, const Reference& content) {
    for (const ReferenceSection& section : content.sections) {
        const IniSection* const found = findSection(file, section.name);
        const ReferenceSection* const first =
            firstNamed(content.sections, file.caseSensitive, section.name);
        expect(found != nullptr && found->name.view() == first->name, "a section is found");
        for (const ReferenceKey& key : section.keys) {
            IniSection& owner = *findSection(file, section.name);
            const IniKey* const foundKey = findKey(file, owner, key.name);
            const ReferenceKey* const firstKey =
                firstNamed(first->keys, file.caseSensitive, key.name);
            expect((foundKey == nullptr) == (firstKey == nullptr) &&
                       (foundKey == nullptr || foundKey->value.view() == firstKey->value),
                   "a key is found by its name");
        }
        expect(findKey(file, *findSection(file, section.name), "no such key, surely") == nullptr ||
                   firstNamed(first->keys, file.caseSensitive, "no such key, surely") != nullptr,
               "no other key is found");
    }
}

// The status of one question, and whether it is success or one of these.
template <class Question>
std::int32_t ask(Question question, std::initializer_list<std::int32_t> documented) {
    nZOQUIL000::tFixedStatus status;
    question(status);
    expect(status.code == 0 ||
               std::find(documented.begin(), documented.end(), status.code) != documented.end(),
           "the status is documented");
    return status.code;
}

// What a decimal value comes to: a number of any size that 64 bits hold.
std::optional<long long> decimalOf(const std::string& value) {
    const auto white = [](char c) { return fuzz::isWhite(c); };
    auto at = std::find_if_not(value.begin(), value.end(), white);
    if (at != value.end() && (*at == '-' || *at == '+'))
        ++at;
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto end = std::find_if_not(at, value.end(), isDigit);
    if (end == at || std::find_if_not(end, value.end(), white) != value.end())
        return std::nullopt;
    errno = 0;
    const long long number = std::strtoll(value.c_str(), nullptr, 10);
    return errno == 0 ? std::optional(number) : std::nullopt;
}

void askForNumbers(cIniFile& file, const std::string& section, const std::string& name,
                   const std::string& value) {
    const bool blank = std::all_of(value.begin(), value.end(), fuzz::isWhite);
    const auto number = decimalOf(value);
    constexpr std::int32_t kUntouched = 12345;

    std::int32_t number32 = kUntouched;
    const std::int32_t code =
        ask([&](auto& status) { file.getSigned32(section, name, number32, status); },
            {kIniFileErrBadNumber, kIniFileErrNoKey});
    const bool fits = number && *number >= INT32_MIN && *number <= INT32_MAX;
    expect(code == (blank  ? kIniFileErrNoKey
                    : fits ? 0
                           : kIniFileErrBadNumber),
           "a decimal value is read when it fits");
    expect(number32 == (code == 0 ? static_cast<std::int32_t>(*number) : kUntouched),
           "a decimal value is read as it is written");

    std::uint32_t unsigned32 = kUntouched;
    const std::int32_t unsignedCode =
        ask([&](auto& status) { file.getUnsigned32(section, name, unsigned32, status); },
            {kIniFileErrBadNumber, kIniFileErrNoKey});
    expect(unsignedCode == 0 || unsigned32 == kUntouched, "a failed question changes nothing");
    if (number && *number >= 0 && *number <= UINT32_MAX)
        expect(unsignedCode == 0 && unsigned32 == *number, "an unsigned value is read");

    std::uint32_t hexadecimal = kUntouched;
    const std::int32_t hexadecimalCode =
        ask([&](auto& status) { file.getHexadecimal(section, name, hexadecimal, status); },
            {kIniFileErrBadForm});
    constexpr std::size_t kSafeDigits = 8;
    const bool plain = value.size() <= kSafeDigits && value.find_first_of("xX") == value.npos;
    unsigned read = kUntouched;
    if (plain)
        expect((std::sscanf(value.c_str(), "%x", &read) == 1) == (hexadecimalCode == 0) &&
                   read == hexadecimal,
               "a hexadecimal value is read as the C library reads it");
}

void askForLists(cIniFile& file, const std::string& section, const std::string& name,
                 const std::string& value) {
    std::list<std::string> items;
    ask([&](auto& status) { file.getStringList(section, name, items, status); }, {});
    std::string joined;
    for (const std::string& item : items)
        joined.append(item).append(",");
    if (!value.empty() && !value.ends_with(','))
        joined.pop_back();
    expect(joined == value, "the items of a list are what stands between the commas");
    std::list<std::int32_t> numbers{12345};
    const std::int32_t code =
        ask([&](auto& status) { file.getIntegerList(section, name, numbers, status); },
            {kIniFileErrBadForm});
    expect(code == 0 ? numbers.size() == items.size() : numbers.size() == 1,
           "a list of numbers is read whole or not at all");
    std::list<std::wstring> wide;
    ask([&](auto& status) { file.getWideStringList(section, name, wide, status); },
        {kIniFileErrBadForm});
    std::wstring text;
    ask([&](auto& status) { file.getString(section, name, text, status); }, {kIniFileErrBadForm});
}

// A file may have any number of keys; a run asks about the first ones.
constexpr std::size_t kMostAsked = 4;

void askTheClass(std::string_view bytes) {
    MemoryFiles files;
    files.content = bytes;
    cIniFile file(IniFileServices{systemIniMemory(), &files});
    const std::int32_t opened =
        ask([&](auto& status) { file.open("a name", 0, status); }, {kIniFileErrCannotOpen});
    const IniFileOwner settings(createIniFile());
    settings->caseSensitive = true;
    const auto content = fuzz::readReference(bytes, *settings);
    expect((opened == 0) == content.has_value(), "what is not UTF-16 or UTF-32 is opened");
    std::list<std::string> names;
    ask([&](auto& status) { file.getSectionNames(names, status); }, {kIniFileErrNotOpen});
    if (!content)
        return;
    expect(names.size() == content->sections.size(), "every section has a name");
    std::size_t asked = 0;
    for (const ReferenceSection& section : content->sections) {
        bool has = false;
        ask([&](auto& status) { has = file.hasSection(section.name, status); }, {});
        expect(has, "a section is there");
        for (const ReferenceKey& key : section.keys) {
            if (++asked > kMostAsked)
                return;
            const ReferenceKey& first = *firstNamed(section.keys, true, key.name);
            std::string value;
            ask([&](auto& status) { has = file.hasKey(section.name, key.name, status); }, {});
            ask([&](auto& status) { file.getString(section.name, key.name, value, status); }, {});
            expect(has && value == first.value, "a value is given as it stands");
            askForNumbers(file, section.name, key.name, value);
            askForLists(file, section.name, key.name, value);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    CountedMemory counted;
    {
        const IniFileOwner file(createIniFile(counted.memory()));
        file->caseSensitive = true;
        fuzz::takeParseOptions(input, *file);
        MemoryFiles files;
        files.content = input;
        std::FILE* const stream = files.open("", "rb").stream;
        const IniStatus status = loadIni(*file, stream);
        files.close(stream);
        const auto expected = fuzz::readReference(input, *file);
        expect(status == (expected ? kIniDone : kIniWideEncoding), "the load gives its status");
        if (expected) {
            const Reference content = fuzz::referenceOf(*file);
            expect(fuzz::same(content, *expected, true), "what is loaded is what the file says");
            lookUpEverything(*file, content);
        }
        expect(counted.most() <= kMemoryOfAnyFile + kMemoryOfAByte * size,
               "memory is in proportion to the file");
    }
    expect(counted.held() == 0, "everything is given back");
    if (input.size() == size)
        askTheClass(input);
    return 0;
}

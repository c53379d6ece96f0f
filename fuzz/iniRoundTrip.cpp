// Any bytes as an INI file that is loaded, saved and loaded again: the same sections, keys, values
// and quotes. The second load must in any case be what the saved bytes say. It may differ from the
// first one only where the format cannot say what is in memory:
//
//   - keys with " Line" and digits in their names are pieces of one value; once joined, the key may
//     have the name of another, white space at an end of its name or of its value, or quotes around
//     a value that are none of its own;
//   - a value that the maximum line length splits loses white space, and quotes, at the cuts;
//   - a key before the first section that begins with the bytes of a byte-order mark, which is then
//     what the file begins with.
//
// A first byte from 0x80 to 0xBF chooses the options that files are read with, the byte behind it
// those that they are written with; otherwise both are those of the INI file class, which then also
// stores a value and saves.
#include "fuzz/expect.h"
#include "fuzz/iniReference.h"
#include "fuzz/memoryFiles.h"
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/escapedText.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniSafeWrite.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using fuzz::expect;
using fuzz::MemoryFiles;
using fuzz::Reference;
using fuzz::ReferenceKey;
using fuzz::ReferenceSection;
using namespace fuzz::ini;

void takeWriteOptions(std::string_view& input, IniWriteOptions& options) {
    if (input.empty())
        return;
    const auto bits = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    options.spacedSeparator = (bits & 1) == 0;
    options.byteOrderMark = (bits & 2) != 0;
    options.keepLayout = (bits & 4) != 0;
    options.breakCharacter = (bits & 8) != 0 ? ',' : kNoBreakCharacter;
    constexpr std::int32_t kLengths[] = {kNoMaximumLineLength, 80, 40, 18};
    options.maximumLineLength = kLengths[(bits >> 4) & 3];
}

IniStatus load(IniFileObject& file, MemoryFiles& files) {
    std::FILE* const stream = files.open("", "rb").stream;
    const IniStatus status = loadIni(file, stream);
    files.close(stream);
    return status;
}

// Whether a value is the same after it was cut anywhere and joined again.
bool outlivesCuts(const ReferenceKey& key) {
    if (key.quote != kNoQuote)
        return true;
    return std::none_of(key.value.begin(), key.value.end(), [](char c) {
        return fuzz::isWhite(c) || c == kDoubleQuote || c == kSingleQuote;
    });
}

// Whether the second load must equal the first one.
bool mustEqual(const Reference& first, const IniFileObject& file, std::string_view input,
               std::string_view saved) {
    if (input.find(" Line") != input.npos)
        return false;
    if (!file.write.byteOrderMark && saved.size() >= 2 &&
        (saved.starts_with("\xEF\xBB\xBF") || saved.starts_with("\xFF\xFE") ||
         saved.starts_with("\xFE\xFF")))
        return false;
    if (file.write.maximumLineLength == kNoMaximumLineLength)
        return true;
    return std::all_of(first.sections.begin(), first.sections.end(), [](const auto& section) {
        return std::all_of(section.keys.begin(), section.keys.end(), outlivesCuts);
    });
}

// True when the options are those of the INI file class.
bool roundTrip(std::string_view input) {
    const IniFileOwner file(createIniFile());
    file->caseSensitive = true;
    file->write.safeWrite = false;
    file->write.maximumLineLength = kNoMaximumLineLength;
    const std::size_t whole = input.size();
    fuzz::takeParseOptions(input, *file);
    const bool isAsInClass = input.size() == whole;
    if (!isAsInClass)
        takeWriteOptions(input, file->write);

    MemoryFiles files;
    files.content = input;
    if (load(*file, files) != kIniDone)
        return isAsInClass;
    const Reference first = fuzz::referenceOf(*file);
    const IniStatus written = writeIni(*file, "a name", files);
    if (written == kIniNameTooLong && file->write.maximumLineLength != kNoMaximumLineLength)
        return isAsInClass;
    expect(written == kIniDone, "what was loaded is saved");
    const auto expected = fuzz::readReference(files.content, *file);
    const IniStatus loaded = load(*file, files);
    expect(loaded == (expected ? kIniDone : kIniWideEncoding), "what was saved is loaded");
    if (!expected) {
        expect(!mustEqual(first, *file, input, files.content), "the file is read again");
        return isAsInClass;
    }
    const Reference second = fuzz::referenceOf(*file);
    expect(fuzz::same(second, *expected, true), "what is loaded is what the file says");
    if (mustEqual(first, *file, input, files.content))
        expect(fuzz::same(first, second, false), "the second load equals the first one");
    return isAsInClass;
}

// Whether a value without quotes is read as it was stored, escaped: it is not blank and has no
// white space around it.
bool isKept(std::string_view stored) {
    return !stored.empty() && !fuzz::isWhite(stored.front()) && !fuzz::isWhite(stored.back());
}

// The INI file class stores a value under a new key and one in the place of each first key, saves,
// and another object reads the file.
void storeAndSave(std::string_view input) {
    MemoryFiles files;
    files.content = input;
    const IniFileServices services{systemIniMemory(), &files};
    nZOQUIL000::tFixedStatus status;
    cIniFile file(services);
    file.open("a name", 0, status);
    if (status.failed())
        return;
    const std::string value(input.substr(0, 40));
    std::list<std::string> sections;
    file.getSectionNames(sections, status);
    file.setString("a new section", "a new key", value, status);
    if (!sections.empty())
        file.setString(sections.front(), "a new key", value, status);
    file.save(status);
    expect(status.code == 0, "a value is stored and saved");
    std::string stored;
    file.getString("a new section", "a new key", stored, status);
    expect(status.code == 0 && stored == escapeText(value), "a value is stored escaped");
    expect(stored.find_first_of("\r\n\t") == stored.npos && stored.find('\0') == stored.npos,
           "an escaped value is one line");

    cIniFile second(services);
    second.open("a name", kIniFileReadOnly, status);
    expect(status.code == 0, "what was saved is opened");
    std::string read;
    second.getString("a new section", "a new key", read, status);
    if (isKept(stored))
        expect(status.code == 0 && read == stored, "a stored value is read as it was stored");
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (roundTrip(input) && input.find("a new key") == input.npos)
        storeAndSave(input);
    return 0;
}

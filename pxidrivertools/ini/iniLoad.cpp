#include "pxidrivertools/ini/iniLoad.h"

#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniContinuation.h"
#include "pxidrivertools/ini/iniLines.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniLookup.h"

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// One load: what its lines do to the file object.
class Parser {
public:
    explicit Parser(IniFileObject& file) noexcept : file_(file) {}

    IniStatus parse(IniLineCursor& lines) noexcept {
        std::string_view line;
        while (lines.next(line)) {
            if (!fitsText(line))
                return kIniOutOfMemory;
            const IniStatus status = take(classifyLine(file_.parse, line), lines.number());
            if (status != kIniDone)
                return status;
        }
        return kIniDone;
    }

    IniStatus joinPieces() noexcept {
        if (!sawPieces_)
            return kIniDone;
        for (IniNamed* element : elementsOf(file_.sections)) {
            const IniStatus status = joinContinuations(file_, static_cast<IniSection&>(*element));
            if (status != kIniDone)
                return status;
        }
        return kIniDone;
    }

private:
    IniStatus take(const IniLine& line, std::int32_t number) noexcept {
        switch (line.kind) {
        case IniLineKind::header:
            return takeHeader(line.name, number);
        case IniLineKind::key:
            return takeKey(line, number);
        case IniLineKind::odd:
            if (file_.firstOddLine == kNotFromFile)
                file_.firstOddLine = number;
            break;
        case IniLineKind::comment:
            break;
        }
        return kIniDone;
    }

    IniStatus takeHeader(std::string_view name, std::int32_t number) noexcept {
        IniSection* const same = file_.mergeDuplicates ? findSection(file_, name) : nullptr;
        if (same == nullptr)
            return addSection(name, number);
        same->line = number;
        section_ = same;
        return kIniDone;
    }

    IniStatus takeKey(const IniLine& line, std::int32_t number) noexcept {
        if (section_ == nullptr) {
            if (!file_.parse.colonAndUnnamedSection)
                return kIniDone;
            const IniStatus status = addSection(kUnnamedSection, kNotFromFile);
            if (status != kIniDone)
                return status;
        }
        std::string_view value = line.value;
        const char quote = stripQuotes(file_.parse, value);
        IniKey* const same = file_.mergeDuplicates ? findKey(file_, *section_, line.name) : nullptr;
        if (same == nullptr)
            return addKey(line.name, value, quote, number);
        same->value = viewText(value);
        same->quote = quote;
        return kIniDone;
    }

    IniStatus addSection(std::string_view name, std::int32_t number) noexcept {
        if (!reserveElement(file_.memory, file_.sections, IniGrowth::proportional))
            return kIniOutOfMemory;
        IniSection* const section = file_.sectionPool.take(file_.memory);
        if (section == nullptr)
            return kIniOutOfMemory;
        section->name = viewText(name);
        section->caseSensitive = file_.caseSensitive;
        section->line = number;
        appendElement(*file_.sections, section);
        section_ = section;
        return kIniDone;
    }

    IniStatus addKey(std::string_view name, std::string_view value, char quote,
                     std::int32_t number) noexcept {
        if (!reserveElement(file_.memory, section_->keys, IniGrowth::proportional))
            return kIniOutOfMemory;
        IniKey* const key = file_.keyPool.take(file_.memory);
        if (key == nullptr)
            return kIniOutOfMemory;
        key->name = viewText(name);
        key->value = viewText(value);
        key->quote = quote;
        key->line = number;
        appendElement(*section_->keys, key);
        // Looking now, while the name is at hand, spares most files the second pass.
        sawPieces_ = sawPieces_ || readContinuationName(name).has_value();
        return kIniDone;
    }

    IniFileObject& file_;
    IniSection* section_ = nullptr;
    bool sawPieces_ = false;
};

// Gives back the room that the lists took in advance.
void trimLists(IniFileObject& file) noexcept {
    trimList(file.memory, file.sections);
    for (IniNamed* element : elementsOf(file.sections))
        trimList(file.memory, static_cast<IniSection*>(element)->keys);
}

} // namespace

IniStatus loadIni(IniFileObject& file, const IniReader& reader) noexcept {
    discardSections(file);
    file.firstOddLine = kNotFromFile;

    IniBlock block;
    IniStatus status = readBlock(file.memory, reader, block);
    if (block.data == nullptr)
        return status;
    file.block = block.data;
    Parser parser(file);
    IniLineCursor lines(block, status != kIniDone);
    const IniStatus parsed = parser.parse(lines);
    if (status == kIniDone)
        status = parsed;
    if (status == kIniDone)
        status = parser.joinPieces();
    trimLists(file);
    // Of several sections of one name, the first is to be found.
    file.current = nullptr;
    return status;
}

IniStatus loadIni(IniFileObject& file, std::FILE* stream) noexcept {
    using namespace std::string_view_literals;
    char start[4];
    const std::string_view mark(start, std::fread(start, 1, sizeof start, stream));
    for (const std::string_view wide :
         {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv, "\xFF\xFE"sv, "\xFE\xFF"sv})
        if (mark.starts_with(wide))
            return kIniWideEncoding;
    const bool failed = std::ferror(stream) != 0;
    const long textStart = mark.starts_with("\xEF\xBB\xBF"sv) ? 3 : 0;
    // Going back forgets an error, which the reader has to report.
    if (!failed && std::fseek(stream, textStart, SEEK_SET) == 0)
        return loadIni(file, streamReader(stream));
    const auto fail = [](void*, char*, std::uint32_t) -> std::int32_t { return -1; };
    return loadIni(file, IniReader{fail, nullptr});
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

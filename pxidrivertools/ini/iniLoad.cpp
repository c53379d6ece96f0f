#include "pxidrivertools/ini/iniLoad.h"

#include "platform/stream.h"
#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniContinuation.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniLines.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniSearch.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// The keys of the section being read. They are collected in one list that serves section after
// section; at a section's end it gets a list of its own, of the right size.
class KeyCollector {
public:
    explicit KeyCollector(IniFileObject& file) noexcept : file_(file) {}
    KeyCollector(const KeyCollector&) = delete;
    KeyCollector& operator=(const KeyCollector&) = delete;
    // Nothing that was collected is lost.
    ~KeyCollector();

    // Ends the section before and goes on with this one, which may have keys.
    void begin(IniSection& section) noexcept;
    IniSection* section() const noexcept { return section_; }

    // Of the keys so far.
    IniSeenTags& seen() noexcept { return seen_; }
    // The section's keys so far.
    const IniList* keys() const noexcept { return usesShared_ ? shared_ : section_->keys; }
    // Makes sure that one more fits. False when there is no memory.
    bool reserve() noexcept {
        const IniList* const list = keys();
        return (list != nullptr && list->count < list->capacity) || grow();
    }
    // The key must fit.
    void append(IniKey* key) noexcept {
        appendElement(usesShared_ ? *shared_ : *section_->keys, key);
    }

    // Ends the last section. Its keys are where they belong from then on.
    void finish() noexcept;

private:
    bool grow() noexcept;
    void endSection() noexcept;

    IniFileObject& file_;
    IniSection* section_ = nullptr;
    IniList* shared_ = nullptr;
    IniSeenTags seen_;
    bool usesShared_ = false;
    bool continued_ = false; // some section was begun again, and may have more room than it needs
};

// Longer lists are handed over instead of copied.
constexpr std::uint32_t kMostCopied = 64;

KeyCollector::~KeyCollector() {
    finish();
    releaseList(file_.memory, shared_);
}

void KeyCollector::begin(IniSection& section) noexcept {
    if (section_ == &section)
        return;
    endSection();
    section_ = &section;
    usesShared_ = section.keys == nullptr;
    if (usesShared_) {
        seen_.clear();
    } else {
        seen_.addAll();
        continued_ = true;
    }
}

bool KeyCollector::grow() noexcept {
    return usesShared_ ? reserveElement(file_.memory, shared_, IniGrowth::proportional)
                       : reserveKey(file_, *section_, IniGrowth::proportional);
}

void KeyCollector::endSection() noexcept {
    if (!usesShared_ || countOf(shared_) == 0)
        return;
    usesShared_ = false;
    if (shared_->count <= kMostCopied && placeKeys(file_, *section_, *shared_)) {
        truncateList(*shared_, 0);
        return;
    }
    section_->keys = shared_;
    shared_ = nullptr;
    trimKeys(file_, *section_);
}

void KeyCollector::finish() noexcept {
    endSection();
    section_ = nullptr;
    usesShared_ = false;
    if (!continued_)
        return;
    for (IniNamed* element : elementsOf(file_.sections))
        trimKeys(file_, static_cast<IniSection&>(*element));
    continued_ = false;
}

// One load: what its lines do to the file object.
class Parser {
public:
    explicit Parser(IniFileObject& file) noexcept : file_(file), keys_(file) {}

    IniStatus parse(IniLineCursor& lines) noexcept {
        const IniStatus status = takeLines(lines);
        keys_.finish();
        return status;
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
    // A line and the search for its name.
    struct Line {
        IniLine content;
        IniSearch search;
        std::int32_t number = 0;
        bool fits = true;
    };

    // Each line is read before the one before it is taken, so that its search has time to begin.
    IniStatus takeLines(IniLineCursor& lines) noexcept {
        std::array<Line, 2> pair;
        std::size_t now = 0;
        IniStatus status = kIniDone;
        for (bool isThere = read(lines, pair[now]); isThere && status == kIniDone; now ^= 1) {
            isThere = read(lines, pair[now ^ 1]);
            status = take(pair[now]);
        }
        return status;
    }

    // The next header or key line.
    bool read(IniLineCursor& lines, Line& line) noexcept {
        std::string_view text;
        while (lines.next(text)) {
            line.content = classifyLine(file_.parse, text, lines.separator());
            switch (line.content.kind) {
            case IniLineKind::header:
                line.search.begin(file_.caseSensitive, line.content.name);
                line.search.prepare(file_.sectionIndex);
                break;
            case IniLineKind::key:
                line.search.begin(file_.caseSensitive, line.content.name);
                if (const IniSection* const section = keys_.section())
                    line.search.prepare(section->index);
                break;
            case IniLineKind::odd:
                if (file_.firstOddLine == kNotFromFile)
                    file_.firstOddLine = lines.number();
                continue;
            case IniLineKind::comment:
                continue;
            }
            line.number = lines.number();
            line.fits = fitsText(text);
            return true;
        }
        return false;
    }

    IniStatus take(Line& line) noexcept {
        if (!line.fits)
            return kIniOutOfMemory;
        return line.content.kind == IniLineKind::header ? takeHeader(line.search, line.number)
                                                        : takeKey(line);
    }

    IniStatus takeHeader(IniSearch& search, std::int32_t number) noexcept {
        const std::uint32_t same =
            file_.mergeDuplicates
                ? search.find(file_.memory, file_.sectionIndex, file_.sections, seenSections_)
                : 0;
        if (same == 0)
            return addSection(search, number);
        IniSection& section = static_cast<IniSection&>(*elementsOf(file_.sections)[same - 1]);
        section.line = number;
        keys_.begin(section);
        return kIniDone;
    }

    IniStatus takeKey(Line& line) noexcept {
        if (keys_.section() == nullptr) {
            if (!file_.parse.colonAndUnnamedSection)
                return kIniDone;
            IniSearch unnamed;
            unnamed.begin(file_.caseSensitive, kUnnamedSection);
            const IniStatus status = addSection(unnamed, kNotFromFile);
            if (status != kIniDone)
                return status;
        }
        std::string_view value = line.content.value;
        const char quote = stripQuotes(file_.parse, value);
        const std::uint32_t same =
            file_.mergeDuplicates
                ? line.search.find(file_.memory, keys_.section()->index, keys_.keys(), keys_.seen())
                : 0;
        if (same == 0)
            return addKey(line, value, quote);
        IniKey& key = static_cast<IniKey&>(*elementsOf(keys_.keys())[same - 1]);
        key.value = viewText(value);
        key.quote = quote;
        return kIniDone;
    }

    IniStatus addSection(const IniSearch& search, std::int32_t number) noexcept {
        if (!reserveElement(file_.memory, file_.sections, IniGrowth::proportional))
            return kIniOutOfMemory;
        IniSection* const section = file_.sectionPool.take(file_.arena, file_.memory);
        if (section == nullptr)
            return kIniOutOfMemory;
        section->name = search.nameText();
        section->caseSensitive = file_.caseSensitive;
        section->line = number;
        appendElement(*file_.sections, section);
        search.arrived(file_.sectionIndex, file_.sections, seenSections_);
        keys_.begin(*section);
        return kIniDone;
    }

    IniStatus addKey(const Line& line, std::string_view value, char quote) noexcept {
        if (!keys_.reserve())
            return kIniOutOfMemory;
        IniKey* const key = file_.keyPool.take(file_.arena, file_.memory);
        if (key == nullptr)
            return kIniOutOfMemory;
        key->name = line.search.nameText();
        key->value = viewText(value);
        key->quote = quote;
        key->line = line.number;
        keys_.append(key);
        line.search.arrived(keys_.section()->index, keys_.keys(), keys_.seen());
        // Looking now, while the name is at hand, spares most files the second pass.
        sawPieces_ = sawPieces_ || mayBeContinuation(line.search.name());
        return kIniDone;
    }

    IniFileObject& file_;
    KeyCollector keys_;
    IniSeenTags seenSections_;
    bool sawPieces_ = false;
};

// Makes the block, of which reading came to this status, the content. `start` is where its text
// begins.
IniStatus loadBlock(IniFileObject& file, const IniBlock& block, std::size_t start,
                    IniStatus status) noexcept {
    if (block.data == nullptr)
        return status;
    file.block = block.data;
    file.arena.expect(block.size * 2);
    Parser parser(file);
    IniLineCursor lines({block.data + start, block.size - start}, status != kIniDone);
    const IniStatus parsed = parser.parse(lines);
    if (status == kIniDone)
        status = parsed;
    if (status == kIniDone)
        status = parser.joinPieces();
    trimList(file.memory, file.sections);
    return status;
}

void dropContent(IniFileObject& file) noexcept {
    discardSections(file);
    file.firstOddLine = kNotFromFile;
}

class StreamSource final : public IniSource {
public:
    explicit StreamSource(std::FILE* stream) noexcept : stream_(stream) {}

    std::size_t read(char* to, std::size_t size) noexcept override {
        return platform::readStream(stream_, to, size);
    }
    bool hasFailed() noexcept override { return std::ferror(stream_) != 0; }
    bool isAtKnownEnd() noexcept override { return false; }
    std::size_t sizeOfAll() noexcept override { return 0; }
    // As far as the system tells; more may come, or less.
    std::size_t sizeOfRest() noexcept override {
        const long here = std::ftell(stream_);
        if (here < 0 || std::fseek(stream_, 0, SEEK_END) != 0)
            return 0;
        const long end = std::ftell(stream_);
        std::fseek(stream_, here, SEEK_SET);
        return end > here ? static_cast<std::size_t>(end - here) : 0;
    }

private:
    std::FILE* stream_;
};

class FileSource final : public IniSource {
public:
    explicit FileSource(platform::FileToLoad& file) noexcept : file_(file) {}

    std::size_t read(char* to, std::size_t size) noexcept override { return file_.read(to, size); }
    bool hasFailed() noexcept override { return file_.hasFailed(); }
    bool isAtKnownEnd() noexcept override { return file_.isAtKnownEnd(); }
    std::size_t sizeOfAll() noexcept override { return sizeOfRest(); }
    std::size_t sizeOfRest() noexcept override {
        return static_cast<std::size_t>(std::min(file_.expected(), kMost));
    }

private:
    // More cannot be addressed; asking for as much as this fails as it should.
    static constexpr std::uint64_t kMost = std::numeric_limits<std::size_t>::max() / 4;

    platform::FileToLoad& file_;
};

// `status` is what came of getting to the start.
IniStatus loadSource(IniFileObject& file, IniSource& source, IniStatus status) noexcept {
    using namespace std::string_view_literals;
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    IniBlock block;
    IniSourceBlock reader(file.memory, source, block);
    if (status == kIniDone)
        status = reader.readBeginning();
    const std::string_view beginning(block.data, block.size);
    for (const std::string_view wide :
         {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv, "\xFF\xFE"sv, "\xFE\xFF"sv})
        if (beginning.starts_with(wide)) {
            file.memory.release(block.data);
            return kIniWideEncoding;
        }
    const std::size_t textStart = beginning.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
    dropContent(file);
    if (status == kIniDone)
        status = reader.readRest();
    return loadBlock(file, block, textStart, status);
}

} // namespace

IniStatus loadIni(IniFileObject& file, const IniReader& reader) noexcept {
    dropContent(file);
    IniBlock block;
    const IniStatus status = readBlock(file.memory, reader, block);
    return loadBlock(file, block, 0, status);
}

IniStatus loadIni(IniFileObject& file, std::FILE* stream) noexcept {
    StreamSource source(stream);
    return loadSource(file, source,
                      std::fseek(stream, 0, SEEK_SET) == 0 ? kIniDone : kIniReadFailed);
}

IniStatus loadIni(IniFileObject& file, platform::FileToLoad& from) noexcept {
    FileSource source(from);
    return loadSource(file, source, kIniDone);
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

#include "pxidrivertools/cIniFile.h"

#include "platform/fileToLoad.h"
#include "platform/text.h"
#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/escapedText.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniSafeWrite.h"
#include "pxidrivertools/ini/iniUpdate.h"
#include "pxidrivertools/integerText.h"
#include "pxidrivertools/listItems.h"
#include "pxidrivertools/listText.h"
#include "pxidrivertools/scan.h"

#include <array>
#include <charconv>
#include <new>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// A confirmed save writes again, after a pause, until the file's last-write time has changed.
constexpr int kMostWrites = 5;
constexpr std::chrono::milliseconds kPause{5};

void fail(tFixedStatus& status, std::int32_t code, std::int32_t line,
          platform::SystemCode reason = platform::kNoSystemError) noexcept {
    if (nZOQUIL000::setFixedStatus(status, code, "zotavpci", "pxidrivertools\\cIniFile", line))
        nZOQUIL000::noteSystemCode(status, reason);
}

// Runs what may run out of memory.
template <class Work>
bool withMemory(tFixedStatus& status, std::int32_t line, Work work) {
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        fail(status, kIniFileErrMemoryFull, line);
        return false;
    }
}

IniFileOwner makeEngine(const IniMemory& memory) noexcept {
    IniFileOwner engine(createIniFile(memory));
    if (engine) {
        engine->caseSensitive = true;
        engine->write = {};
        engine->write.safeWrite = false;
        engine->write.sameDirectoryTemporary = false;
        engine->write.maximumLineLength = kNoMaximumLineLength;
        engine->write.breakCharacter = kNoBreakCharacter;
    }
    return engine;
}

template <typename Number>
std::string formatNumber(Number number, int base) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, base).ptr;
    return {digits.data(), end};
}

class OpenStream {
public:
    OpenStream(IniFileOperations& files, const char* path) noexcept
        : files_(files), opened_(files.open(path, "rb")) {
        // Files are read in few large pieces, which need no buffer between.
        if (get() != nullptr)
            std::setvbuf(get(), nullptr, _IONBF, 0);
    }
    ~OpenStream() {
        if (get() != nullptr)
            files_.close(get());
    }
    OpenStream(const OpenStream&) = delete;
    OpenStream& operator=(const OpenStream&) = delete;

    std::FILE* get() const noexcept { return opened_.stream; }
    platform::SystemCode code() const noexcept { return opened_.code; }

private:
    IniFileOperations& files_;
    IniOpened opened_;
};

// Makes the content the file object's, as it was at a last-write time that was looked up before, so
// that a change in between is seen as one.
void finishLoad(IniFileObject& engine, const std::string& path, IniStatus loaded,
                platform::FileTime time, tFixedStatus& status) noexcept {
    if (loaded < 0)
        return fail(status, kIniFileErrCannotOpen, __LINE__);
    if (rememberFile(engine, path, time) < 0)
        return fail(status, kIniFileErrMemoryFull, __LINE__);
}

void loadFile(IniFileObject& engine, const std::string& path, tFixedStatus& status) noexcept {
    platform::FileToLoad file(path.c_str());
    if (!file.isOpen())
        return fail(status, kIniFileErrCannotOpen, __LINE__, file.code());
    const std::optional<platform::FileTime> time = file.lastWriteTime();
    if (!time)
        return fail(status, kIniFileErrCannotOpen, __LINE__);
    finishLoad(engine, path, loadIni(engine, file), *time, status);
}

void loadStream(IniFileObject& engine, const std::string& path, IniFileOperations& files,
                tFixedStatus& status) noexcept {
    const OpenStream stream(files, path.c_str());
    if (stream.get() == nullptr)
        return fail(status, kIniFileErrCannotOpen, __LINE__, stream.code());
    platform::FileTime time = 0;
    if (readTimestamp(path.c_str(), time, files) < 0)
        return fail(status, kIniFileErrCannotOpen, __LINE__);
    finishLoad(engine, path, loadIni(engine, stream.get()), time, status);
}

} // namespace

cIniFile::cIniFile(const IniFileServices& services) : services_(services) {}

cIniFile::~cIniFile() = default;

void cIniFile::open(const char* utf8Path, std::uint32_t flags, tFixedStatus& status) {
    if (status.failed())
        return;
    if (utf8Path == nullptr || *utf8Path == '\0')
        return fail(status, kIniFileErrNoPath, __LINE__);
    cIniFile::close(status);
    if (!storePath(utf8Path, status))
        return;
    engine_ = makeEngine(services_.memory);
    if (!engine_)
        return fail(status, kIniFileErrNoEngine, __LINE__);
    readOnly_ = flags & kIniFileReadOnly;
    load(status);
    if (status.failed())
        engine_.reset();
}

bool cIniFile::storePath(const char* utf8Path, tFixedStatus& status) {
    platform::Conversion conversion = platform::Conversion::failed;
    if (!withMemory(status, __LINE__, [&] {
            std::string path(utf8Path);
            std::wstring wide;
            conversion = platform::toWide(path, wide);
            path_.swap(path);
            widePath_.swap(wide);
        }))
        return false;
    if (conversion != platform::Conversion::done)
        fail(status, kIniFileErrCannotOpen, __LINE__);
    return !status.failed();
}

// What stands in for the system's files knows streams, and times by the path.
void cIniFile::load(tFixedStatus& status) {
    if (services_.files == &systemFileOperations())
        loadFile(*engine_, path_, status);
    else
        loadStream(*engine_, path_, *services_.files, status);
}

void cIniFile::open(const wchar_t* path, std::uint32_t flags, tFixedStatus& status) {
    if (status.failed())
        return;
    if (path == nullptr || *path == L'\0')
        return fail(status, kIniFileErrNoPath, __LINE__);
    std::string utf8Path;
    platform::Conversion conversion = platform::Conversion::failed;
    if (!withMemory(status, __LINE__, [&] { conversion = platform::toUtf8(path, utf8Path); }))
        return;
    if (conversion != platform::Conversion::done)
        return fail(status, kIniFileErrCannotOpen, __LINE__);
    open(utf8Path.c_str(), flags, status);
}

void cIniFile::getPath(std::string& utf8Path, tFixedStatus& status) {
    if (!status.failed())
        withMemory(status, __LINE__, [&] { utf8Path = path_; });
}

void cIniFile::getPath(std::wstring& path, tFixedStatus& status) {
    if (!status.failed())
        withMemory(status, __LINE__, [&] { path = widePath_; });
}

void cIniFile::close(tFixedStatus& status) {
    if (!status.failed())
        engine_.reset();
}

void cIniFile::save(tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    std::optional<platform::FileTime> before;
    if (confirmSave_ != 0)
        before = engine_->path.length != 0 ? std::optional(engine_->lastWriteTime)
                                           : services_.files->lastWriteTime(path_.c_str());
    for (int written = 1;; ++written) {
        if (writeIni(*engine_, path_.c_str(), *services_.files,
                     before ? IniRewrite::always : IniRewrite::ifDifferent) < 0)
            return fail(status, kIniFileErrNotStored, __LINE__, engine_->failure);
        if (!before || engine_->lastWriteTime != *before)
            return;
        if (written == kMostWrites)
            return fail(status, kIniFileErrNotStored, __LINE__);
        services_.files->pause(kPause);
    }
}

void cIniFile::clear(tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    IniFileOwner empty(createIniFile(services_.memory));
    if (!empty)
        return fail(status, kIniFileErrNoEngine, __LINE__);
    engine_ = std::move(empty);
}

void cIniFile::getSectionNames(std::list<std::string>& names, tFixedStatus& status) {
    if (!isUsable(status))
        return;
    withMemory(status, __LINE__, [&] {
        std::list<std::string> found;
        for (const IniNamed* section : elementsOf(engine_->sections))
            appendItem(found, std::string(section->name.view()));
        appendItems(names, found);
    });
}

bool cIniFile::hasSection(const std::string& name, tFixedStatus& status) {
    return isUsable(status) && findSection(*engine_, name) != nullptr;
}

bool cIniFile::hasKey(const std::string& section, const std::string& key, tFixedStatus& status) {
    if (!isUsable(status))
        return false;
    IniSection* const found = findSection(*engine_, section);
    return found != nullptr && findKey(*engine_, *found, key) != nullptr;
}

void cIniFile::removeKey(const std::string& section, const std::string& key, tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    IniSection* const found = findSection(*engine_, section);
    if (found == nullptr)
        return fail(status, kIniFileErrNotOpen, __LINE__);
    IniKey* const foundKey = findKey(*engine_, *found, key);
    if (foundKey == nullptr)
        return fail(status, kIniFileErrNoKey, __LINE__);
    nZoPxiDriverTools_1_0::removeKey(*engine_, *found, *foundKey);
}

void cIniFile::removeSection(const std::string& name, tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    IniSection* const section = findSection(*engine_, name);
    if (section == nullptr)
        return fail(status, kIniFileErrNoSection, __LINE__);
    nZoPxiDriverTools_1_0::removeSection(*engine_, *section);
}

void cIniFile::renameSection(const std::string& oldName, const std::string& newName,
                             tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    IniSection* const section = findSection(*engine_, oldName);
    if (section == nullptr)
        return fail(status, kIniFileErrNoSection, __LINE__);
    if (nZoPxiDriverTools_1_0::renameSection(*engine_, *section, newName) < 0)
        return fail(status, kIniFileErrNotStored, __LINE__);
}

void cIniFile::getString(const std::string& section, const std::string& key, std::string& value,
                         tFixedStatus& status) {
    tText text;
    getText(section, key, text, status);
    if (!status.failed())
        withMemory(status, __LINE__, [&] { value = text.view(); });
}

std::string_view cIniFile::getView(const std::string& section, const std::string& key,
                                   tFixedStatus& status) {
    const IniText* const found = findValue(section, key, status);
    return found == nullptr ? std::string_view() : found->view();
}

void cIniFile::getText(const std::string& section, const std::string& key, tText& value,
                       tFixedStatus& status) {
    const IniText* const found = findValue(section, key, status);
    if (found != nullptr)
        withMemory(status, __LINE__, [&] { value = tText(found->view()); });
}

void cIniFile::getString(const std::string& section, const std::string& key, std::wstring& value,
                         tFixedStatus& status) {
    tText text;
    getText(section, key, text, status);
    if (status.failed())
        return;
    platform::Conversion conversion = platform::Conversion::failed;
    if (withMemory(status, __LINE__,
                   [&] { conversion = platform::toWide(std::string(text.view()), value); }) &&
        conversion != platform::Conversion::done)
        fail(status, kIniFileErrBadForm, __LINE__);
}

void cIniFile::setString(const std::string& section, const std::string& key,
                         const std::string& value, tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    withMemory(status, __LINE__, [&] {
        if (setValue(*engine_, section, key, escapeText(value), kNoQuote) != kIniStored)
            fail(status, kIniFileErrNotStored, __LINE__);
    });
}

void cIniFile::getHexadecimal(const std::string& section, const std::string& key,
                              std::uint32_t& value, tFixedStatus& status) {
    const IniText* const found = findValue(section, key, status);
    if (found == nullptr)
        return;
    std::string_view text = found->view();
    const std::optional<std::uint32_t> number = scanHexadecimal(text);
    if (!number)
        return fail(status, kIniFileErrBadForm, __LINE__);
    value = *number;
}

void cIniFile::setHexadecimal(const std::string& section, const std::string& key,
                              std::uint32_t value, tFixedStatus& status) {
    withMemory(status, __LINE__, [&] {
        setString(section, key, (value != 0 ? "0x" : "") + formatNumber(value, 16), status);
    });
}

void cIniFile::getSigned32(const std::string& section, const std::string& key, std::int32_t& value,
                           tFixedStatus& status) {
    const auto text = findNumber(section, key, status);
    if (!text)
        return;
    const std::optional<std::int32_t> number = readSigned(*text);
    if (!number)
        return fail(status, kIniFileErrBadNumber, __LINE__);
    value = *number;
}

void cIniFile::setSigned32(const std::string& section, const std::string& key, std::int32_t value,
                           tFixedStatus& status) {
    withMemory(status, __LINE__, [&] { setString(section, key, formatNumber(value, 10), status); });
}

void cIniFile::getUnsigned32(const std::string& section, const std::string& key,
                             std::uint32_t& value, tFixedStatus& status) {
    const auto text = findNumber(section, key, status);
    if (!text)
        return;
    const std::optional<std::uint32_t> number = readUnsigned(*text);
    if (!number)
        return fail(status, kIniFileErrBadNumber, __LINE__);
    value = *number;
}

void cIniFile::setUnsigned32(const std::string& section, const std::string& key,
                             std::uint32_t value, tFixedStatus& status) {
    withMemory(status, __LINE__, [&] { setString(section, key, formatNumber(value, 10), status); });
}

void cIniFile::getIntegerList(const std::string& section, const std::string& key,
                              std::list<std::int32_t>& values, tFixedStatus& status) {
    std::list<std::string> items;
    getStringList(section, key, items, status);
    if (status.failed())
        return;
    withMemory(status, __LINE__, [&] {
        std::list<std::int32_t> numbers;
        for (const std::string& item : items) {
            std::string_view cursor = item;
            const std::optional<std::int32_t> number = scanSigned(cursor);
            if (!number)
                return fail(status, kIniFileErrBadForm, __LINE__);
            appendItem(numbers, *number);
        }
        values.swap(numbers);
    });
}

void cIniFile::setIntegerList(const std::string& section, const std::string& key,
                              const std::list<std::int32_t>& values, tFixedStatus& status) {
    if (isModifiable(status))
        withMemory(status, __LINE__, [&] { setString(section, key, joinList(values), status); });
}

void cIniFile::getWideStringList(const std::string& section, const std::string& key,
                                 std::list<std::wstring>& values, tFixedStatus& status) {
    std::list<std::string> items;
    getStringList(section, key, items, status);
    if (status.failed())
        return;
    withMemory(status, __LINE__, [&] {
        std::list<std::wstring> wide;
        for (const std::string& item : items) {
            std::wstring converted;
            if (platform::toWide(item, converted) != platform::Conversion::done)
                return fail(status, kIniFileErrBadForm, __LINE__);
            appendItem(wide, std::move(converted));
        }
        values.swap(wide);
    });
}

void cIniFile::getStringList(const std::string& section, const std::string& key,
                             std::list<std::string>& values, tFixedStatus& status) {
    const IniText* const text = findValue(section, key, status);
    if (text != nullptr)
        withMemory(status, __LINE__, [&] { values = splitList(text->view()); });
}

void cIniFile::setWideStringList(const std::string& section, const std::string& key,
                                 const std::list<std::wstring>& values, tFixedStatus& status) {
    if (!isModifiable(status))
        return;
    withMemory(status, __LINE__, [&] {
        std::list<std::string> items;
        for (const std::wstring& value : values) {
            std::string converted;
            if (platform::toUtf8(value, converted) != platform::Conversion::done)
                return fail(status, kIniFileErrNotStored, __LINE__);
            appendItem(items, std::move(converted));
        }
        setStringList(section, key, items, status);
    });
}

void cIniFile::setStringList(const std::string& section, const std::string& key,
                             const std::list<std::string>& values, tFixedStatus& status) {
    if (isModifiable(status))
        withMemory(status, __LINE__, [&] { setString(section, key, joinList(values), status); });
}

bool cIniFile::fileChanged(tFixedStatus& status) {
    if (status.failed())
        return false;
    if (!engine_) {
        fail(status, kIniFileErrNothingToWatch, __LINE__);
        return false;
    }
    if (engine_->path.length == 0)
        return true;
    const auto time = services_.files->lastWriteTime(path_.c_str());
    return !time || *time != engine_->lastWriteTime;
}

std::uint8_t cIniFile::getConfirmSave(tFixedStatus& status) {
    return status.failed() ? std::uint8_t{0} : confirmSave_;
}

void cIniFile::setConfirmSave(std::uint8_t confirm, tFixedStatus& status) {
    if (!status.failed())
        confirmSave_ = confirm;
}

bool cIniFile::isUsable(tFixedStatus& status) const {
    if (!status.failed() && !engine_)
        fail(status, kIniFileErrNotOpen, __LINE__);
    return !status.failed();
}

bool cIniFile::isModifiable(tFixedStatus& status) const {
    if (isUsable(status) && readOnly_ != 0)
        fail(status, kIniFileErrReadOnly, __LINE__);
    return !status.failed();
}

const IniText* cIniFile::findValue(const std::string& section, const std::string& key,
                                   tFixedStatus& status) {
    if (!isUsable(status))
        return nullptr;
    IniSection* const found = findSection(*engine_, section);
    if (found == nullptr) {
        fail(status, kIniFileErrNotOpen, __LINE__);
        return nullptr;
    }
    const IniKey* const foundKey = findKey(*engine_, *found, key);
    if (foundKey == nullptr) {
        fail(status, kIniFileErrNoKey, __LINE__);
        return nullptr;
    }
    return &foundKey->value;
}

std::optional<std::string_view> cIniFile::findNumber(const std::string& section,
                                                     const std::string& key, tFixedStatus& status) {
    const IniText* const found = findValue(section, key, status);
    if (found == nullptr)
        return std::nullopt;
    const std::string_view text = trimLeft(found->view());
    if (!text.empty())
        return text;
    fail(status, kIniFileErrNoKey, __LINE__);
    return std::nullopt;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

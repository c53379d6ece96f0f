#include "pxidrivertools/ini/iniContinuation.h"

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniNames.h"

#include <cstring>
#include <limits>
#include <span>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

IniKey& keyOf(IniNamed* element) noexcept {
    return static_cast<IniKey&>(*element);
}

// How many elements at the front form one run; 0 when none starts there.
std::size_t runLength(std::span<IniNamed* const> elements) noexcept {
    const auto first = readContinuationName(elements.front()->name.view());
    if (!first || first->number != 1)
        return 0;
    std::size_t length = 1;
    while (length < elements.size()) {
        const auto next = readContinuationName(elements[length]->name.view());
        if (!next || next->number == 1)
            break;
        ++length;
    }
    return length;
}

bool concatenate(const IniMemory& memory, std::span<IniNamed* const> run,
                 IniText& result) noexcept {
    std::size_t size = 0;
    for (IniNamed* element : run)
        size += keyOf(element).value.length;
    if (size >= std::numeric_limits<std::uint32_t>::max())
        return false;
    char* const joined = static_cast<char*>(memory.allocate(size + 1));
    if (joined == nullptr)
        return false;
    char* end = joined;
    for (IniNamed* element : run) {
        const IniText& piece = keyOf(element).value;
        std::memcpy(end, piece.data, piece.length);
        end += piece.length;
    }
    *end = '\0';
    result = {joined, static_cast<std::uint32_t>(size), 0, true};
    return true;
}

// Makes the first key of the run the whole; the others are discarded.
bool joinRun(IniFileObject& file, IniSection& section, std::span<IniNamed* const> run) noexcept {
    IniKey& whole = keyOf(run.front());
    if (run.size() > 1) {
        IniText value;
        if (!concatenate(file.memory, run, value))
            return false;
        releaseText(file.memory, whole.value);
        whole.value = value;
        section.keysOwnText = true;
    }
    // Names come from the load and are views: shortening one is enough.
    whole.name = viewText(readContinuationName(whole.name.view())->base);
    whole.name.tag = tagName(whole.name.view());
    for (IniNamed* element : run.subspan(1))
        discardKey(file, &keyOf(element));
    return true;
}

} // namespace

std::optional<IniContinuationName> readContinuationName(std::string_view name) noexcept {
    std::size_t digits = name.size();
    while (digits != 0 && isDecimalDigit(name[digits - 1]))
        --digits;
    const std::string_view before = name.substr(0, digits);
    if (digits == name.size() || !before.ends_with(kContinuationWord))
        return std::nullopt;
    std::int64_t number = 0;
    for (const char digit : name.substr(digits)) {
        number = number * 10 + (digit - '0');
        if (number > std::numeric_limits<std::int32_t>::max())
            return std::nullopt;
    }
    return IniContinuationName{before.substr(0, before.size() - kContinuationWord.size()),
                               static_cast<std::int32_t>(number)};
}

IniStatus joinContinuations(IniFileObject& file, IniSection& section) noexcept {
    const std::span<IniNamed*> elements = elementsOf(section.keys);
    IniStatus status = kIniDone;
    std::size_t kept = 0;
    std::size_t next = 0;
    while (next < elements.size()) {
        const std::size_t run = status == kIniDone ? runLength(elements.subspan(next)) : 0;
        std::size_t consumed = 1;
        if (run != 0) {
            if (joinRun(file, section, elements.subspan(next, run)))
                consumed = run;
            else
                status = kIniOutOfMemory; // the rest stays in pieces
        }
        elements[kept++] = elements[next];
        next += consumed;
    }
    if (section.keys != nullptr) {
        truncateList(*section.keys, static_cast<std::uint32_t>(kept));
        trimKeys(file, section);
    }
    invalidateIndex(section.index);
    return status;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

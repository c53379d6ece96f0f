// A search for a name while a file is being read, where a name that is not found is added at once:
// what is computed of the name is computed once, and most new names are known to be new without
// looking at the others.
#pragma once

#include "pxidrivertools/ini/iniIndex.h"
#include "pxidrivertools/ini/iniNames.h"

#include <cstdint>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Which tags stand in a list, as far as one bit for every 1024 of them can tell.
class IniSeenTags {
public:
    bool mayHave(std::uint16_t tag) const noexcept { return (bits_ & bitOf(tag)) != 0; }
    void add(std::uint16_t tag) noexcept { bits_ |= bitOf(tag); }
    void clear() noexcept { bits_ = 0; }
    // For a list of which nothing is known.
    void addAll() noexcept { bits_ = ~std::uint64_t{0}; }

private:
    static std::uint64_t bitOf(std::uint16_t tag) noexcept {
        return std::uint64_t{1} << tag / 1024;
    }

    std::uint64_t bits_ = 0;
};

class IniSearch {
public:
    // Begins another search. The name has no white space around it.
    void begin(bool caseSensitive, std::string_view name) noexcept {
        name_ = name;
        tag_ = tagTrimmedName(name);
        isHashed_ = false;
        caseSensitive_ = caseSensitive;
    }

    // Some time before find(): what that will look at comes into the processor's cache meanwhile.
    void prepare(const IniIndex* index) noexcept {
        if (index == nullptr)
            return;
        takeHash();
        prefetchSlot(*index, hash_);
    }

    // The 1-based index of the first element of that name, or 0. `index` and `seen` belong to
    // `list`.
    std::uint32_t find(const IniMemory& memory, IniIndex*& index, const IniList* list,
                       const IniSeenTags& seen) noexcept {
        if (countOf(list) <= kLongestWalk)
            return seen.mayHave(tag_) ? walkByTag(list, caseSensitive_, name_, tag_) : 0;
        if (!isHashed_)
            takeHash();
        return findByHash(memory, index, list, caseSensitive_, name_, hash_);
    }

    std::string_view name() const noexcept { return name_; }
    // For the record to be added.
    IniText nameText() const noexcept {
        IniText text = viewText(name_);
        text.tag = tag_;
        return text;
    }

    // After find() found nothing and the record was appended to the list.
    void arrived(IniIndex* index, const IniList* list, IniSeenTags& seen) const noexcept {
        seen.add(tag_);
        if (index != nullptr && isHashed_)
            elementArrives(index, list, hash_);
    }

private:
    void takeHash() noexcept {
        hash_ = hashName(caseSensitive_, name_);
        isHashed_ = true;
    }

    std::string_view name_;
    std::uint32_t hash_ = 0;
    std::uint16_t tag_ = 0;
    bool isHashed_ = false; // most searches need no hash
    bool caseSensitive_ = false;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// The keys of the section being read. They are collected in one list that serves section after
// section; at a section's end it gets a list of its own, of the right size.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniSearch.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

class IniKeyCollector {
public:
    explicit IniKeyCollector(IniFileObject& file) noexcept : file_(file) {}
    IniKeyCollector(const IniKeyCollector&) = delete;
    IniKeyCollector& operator=(const IniKeyCollector&) = delete;
    // Nothing that was collected is lost.
    ~IniKeyCollector();

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

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

#include "pxidrivertools/ini/iniKeyCollector.h"

#include "pxidrivertools/ini/iniSectionKeys.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

namespace {

// Longer lists are handed over instead of copied.
constexpr std::uint32_t kMostCopied = 64;

} // namespace

IniKeyCollector::~IniKeyCollector() {
    finish();
    releaseList(file_.memory, shared_);
}

void IniKeyCollector::begin(IniSection& section) noexcept {
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

bool IniKeyCollector::grow() noexcept {
    return usesShared_ ? reserveElement(file_.memory, shared_, IniGrowth::proportional)
                       : reserveKey(file_, *section_, IniGrowth::proportional);
}

void IniKeyCollector::endSection() noexcept {
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

void IniKeyCollector::finish() noexcept {
    endSection();
    section_ = nullptr;
    usesShared_ = false;
    if (!continued_)
        return;
    for (IniNamed* element : elementsOf(file_.sections))
        trimKeys(file_, static_cast<IniSection&>(*element));
    continued_ = false;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0

// An INI file that remembers what was read from it last, so that a failed load of a description can
// name the section and the key. It has the reads that a description is loaded with.
#pragma once

#include "pxidrivertools/cIniFile.h"

#include <cstdint>
#include <list>
#include <string>

namespace tavctl {

class TracedIniFile {
public:
    using tFixedStatus = nZOQUIL000::tFixedStatus;

    void open(const char* path, std::uint32_t flags, tFixedStatus& status) {
        file_.open(path, flags, status);
    }
    bool hasKey(const std::string& section, const std::string& key, tFixedStatus& status) {
        remember(section, key);
        return file_.hasKey(section, key, status);
    }
    void getString(const std::string& section, const std::string& key, std::string& value,
                   tFixedStatus& status) {
        remember(section, key);
        file_.getString(section, key, value, status);
        lastText_ = value;
    }
    void getStringList(const std::string& section, const std::string& key,
                       std::list<std::string>& values, tFixedStatus& status) {
        remember(section, key);
        file_.getStringList(section, key, values, status);
    }
    void getSigned32(const std::string& section, const std::string& key, std::int32_t& value,
                     tFixedStatus& status) {
        remember(section, key);
        file_.getSigned32(section, key, value, status);
    }
    void getHexadecimal(const std::string& section, const std::string& key, std::uint32_t& value,
                        tFixedStatus& status) {
        remember(section, key);
        file_.getHexadecimal(section, key, value, status);
    }

    // What was read last; empty when nothing was read yet.
    [[nodiscard]] const std::string& lastSection() const noexcept { return lastSection_; }
    [[nodiscard]] const std::string& lastKey() const noexcept { return lastKey_; }

    // The text that was read last.
    [[nodiscard]] const std::string& lastText() const noexcept { return lastText_; }

private:
    void remember(const std::string& section, const std::string& key) {
        lastSection_ = section;
        lastKey_ = key;
    }

    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile file_;
    std::string lastSection_;
    std::string lastKey_;
    std::string lastText_;
};

} // namespace tavctl

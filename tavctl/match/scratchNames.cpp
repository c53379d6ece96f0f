#include "tavctl/match/scratchNames.h"

namespace tavctl {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kIniFileErrNoKey;

void ScratchIniFile::open(const char*, std::uint32_t, tFixedStatus&) {
    sections_.clear();
}

void ScratchIniFile::close(tFixedStatus&) {
    sections_.clear();
}

void ScratchIniFile::save(tFixedStatus&) {}

void ScratchIniFile::getSectionNames(std::list<std::string>& names, tFixedStatus&) {
    for (const auto& [name, keys] : sections_)
        names.push_back(name);
}

void ScratchIniFile::getString(const std::string& section, const std::string& key,
                               std::string& value, tFixedStatus& status) {
    const auto found = sections_.find(section);
    if (found != sections_.end()) {
        const auto text = found->second.find(key);
        if (text != found->second.end()) {
            value = text->second;
            return;
        }
    }
    nZOQUIL000::setFixedStatus(status, kIniFileErrNoKey, "tavctl", "scratchNames", __LINE__);
}

void ScratchIniFile::setString(const std::string& section, const std::string& key,
                               const std::string& value, tFixedStatus&) {
    sections_[section][key] = value;
}

} // namespace tavctl

// An INI file class for the loader that notes what it is asked, and can fail any of its operations.
#pragma once

#include "pxidrivertools/cIniFile.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace testsupport {

class RecordingIniFile {
public:
    using Status = nZOQUIL000::tFixedStatus;

    static constexpr const char* kFailingFile = "failing";

    // The operation of this number, counted from 1, fails with `code`; 0 lets none fail.
    void failAt(std::size_t operation, std::int32_t code) {
        failingOperation_ = operation;
        code_ = code;
    }

    // One entry an operation, such as "string UpstreamTAV.Model".
    [[nodiscard]] const std::vector<std::string>& operations() const { return operations_; }

    void open(const char* path, std::uint32_t flags, Status& status) {
        if (begin("open " + std::to_string(flags), status))
            file_.open(path, flags, status);
    }
    bool hasKey(const std::string& section, const std::string& key, Status& status) {
        return begin("has " + section + "." + key, status) && file_.hasKey(section, key, status);
    }
    void getString(const std::string& section, const std::string& key, std::string& value,
                   Status& status) {
        if (begin("string " + section + "." + key, status))
            file_.getString(section, key, value, status);
    }
    void getStringList(const std::string& section, const std::string& key,
                       std::list<std::string>& values, Status& status) {
        if (begin("list " + section + "." + key, status))
            file_.getStringList(section, key, values, status);
    }
    void getSigned32(const std::string& section, const std::string& key, std::int32_t& value,
                     Status& status) {
        if (begin("decimal " + section + "." + key, status))
            file_.getSigned32(section, key, value, status);
    }
    void getHexadecimal(const std::string& section, const std::string& key, std::uint32_t& value,
                        Status& status) {
        if (begin("hexadecimal " + section + "." + key, status))
            file_.getHexadecimal(section, key, value, status);
    }

private:
    bool begin(const std::string& operation, Status& status) {
        operations_.push_back(operation);
        if (operations_.size() == failingOperation_)
            nZOQUIL000::setFixedStatus(status, code_, "zotavpci", kFailingFile, 7);
        return !status.failed();
    }

    nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile file_;
    std::vector<std::string> operations_;
    std::size_t failingOperation_ = 0;
    std::int32_t code_ = 0;
};

} // namespace testsupport

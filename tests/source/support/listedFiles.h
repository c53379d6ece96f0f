// A locator of description files that answers a fixed list and counts how often it is asked.
#pragma once

#include "source/iPciTavFilesystem.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

class ListedFiles : public nZoTavManagerPciPlugin_15_0::iPciTavFilesystem {
public:
    static constexpr const char* kPattern = "the pattern";

    std::vector<std::string> paths;
    // One entry a call, in order.
    std::vector<std::string> calls;
    // Called first in each call; may raise.
    std::function<void(const std::string&)> onCall;

    std::string GetDescriptionFilePattern() override {
        note("GetDescriptionFilePattern");
        return kPattern;
    }
    void ListFiles(const std::string& pattern, std::vector<std::string>& files) override {
        note("ListFiles " + pattern);
        files = paths;
    }

    // Loading descriptions needs nothing else.
    std::string GetConfigPath() override { return refuse<std::string>(); }
    int EnsureFileExists(const std::string&) override { return refuse<int>(); }
    [[nodiscard]] bool IsLocked() const override { return refuse<bool>(); }
    void LockFile(const std::string&) override { refuse<void>(); }
    void UnlockFile() override { refuse<void>(); }

private:
    void note(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall(call);
    }
    template <typename Result>
    static Result refuse() {
        throw std::logic_error("not a matter of loading descriptions");
    }
};

} // namespace testsupport

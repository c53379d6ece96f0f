// A library loaded at run time.
#pragma once

#include "platform/systemCode.h"

#include <string>

namespace platform {

// The file name that a library of this base name ("zopcibrd") has on this system.
std::string libraryFileName(const char* baseName);

// Owns one loaded library; unloads it when destroyed.
class DynamicLibrary {
public:
    DynamicLibrary() = default;
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    // Loads the library of this UTF-8 name. A name without a folder is searched for as the system
    // does for the calling module, but on Linux never in the current folder, even where the
    // environment names that; a name with one is taken as it is. False on failure, with failure()
    // and failureText() set. Raises std::bad_alloc for want of memory for the name only.
    bool load(const char* utf8Name);

    // The address of an exported symbol; null on failure, with failure() and failureText() set.
    void* symbol(const char* name);

    void unload() noexcept;

    [[nodiscard]] bool loaded() const noexcept { return handle_ != nullptr; }
    [[nodiscard]] SystemCode failure() const noexcept { return failure_; }

    // The loader's own words for the last failure; empty when it has none, or there was no memory
    // for them.
    [[nodiscard]] const std::string& failureText() const noexcept { return failureText_; }

private:
    // What the loader says of its last call; given a name, that there is no such library, for which
    // the loader was not asked.
    void keepFailure(SystemCode code, const char* name = nullptr) noexcept;

    void* handle_ = nullptr;
    SystemCode failure_ = kNoSystemError;
    std::string failureText_;
};

} // namespace platform

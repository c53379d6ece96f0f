// Keys of the registry that a test makes and takes away again.
#pragma once

#include "platform/windows/uniqueHandle.h"

#include <cstdint>
#include <string>

namespace testsupport {

// A key below HKEY_LOCAL_MACHINE, made when it is missing and deleted with all below it at the end.
// `view` is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
class RegistryTree {
public:
    RegistryTree(std::string path, REGSAM view);
    ~RegistryTree();
    RegistryTree(RegistryTree&& other) noexcept = default;
    RegistryTree(const RegistryTree&) = delete;
    RegistryTree& operator=(const RegistryTree&) = delete;

    // `subkey` may be empty: the key itself. Each raises std::runtime_error on failure.
    void set(const std::string& subkey, const std::string& name, DWORD type,
             const std::string& bytes) const;
    void setNumber(const std::string& subkey, const std::string& name, std::uint32_t value) const;
    void makeKey(const std::string& subkey) const;

private:
    [[nodiscard]] platform::RegistryKey open(const std::string& subkey) const;

    std::string path_; // empty: moved from
    REGSAM view_;
};

} // namespace testsupport

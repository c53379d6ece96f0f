#include "tests/support/windows/registryTree.h"

#include <stdexcept>
#include <utility>

namespace testsupport {

namespace {

void require(LSTATUS code, const std::string& what) {
    if (code != ERROR_SUCCESS)
        throw std::runtime_error("registry: " + what + ": system error " + std::to_string(code));
}

} // namespace

RegistryTree::RegistryTree(std::string path, REGSAM view) : path_(std::move(path)), view_(view) {
    makeKey("");
}

RegistryTree::~RegistryTree() {
    if (path_.empty())
        return;
    {
        const platform::RegistryKey key = open("");
        RegDeleteTreeA(key.get(), nullptr);
    }
    RegDeleteKeyExA(HKEY_LOCAL_MACHINE, path_.c_str(), view_, 0);
}

platform::RegistryKey RegistryTree::open(const std::string& subkey) const {
    const std::string path = subkey.empty() ? path_ : path_ + "\\" + subkey;
    platform::RegistryKey key;
    require(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                            KEY_ALL_ACCESS | view_, nullptr, key.out(), nullptr),
            "make " + path);
    return key;
}

void RegistryTree::makeKey(const std::string& subkey) const {
    static_cast<void>(open(subkey));
}

void RegistryTree::set(const std::string& subkey, const std::string& name, DWORD type,
                       const std::string& bytes) const {
    require(RegSetValueExA(open(subkey).get(), name.c_str(), 0, type,
                           reinterpret_cast<const BYTE*>(bytes.data()),
                           static_cast<DWORD>(bytes.size())),
            "set " + name);
}

void RegistryTree::setNumber(const std::string& subkey, const std::string& name,
                             std::uint32_t value) const {
    set(subkey, name, REG_DWORD, std::string(reinterpret_cast<const char*>(&value), sizeof value));
}

} // namespace testsupport

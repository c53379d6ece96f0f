// GLib's GKeyFile without its comments, which this project does not keep either.
#include "bench/compare/iniContender.h"
#include "bench/require.h"

#include <glib.h>

namespace bench {

namespace {

class KeyFile final : public IniContender {
public:
    ~KeyFile() override { KeyFile::unload(); }
    KeyFile() = default;
    KeyFile(const KeyFile&) = delete;
    KeyFile& operator=(const KeyFile&) = delete;

    void load(const std::string& path) override {
        file_ = g_key_file_new();
        require(g_key_file_load_from_file(file_, path.c_str(), G_KEY_FILE_NONE, nullptr) != 0,
                "GKeyFile cannot read " + path);
    }
    void unload() override {
        if (file_ != nullptr)
            g_key_file_free(file_);
        file_ = nullptr;
        g_free(value_);
        value_ = nullptr;
    }
    std::string_view find(const std::string& section, const std::string& key) override {
        g_free(value_);
        value_ = g_key_file_get_value(file_, section.c_str(), key.c_str(), nullptr);
        return value_ == nullptr ? std::string_view() : value_;
    }
    void save(const std::string& path) override {
        require(g_key_file_save_to_file(file_, path.c_str(), nullptr) != 0,
                "GKeyFile cannot write " + path);
    }

private:
    GKeyFile* file_ = nullptr;
    char* value_ = nullptr;
};

} // namespace

IniContenderOwner makeGKeyFile() {
    return std::make_unique<KeyFile>();
}

} // namespace bench

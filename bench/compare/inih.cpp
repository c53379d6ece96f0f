// inih only reports what it reads, and writes nothing; this puts it into sections and keys in file
// order with a hash index each, which is what a careful user of it would write.
#include "bench/compare/iniContender.h"
#include "bench/require.h"

#include <ini.h>

#include <deque>
#include <unordered_map>

namespace bench {

namespace {

struct Key {
    std::string name;
    std::string value;
};
struct Section {
    std::string name;
    std::deque<Key> keys;
    std::unordered_map<std::string_view, Key*> index;
};

class Inih final : public IniContender {
public:
    void load(const std::string& path) override {
        require(ini_parse(path.c_str(), take, this) == 0, "inih cannot read " + path);
    }
    void unload() override {
        index_.clear();
        sections_.clear();
        current_ = nullptr;
    }
    std::string_view find(const std::string& section, const std::string& key) override {
        const auto foundSection = index_.find(section);
        if (foundSection == index_.end())
            return {};
        const auto found = foundSection->second->index.find(key);
        return found == foundSection->second->index.end() ? std::string_view()
                                                          : found->second->value;
    }
    void save(const std::string&) override { require(false, "inih writes no files"); }

private:
    static int take(void* user, const char* section, const char* name, const char* value) {
        static_cast<Inih*>(user)->add(section, name, value);
        return 1;
    }
    void add(std::string_view sectionName, const char* name, const char* value) {
        if (current_ == nullptr || current_->name != sectionName)
            current_ = &sectionOf(sectionName);
        if (const auto same = current_->index.find(name); same != current_->index.end()) {
            same->second->value = value;
            return;
        }
        Key& key = current_->keys.emplace_back(Key{name, value});
        current_->index.emplace(key.name, &key);
    }
    Section& sectionOf(std::string_view name) {
        if (const auto found = index_.find(name); found != index_.end())
            return *found->second;
        Section& section = sections_.emplace_back();
        section.name = name;
        index_.emplace(section.name, &section);
        return section;
    }

    std::deque<Section> sections_;
    std::unordered_map<std::string_view, Section*> index_;
    Section* current_ = nullptr;
};

} // namespace

IniContenderOwner makeInih() {
    return std::make_unique<Inih>();
}

} // namespace bench

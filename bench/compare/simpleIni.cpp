// SimpleIni with names compared exactly and one value a key.
#include "bench/compare/iniContender.h"
#include "bench/require.h"

// Narrow text needs no conversion, and the library for it is not packaged.
#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <optional>

namespace bench {

namespace {

class SimpleIni final : public IniContender {
public:
    void load(const std::string& path) override {
        file_.emplace();
        require(file_->LoadFile(path.c_str()) == SI_OK, "SimpleIni cannot read " + path);
    }
    void unload() override { file_.reset(); }
    std::string_view find(const std::string& section, const std::string& key) override {
        const char* const value = file_->GetValue(section.c_str(), key.c_str());
        return value == nullptr ? std::string_view() : value;
    }
    void save(const std::string& path) override {
        require(file_->SaveFile(path.c_str(), false) == SI_OK, "SimpleIni cannot write " + path);
    }

private:
    std::optional<CSimpleIniCaseA> file_;
};

} // namespace

IniContenderOwner makeSimpleIni() {
    return std::make_unique<SimpleIni>();
}

} // namespace bench

// Boost's property tree, with its own INI reader and writer.
#include "bench/compare/iniContender.h"

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

namespace bench {

namespace {

class PropertyTree final : public IniContender {
public:
    void load(const std::string& path) override { boost::property_tree::read_ini(path, tree_); }
    void unload() override { tree_.clear(); }
    std::string_view find(const std::string& section, const std::string& key) override {
        const auto foundSection = tree_.find(section);
        if (foundSection == tree_.not_found())
            return {};
        const auto found = foundSection->second.find(key);
        return found == foundSection->second.not_found() ? std::string_view()
                                                         : found->second.data();
    }
    void save(const std::string& path) override { boost::property_tree::write_ini(path, tree_); }

private:
    boost::property_tree::ptree tree_;
};

} // namespace

IniContenderOwner makePropertyTree() {
    return std::make_unique<PropertyTree>();
}

} // namespace bench

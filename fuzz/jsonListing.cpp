#include "fuzz/jsonListing.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace fuzz {

namespace {

class Listing : public nlohmann::json_sax<nlohmann::json> {
public:
    std::vector<std::string> items;

    bool null() override { return put('0'); }
    bool boolean(bool value) override { return put(value ? '1' : '0'); }
    bool number_integer(std::int64_t value) override { return put('n', std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) override { return put('n', std::to_string(value)); }
    bool number_float(double, const std::string& text) override { return put('n', text); }
    bool string(std::string& text) override { return put('s', text); }
    bool binary(nlohmann::json::binary_t&) override { return false; }
    bool start_object(std::size_t) override { return put('{'); }
    bool key(std::string& text) override { return put('k', text); }
    bool end_object() override { return put('}'); }
    bool start_array(std::size_t) override { return put('['); }
    bool end_array() override { return put(']'); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
        return false;
    }

private:
    bool put(char kind, const std::string& text = {}) {
        items.emplace_back(1, kind).append(text);
        return true;
    }
};

} // namespace

std::string plain(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) > 127)
            c = '?';
    return text;
}

bool isJson(const std::string& text) {
    return nlohmann::json::accept(text);
}

std::optional<std::vector<std::string>> listJson(const std::string& text) {
    Listing listing;
    if (!nlohmann::json::sax_parse(text, &listing))
        return std::nullopt;
    return std::move(listing.items);
}

} // namespace fuzz

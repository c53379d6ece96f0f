// A text of metrics as monitoring systems collect it: Prometheus' text exposition format, or
// OpenMetrics.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tavctl {

class MetricText {
public:
    enum class Form { prometheus, openMetrics };
    enum class Kind {
        gauge,
        info // of which only the labels matter: its samples end with "_info" and are 1
    };
    // Names, which are known to be good ones, with values, which may be any text.
    using Labels = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    explicit MetricText(Form form) : form_(form) {}

    // Begins a family of metrics. Its name has no "_info" at its end, and its help neither quotes
    // nor backslashes.
    void beginFamily(std::string_view name, Kind kind, std::string_view help);

    // Adds a sample to that family. One with labels that the family has already is left out: a
    // collector would refuse the whole text.
    void add(Labels labels, double value = 1);

    // The whole text. Nothing can be added then.
    [[nodiscard]] std::string take();

private:
    Form form_;
    std::string family_; // as its samples begin
    std::unordered_set<std::string> labelsOfFamily_;
    std::string text_;
};

// A value as it stands between quotes: what cannot be seen is shown by its number (see
// tavctl/words/printable.h), but for line feeds; quotes and backslashes have a backslash before
// them.
std::string labelValue(std::string_view text);

} // namespace tavctl

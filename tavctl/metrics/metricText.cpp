#include "tavctl/metrics/metricText.h"

#include "tavctl/words/printable.h"

#include <fmt/core.h>

namespace tavctl {

void MetricText::beginFamily(std::string_view name, Kind kind, std::string_view help) {
    const bool isInfo = kind == Kind::info;
    family_ = isInfo ? fmt::format("{}_info", name) : std::string(name);
    labelsOfFamily_.clear();
    if (form_ == Form::openMetrics)
        text_ +=
            fmt::format("# TYPE {0} {1}\n# HELP {0} {2}\n", name, isInfo ? "info" : "gauge", help);
    else
        text_ += fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", family_, help);
}

void MetricText::add(Labels labels, double value) {
    std::string inBraces;
    for (const auto& [name, text] : labels) {
        inBraces += inBraces.empty() ? "{" : ",";
        inBraces.append(name).append("=\"").append(labelValue(text)).append("\"");
    }
    inBraces += inBraces.empty() ? "" : "}";
    const auto [at, isNew] = labelsOfFamily_.insert(std::move(inBraces));
    if (isNew)
        text_.append(family_).append(*at).append(fmt::format(" {}\n", value));
}

std::string MetricText::take() {
    if (form_ == Form::openMetrics)
        text_ += "# EOF\n";
    return std::move(text_);
}

std::string labelValue(std::string_view text) {
    std::string value;
    while (true) {
        const std::size_t end = text.find('\n');
        for (const char character : printable(text.substr(0, end))) {
            if (character == '\\' || character == '"')
                value += '\\';
            value += character;
        }
        if (end == std::string_view::npos)
            return value;
        value += "\\n";
        text.remove_prefix(end + 1);
    }
}

} // namespace tavctl

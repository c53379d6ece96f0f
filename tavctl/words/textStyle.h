// Colour for people who look at a terminal that shows it and have not asked to be spared
// (NO_COLOR).
#pragma once

#include <cstdio>
#include <string>

namespace tavctl {

class TextStyle {
public:
    // Colours or not; tests say which.
    explicit TextStyle(bool colour) : colour_(colour) {}

    // As the stream and the environment want it.
    static TextStyle forStream(std::FILE* stream);

    [[nodiscard]] std::string mark(const std::string& text) const { return dress("1;32", text); }
    [[nodiscard]] std::string warning(const std::string& text) const { return dress("1;33", text); }
    [[nodiscard]] std::string faint(const std::string& text) const { return dress("2", text); }

private:
    [[nodiscard]] std::string dress(const char* code, const std::string& text) const;

    bool colour_;
};

} // namespace tavctl

// Where the sections, keys and values of a description file stand. The lines are told apart by the
// INI engine's own functions, so that what is pointed at is what the loader reads.
#pragma once

#include "pxidrivertools/ini/iniLines.h"
#include "tavctl/description/finding.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl::lint {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::IniLineKind;

// One line. The views look into the file's text.
struct PositionedLine {
    int number = 0;        // counted from 1
    std::string_view text; // without its end
    IniLineKind kind = IniLineKind::odd;
    const std::string* inSection = nullptr; // which it stands in, or which it begins
    std::string_view name;                  // of a header or key
    std::string_view value;                 // of a key, without its quotes
    char quote = 0;                         // the quote character that was around the value

    // Empty before the first section.
    [[nodiscard]] const std::string& section() const { return *inSection; }
};

class PositionedIni {
public:
    // The bytes of a file; a UTF-8 byte-order mark is passed over.
    explicit PositionedIni(std::string bytes);
    PositionedIni(const PositionedIni&) = delete;
    PositionedIni& operator=(const PositionedIni&) = delete;

    // In file order, without the blank ones.
    [[nodiscard]] const std::vector<PositionedLine>& lines() const { return lines_; }
    // Null for a blank line, and for one that there is not.
    [[nodiscard]] const PositionedLine* line(int number) const;

    // The names of the sections, each once, in the order of their first headers.
    [[nodiscard]] const std::vector<std::string>& sections() const { return sections_; }
    [[nodiscard]] bool hasSection(const std::string& section) const;

    // The numbers of the lines that give a key, in file order; the last one counts.
    [[nodiscard]] const std::vector<int>& linesOf(const std::string& section,
                                                  const std::string& key) const;

    // Places of what counts. Without the key: that of the section; without that: none.
    [[nodiscard]] Place header(const std::string& section) const;
    [[nodiscard]] Place name(const std::string& section, const std::string& key) const;
    [[nodiscard]] Place value(const std::string& section, const std::string& key) const;

    // A part of a value: `length` bytes at `offset`. The whole value when it is written in pieces.
    [[nodiscard]] Place part(const std::string& section, const std::string& key, std::size_t offset,
                             std::size_t length) const;

    // The item of that number, counted from 0, of a list.
    [[nodiscard]] Place item(const std::string& section, const std::string& key,
                             std::size_t index) const;

    // A stretch of a line that is there and not blank, by views into its text.
    [[nodiscard]] Place placeOf(int line, std::string_view stretch) const;

    // The line behind a place; empty when there is none.
    [[nodiscard]] std::string textAt(const Place& place) const;

private:
    std::string bytes_;
    std::vector<PositionedLine> lines_;
    std::vector<std::string> sections_;
    std::map<std::string, int> headers_; // first header of each section
    std::map<std::pair<std::string, std::string>, std::vector<int>> keys_;
};

} // namespace tavctl::lint

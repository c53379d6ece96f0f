#include "tests/tavctl/documents/guide.h"

#include "tavctl/description/positionedIni.h"
#include "tests/support/command.h"
#include "tests/support/fileText.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace testtavctl {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFence = "```";
constexpr std::string_view kPrompt = "$ ";

std::string trimmedEnd(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

} // namespace

std::string withValue(const std::string& text, const std::string& section, const std::string& key,
                      const std::string& value) {
    const tavctl::lint::PositionedIni ini(text);
    const auto replaced = ini.linesOf(section, key);
    const int header = ini.header(section).line;
    std::istringstream lines(text);
    std::string result;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const bool isReplaced =
            std::find(replaced.begin(), replaced.end(), number) != replaced.end();
        if (!isReplaced)
            result += line + "\n";
        const bool isPlace = replaced.empty() ? number == header : number == replaced.front();
        if (isPlace && !value.empty())
            result += key + " = " + value + "\n";
    }
    if (header == 0)
        result += "[" + section + "]\n" + key + " = " + value + "\n";
    return result;
}

Guide::Guide(const std::string& text) {
    std::istringstream stream(text);
    bool inside = false;
    blocks_.emplace_back();
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with(kFence)) {
            blocks_.back().lines.push_back(line);
            continue;
        }
        blocks_.emplace_back();
        if (!inside)
            blocks_.back().kind = line.substr(kFence.size());
        // The fences themselves belong to the text.
        blocks_[blocks_.size() - (inside ? 1 : 2)].lines.push_back(line);
        inside = !inside;
    }
    if (inside)
        throw std::runtime_error("a block of the guide does not end");
}

std::size_t Guide::commands() const {
    std::size_t count = 0;
    for (const Block& block : blocks_) {
        for (const std::string& line : block.lines)
            count += block.kind == "console" && line.starts_with(kPrompt) ? 1U : 0U;
    }
    return count;
}

void Guide::change(const fs::path& folder, const Block& block) {
    constexpr std::string_view kIn = "; in ";
    const std::string& head = block.lines.front();
    const auto comma = head.rfind(", [");
    if (!head.starts_with(kIn) || comma == std::string::npos || !head.ends_with("]"))
        throw std::runtime_error("expected \"; in FILE, [Section]\", got " + head);
    const fs::path file = folder / head.substr(kIn.size(), comma - kIn.size());
    const std::string section = head.substr(comma + 3, head.size() - comma - 4);
    std::string text = testsupport::fileText(file);
    for (auto line = block.lines.begin() + 1; line != block.lines.end(); ++line) {
        const auto equals = line->find(" = ");
        if (equals == std::string::npos)
            throw std::runtime_error("expected \"key = value\", got " + *line);
        text = withValue(text, section, line->substr(0, equals), line->substr(equals + 3));
    }
    std::ofstream(file, std::ios::binary) << text;
}

std::string Guide::run(const fs::path& folder, const fs::path& programs) const {
    std::string result;
    for (const Block& block : blocks_) {
        if (block.kind == "ini")
            change(folder, block);
        if (block.kind != "console") {
            for (const std::string& line : block.lines)
                result += line + "\n";
            continue;
        }
        for (const std::string& line : block.lines) {
            if (!line.starts_with(kPrompt))
                continue;
            const auto ran = testsupport::runCommand("cd '" + folder.string() + "' && PATH='" +
                                                     programs.string() + "':\"$PATH\"\n" +
                                                     line.substr(kPrompt.size()));
            result += line + "\n";
            if (!ran.output.empty())
                result += trimmedEnd(ran.output) + "\n";
        }
    }
    return result;
}

} // namespace testtavctl

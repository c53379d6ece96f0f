// The two forms of a lint report.
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/description/rules.h"
#include "tavctl/lint/lint.h"
#include "tavctl/words/characters.h"
#include "tavctl/words/document.h"
#include "tavctl/words/json.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>

namespace tavctl::lint {

namespace {

constexpr int kIndent = 4;
// Room for a line and its indentation.
constexpr int kShownCharacters = 74;

std::string_view severityName(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

// A line cut to what fits, around the place that is pointed at, with control characters as blanks
// so that the caret stands where it should.
struct Excerpt {
    std::string text;
    int column = 0; // of the place, within the text
};

Excerpt excerptOf(const Finding& finding) {
    std::vector<std::string> cells; // one character each
    for (const char c : finding.text) {
        if (continuesCharacter(c) && !cells.empty())
            cells.back() += c;
        else
            cells.emplace_back(1, static_cast<unsigned char>(c) < 0x20 ? ' ' : c);
    }
    const int total = static_cast<int>(cells.size());
    const int column = std::max(finding.place.column, 1);
    const int last = std::min(column + std::max(finding.place.length, 1) - 1, total);
    int begin = 1;
    if (last > kShownCharacters)
        begin = std::max(1, std::min(column - 10, total - kShownCharacters + 1));
    const int end = std::min(total, begin + kShownCharacters - 1);
    Excerpt excerpt;
    for (int i = begin; i <= end; ++i)
        excerpt.text += cells[static_cast<std::size_t>(i) - 1];
    excerpt.column = column - begin + 1;
    return excerpt;
}

// A place that has a line has a column.
void appendLine(std::string& out, const Finding& finding) {
    if (finding.place.line == 0)
        return;
    const Excerpt excerpt = excerptOf(finding);
    const int room = std::max(1, kShownCharacters - excerpt.column + 1);
    const int length = std::clamp(finding.place.length, 1, room);
    out += fmt::format("{:{}}{}\n", "", kIndent, excerpt.text);
    out += fmt::format("{:>{}}{:~<{}}\n", '^', kIndent + excerpt.column, "", length - 1);
}

Json placeOrNull(int number) {
    return number == 0 ? Json(nullptr) : Json(number);
}

Json againstJson(const std::vector<Comparison>& comparisons) {
    Json list = Json::array();
    for (const Comparison& comparison : comparisons) {
        Json models = Json::array();
        for (const FoundModel& each : comparison.models)
            models.push_back(Json{{"change", each.change == FoundModel::Change::has     ? "has"
                                             : each.change == FoundModel::Change::gains ? "gains"
                                                                                        : "loses"},
                                  {"model", each.model},
                                  {"address", "0000:" + each.address},
                                  {"slotPath", each.slotPath}});
        list.push_back(
            Json{{"dump", comparison.dump},
                 {"failure", comparison.failure ? failureJson(*comparison.failure) : Json(nullptr)},
                 {"leftOut", leftOutJson(comparison.leftOut)},
                 {"models", std::move(models)}});
    }
    return list;
}

} // namespace

std::string reportAsText(const Report& report) {
    std::string out;
    for (const Finding& finding : report.findings) {
        out += fmt::format("{}: {}: {}\n", printable(finding.placeText()),
                           severityName(finding.severity), finding.rule);
        appendLine(out, finding);
        out += wrapped(fmt::format("found: {}", finding.found), 2);
        out += wrapped(fmt::format("expected: {}", finding.expected), 2);
        out += '\n';
    }
    if (report.findings.empty())
        out += fmt::format("{}, no problems\n", counted(report.files.size(), "file"));
    else
        out +=
            fmt::format("{}, {}, {}\n", counted(report.files.size(), "file"),
                        counted(report.errors(), "error"), counted(report.warnings(), "warning"));
    if (report.endsLoad())
        out += "The plug-in cannot load these files: it lists nothing at all.\n";
    return out;
}

// Put together from its parts' texts: of very many findings all their values at once would take
// several times the room.
std::string reportAsJson(const Report& report, const std::vector<Comparison>& comparisons) {
    Json begin = newDocument();
    begin.add("files", Json(report.files));
    std::string out = begin.text();
    out.pop_back(); // the findings follow one by one
    out += R"(,"findings":[)";
    for (const Finding& finding : report.findings) {
        out.append(&finding == report.findings.data() ? "" : ",");
        out += Json{{"file", finding.file},
                    {"line", placeOrNull(finding.place.line)},
                    {"column", placeOrNull(finding.place.column)},
                    {"length", finding.place.length},
                    {"severity", severityName(finding.severity)},
                    {"rule", finding.rule},
                    {"text", finding.text},
                    {"found", finding.found},
                    {"expected", finding.expected},
                    {"endsLoad", finding.endsLoad}}
                   .text();
    }
    out += fmt::format(R"(],"errors":{},"warnings":{},"loads":{},"against":{}}})", report.errors(),
                       report.warnings(), !report.endsLoad(), againstJson(comparisons).text());
    return out + "\n";
}

std::string rulesAsText() {
    std::size_t width = 0;
    for (const Rule& each : rules())
        width = std::max(width, each.id.size());
    std::string out;
    for (const Rule& each : rules()) {
        const std::string line =
            fmt::format("{:<9}{:<{}}", severityName(each.severity), each.id, width + 2);
        std::string summary = wrapped(each.summary, line.size());
        summary.replace(0, line.size(), line);
        out += summary;
    }
    return out;
}

std::string rulesAsJson() {
    Json list = Json::array();
    for (const Rule& each : rules())
        list.push_back(Json{{"rule", each.id},
                            {"severity", severityName(each.severity)},
                            {"summary", each.summary}});
    Json whole = newDocument();
    whole.add("rules", std::move(list));
    return whole.line();
}

} // namespace tavctl::lint

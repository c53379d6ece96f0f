#include "tavctl/names/nameReport.h"

#include "tavctl/words/printable.h"
#include "tavctl/words/textTable.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

std::string asText(const std::vector<TableRow>& rows, bool verbose) {
    // The model is cut first; a slot path only when that is not enough.
    constexpr std::size_t kModel = 2;
    constexpr std::size_t kSlotPath = 3;
    std::string text;
    for (const std::string& line :
         verbose ? tableLines(rows) : tableLines(rows, {{kModel}, {kSlotPath}, {0}}, screenWidth()))
        text += fmt::format("{}\n", line);
    return text;
}

NamePresence presence(const NameEntry& entry, const Survey* survey) {
    return survey == nullptr ? NamePresence::unknown : presenceOf(entry, *survey);
}

const char* presenceWord(NamePresence presence) {
    switch (presence) {
    case NamePresence::unknown:
        return "?";
    case NamePresence::present:
        return "yes";
    case NamePresence::replaced:
        return "replaced";
    case NamePresence::absent:
        return "no";
    }
    return "";
}

Json presenceJson(NamePresence presence) {
    switch (presence) {
    case NamePresence::present:
        return "present";
    case NamePresence::replaced:
        return "replaced";
    case NamePresence::absent:
        return "absent";
    case NamePresence::unknown:
        break;
    }
    return nullptr;
}

std::string orDash(const std::string& text) {
    return text.empty() ? "-" : text;
}

} // namespace

std::string namesAsTable(const NameFile& file, const Survey* survey, bool verbose) {
    std::vector<TableRow> rows{{"NAME", "PRESENT", "MODEL", "SLOT PATH"}};
    for (const NameEntry& entry : file.entries())
        rows.push_back({orDash(entry.terminalName), presenceWord(presence(entry, survey)),
                        orDash(entry.model), entry.slotPath});
    return asText(rows, verbose);
}

Json namesAsJson(const NameFile& file, const Survey* survey) {
    Json names = Json::array();
    for (const NameEntry& entry : file.entries())
        names.push_back(Json{{"name", entry.terminalName},
                             {"model", entry.model},
                             {"slotPath", entry.slotPath},
                             {"presence", presenceJson(presence(entry, survey))}});
    return names;
}

std::string problemsAsText(const std::vector<NameProblem>& problems, const std::string& path) {
    std::string text;
    for (const NameProblem& problem : problems) {
        const char* const colon = problem.terminalName.empty() ? "" : ": ";
        text += printable(fmt::format("{}:{}: [{}] {}{}{}: {}", path, problem.line,
                                      problem.slotPath, problem.terminalName, colon,
                                      kindName(problem.kind), problem.message)) +
                "\n";
    }
    return text;
}

Json problemsAsJson(const std::vector<NameProblem>& problems, const std::string& path) {
    Json list = Json::array();
    for (const NameProblem& problem : problems)
        list.push_back(Json{{"kind", kindName(problem.kind)},
                            {"file", path},
                            {"line", problem.line},
                            {"slotPath", problem.slotPath},
                            {"name", problem.terminalName},
                            {"message", problem.message}});
    return list;
}

std::string forecastsAsTable(const std::vector<NameForecast>& forecasts, bool verbose) {
    std::vector<TableRow> rows{{"NAME", "CHANGE", "MODEL", "SLOT PATH"}};
    for (const NameForecast& forecast : forecasts) {
        std::string change = changeName(forecast.change);
        if (!forecast.before.empty())
            change += fmt::format(", was {}", forecast.before);
        rows.push_back({forecast.terminalName, change, forecast.model, forecast.slotPath});
    }
    return asText(rows, verbose);
}

Json forecastsAsJson(const std::vector<NameForecast>& forecasts) {
    Json list = Json::array();
    for (const NameForecast& forecast : forecasts)
        list.push_back(
            Json{{"name", forecast.terminalName},
                 {"change", changeName(forecast.change)},
                 {"before", forecast.before.empty() ? Json(nullptr) : Json(forecast.before)},
                 {"model", forecast.model},
                 {"slotPath", forecast.slotPath}});
    return list;
}

} // namespace tavctl

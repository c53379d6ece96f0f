// What tavctl names prints: tables for people, and arrays for programs.
#pragma once

#include "tavctl/names/nameCheck.h"
#include "tavctl/words/json.h"

#include <string>
#include <vector>

namespace tavctl {

// Each stored name with whether it is in use; `survey` null: not known. With `verbose` nothing is
// cut to fit 80 columns.
std::string namesAsTable(const NameFile& file, const Survey* survey, bool verbose);
Json namesAsJson(const NameFile& file, const Survey* survey);

// "file:line: [slot path] name: kind: message", a line for each.
std::string problemsAsText(const std::vector<NameProblem>& problems, const std::string& path);
Json problemsAsJson(const std::vector<NameProblem>& problems, const std::string& path);

std::string forecastsAsTable(const std::vector<NameForecast>& forecasts, bool verbose);
Json forecastsAsJson(const std::vector<NameForecast>& forecasts);

} // namespace tavctl

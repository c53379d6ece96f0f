// The page of tavctl report: one HTML file that asks no network for anything.
#pragma once

#include "tavctl/report/reportData.h"

#include <string>

namespace tavctl {

// The page, in UTF-8. Whatever stands in the data stays text.
std::string reportPage(const ReportData& data, const std::string& title);

} // namespace tavctl

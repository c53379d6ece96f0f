#include "tavctl/report/reportPage.h"

#include "tavctl/report/pageParts.h"

#include <string_view>

namespace tavctl {

std::string reportPage(const ReportData& data, const std::string& title) {
    std::string page;
    // What is put in is not looked through for signs of its own.
    std::string_view rest = kPageMarkup;
    while (!rest.empty()) {
        const std::size_t begin = rest.find('@');
        const std::size_t end = begin == std::string_view::npos ? begin : rest.find('@', begin + 1);
        page += rest.substr(0, begin);
        if (end == std::string_view::npos)
            break;
        const std::string_view name = rest.substr(begin + 1, end - begin - 1);
        if (name == "TITLE")
            page += asHtml(title);
        else if (name == "STYLE")
            page += kPageStyle;
        else if (name == "SCRIPT")
            page += kPageScript;
        else if (name == "STYLE_HASH")
            page += kPageStyleHash;
        else if (name == "SCRIPT_HASH")
            page += kPageScriptHash;
        else if (name == "ROWS")
            page += data.rows();
        else if (name == "DATA")
            page += data.text(title);
        rest.remove_prefix(end + 1);
    }
    return page;
}

} // namespace tavctl

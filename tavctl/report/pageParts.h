// The files of the page as they stand beside this one; the build puts them into the program.
#pragma once

#include <string_view>

namespace tavctl {

extern const std::string_view kPageMarkup; // page.html, with "@NAME@" for what is put into it
extern const std::string_view kPageStyle;  // page.css
extern const std::string_view kPageScript; // page.js
// What the page's policy calls the latter two, so that the browser takes no others.
extern const std::string_view kPageStyleHash;
extern const std::string_view kPageScriptHash;

} // namespace tavctl

#include "tavctl/words/print.h"

#include "platform/systemCode.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/shownName.h"

#include <fmt/core.h>

#include <cstdio>

namespace tavctl {

void print(const std::string& text, Dress dress) {
    const std::string safe = printableLines(withShownNames(text), dress == Dress::coloured);
    if (std::fwrite(safe.data(), 1, safe.size(), stdout) == safe.size() && std::fflush(stdout) == 0)
        return;
    const platform::SystemCode code = platform::lastSystemCode();
    throw FailureException(
        {"write result", "standard output", platform::systemMessage(code), {}, {}});
}

void complain(std::string_view sentence) {
    complainInLines(fmt::format("tavctl: {}\n", printable(sentence)));
}

void complainInLines(std::string_view lines) {
    // In one piece: lines of other programs on the same terminal do not come in between.
    const std::string safe = printableLines(withShownNames(std::string(lines)));
    std::fwrite(safe.data(), 1, safe.size(), stderr);
}

} // namespace tavctl

#include "tavctl/bus/leftOutWords.h"

#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <cstddef>

namespace tavctl {

namespace {

// "3 functions" the first time, "3" from then on.
std::string countOf(std::size_t number, bool isFirst) {
    return isFirst ? counted(number, "function") : std::to_string(number);
}

} // namespace

std::string leftOutText(const pcibus::LeftOut& leftOut, const std::string& where) {
    std::string text;
    const auto add = [&](std::size_t number, const char* one, const char* several) {
        if (number == 0)
            return;
        const std::string count = countOf(number, text.empty());
        text +=
            fmt::format("{}{} {}", text.empty() ? "" : ", ", count, number == 1 ? one : several);
    };
    add(leftOut.otherDomains, "of another domain", "of other domains");
    add(leftOut.dead, "that does not answer (vendor FFFF)", "that do not answer (vendor FFFF)");
    add(leftOut.unreadable, "that cannot be read", "that cannot be read");
    if (!text.empty())
        text = fmt::format("left out{}: {}", where, text);
    if (leftOut.headerOnly != 0)
        text += fmt::format("{}of {}{} only the header is known", text.empty() ? "" : "; ",
                            countOf(leftOut.headerOnly, text.empty()),
                            text.empty() ? where : std::string());
    return text;
}

void tellLeftOut(const std::optional<pcibus::LeftOut>& leftOut, const std::string& where) {
    if (!leftOut)
        return;
    if (const std::string text = leftOutText(*leftOut, where); !text.empty())
        complain(text);
}

Json leftOutJson(const std::optional<pcibus::LeftOut>& leftOut) {
    if (!leftOut)
        return nullptr;
    return Json{{"otherDomains", leftOut->otherDomains},
                {"dead", leftOut->dead},
                {"unreadable", leftOut->unreadable},
                {"headerOnly", leftOut->headerOnly}};
}

} // namespace tavctl

#include "tavctl/words/print.h"

#include "platform/stream.h"
#include "platform/systemCode.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/shownName.h"

#include <fmt/core.h>

#include <cstdio>

namespace tavctl {

namespace {

HeldComplaints* holder = nullptr;

} // namespace

void print(const std::string& text, Dress dress) {
    const std::string safe = printableLines(withShownNames(text), dress == Dress::coloured);
    if (platform::writeStream(stdout, safe.data(), safe.size()) == safe.size() &&
        platform::flushStream(stdout))
        return;
    const platform::SystemCode code = platform::lastSystemCode();
    throw FailureException(
        {"write result", "standard output", platform::systemMessage(code), {}, {}});
}

void complain(std::string_view sentence) {
    complainInLines(fmt::format("tavctl: {}\n", printable(sentence)));
}

void complainInLines(std::string_view lines) {
    if (holder != nullptr) {
        holder->pieces_.emplace_back(lines);
        return;
    }
    // In one piece: lines of other programs on the same terminal do not come in between.
    const std::string safe = printableLines(withShownNames(std::string(lines)));
    platform::writeStream(stderr, safe.data(), safe.size());
}

HeldComplaints::HeldComplaints() {
    holder = this;
}

HeldComplaints::~HeldComplaints() {
    holder = nullptr;
}

} // namespace tavctl

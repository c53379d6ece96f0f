#include "tavctl/description/checkLoad.h"

#include "platform/directorySearch.h"
#include "pxidrivertools/asciiText.h"
#include "source/descriptionLoader.h"
#include "tavctl/description/oddNames.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <utility>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;
using Kind = LoadProblem::Kind;

constexpr bool kEndsLoad = true;

std::string inBrackets(std::string_view section) {
    return fmt::format("[{}]", section);
}

class LoadCheck {
public:
    LoadCheck(const Description& description, Findings& findings)
        : description_(description), text_(description.text()), findings_(findings) {}

    void check() {
        if (isExplorersFile(description_)) {
            explorersFile();
            return;
        }
        for (const LoadProblem& problem : description_.reads().problems())
            report(problem);
    }

    // What is missing for a section itself is told there, whoever asked for it first.
    void checkFirst() {
        if (isExplorersFile(description_)) {
            explorersFile();
            return;
        }
        const LoadProblem& first = description_.reads().problems().front();
        const LoadProblem* const own = first.askedBy.empty() ? nullptr : missingItself(first);
        report(own != nullptr ? *own : first);
    }

private:
    void report(const LoadProblem& problem) {
        switch (problem.kind) {
        case Kind::cannotOpen:
            cannotOpen();
            break;
        case Kind::missingSection:
        case Kind::missingKey:
            if (problem.askedBy.empty())
                missing(problem);
            else if (missingItself(problem) == nullptr)
                nowhere(problem);
            break;
        case Kind::emptyNumber:
            findings_.add("empty-number", text_.name(problem.section, problem.key),
                          fmt::format("{} is empty", problem.key), expectedNumber(problem.key),
                          kEndsLoad);
            break;
        case Kind::badDecimal:
            badNumber(problem, "is no decimal number of 32 bits");
            break;
        case Kind::badHexadecimal:
            badNumber(problem, "is no hexadecimal number");
            break;
        case Kind::unknownCategory:
            findings_.add("unknown-category", text_.value(problem.section, problem.key),
                          fmt::format("{} is no device category", valueText(problem)),
                          "exactly PCI, Expresscard or SwitchboxTav", kEndsLoad);
            break;
        }
    }

    void explorersFile() {
        findings_.add("desktop-ini", {},
                      "Windows' Explorer keeps here, hidden, how it shows the folder; it is no "
                      "description",
                      "no desktop.ini in this folder; on Windows \"del /a desktop.ini\" removes it",
                      kEndsLoad);
    }

    void cannotOpen() {
        const std::string& trouble = description_.openingTrouble();
        if (description_.isWide())
            findings_.add("wide-encoding", {},
                          "the file starts with the mark of UTF-16 or UTF-32 text",
                          "plain ASCII or UTF-8; save the file anew in that encoding", kEndsLoad);
        else
            findings_.add("cannot-open", {},
                          fmt::format("the file cannot be opened or read{}{}",
                                      trouble.empty() ? "" : ": ", trouble),
                          "a readable file, and no folder", kEndsLoad);
    }

    void missing(const LoadProblem& problem) {
        if (problem.kind == Kind::missingSection)
            missingSection(problem.section);
        else
            missingKey(problem);
    }

    void missingSection(const std::string& section) {
        if (!reported_.insert(section).second)
            return;
        const std::string near = nearestName(section, unaskedSections());
        const std::string hint =
            near.empty() ? std::string() : fmt::format("; there is {}", inBrackets(near));
        findings_.add("missing-section", namedAt(section),
                      fmt::format("there is no section {}", inBrackets(section)),
                      fmt::format("a line {}, spelled exactly so{}", inBrackets(section), hint),
                      kEndsLoad);
    }

    // Where a list names a section, or a key makes it needed.
    [[nodiscard]] Place namedAt(const std::string& section) const {
        struct List {
            const char* prefix;
            const char* section;
            const char* key;
        };
        for (const List& list : {List{kPrefixAlternateAnchor, kSectionAnchor, kAlternateAnchors},
                                 List{kPrefixInternalBridge, kSectionModel, kInternalBridges},
                                 List{kPrefixDownstreamPort, kSectionModel, kDownstreamPorts}}) {
            const auto& items = description_.list(list.section, list.key);
            for (std::size_t i = 0; i < items.size(); ++i) {
                if (list.prefix + items[i] == section)
                    return text_.item(list.section, list.key, i);
            }
        }
        if (section == kSectionUpstreamPort)
            return text_.value(kSectionModel, kHasUpstreamPort);
        return {};
    }

    [[nodiscard]] std::vector<std::string> unaskedSections() const {
        std::vector<std::string> unasked;
        for (const std::string& section : text_.sections()) {
            const auto first = description_.reads().asked().lower_bound({section, {}});
            if (first == description_.reads().asked().end() || first->first != section)
                unasked.push_back(section);
        }
        return unasked;
    }

    void missingKey(const LoadProblem& problem) {
        if (const Place place = emptyLine(problem); place.line != 0) {
            findings_.add("missing-key", place,
                          fmt::format("nothing stands behind the \"=\", so {} counts as missing",
                                      problem.key),
                          isText(problem.key)
                              ? fmt::format("{} = \"\" for an empty value", problem.key)
                              : expectedNumber(problem.key),
                          kEndsLoad);
            return;
        }
        findings_.add(
            "missing-key", text_.header(problem.section),
            fmt::format("{} has no key {}", inBrackets(problem.section), problem.key),
            fmt::format("{}, spelled exactly so{}", problem.key, alternative(problem.key)),
            kEndsLoad);
    }

    // A line of the section that would give the key if it had a value.
    [[nodiscard]] Place emptyLine(const LoadProblem& problem) const {
        using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;
        for (const PositionedLine& line : text_.lines()) {
            if (line.kind != IniLineKind::odd || line.section() != problem.section)
                continue;
            const std::string_view written = trim(line.text);
            if (written.ends_with('=') &&
                trim(written.substr(0, written.size() - 1)) == problem.key)
                return text_.placeOf(line.number, written);
        }
        return {};
    }

    static bool isText(const std::string& key) {
        return key == kModel || key == kDeviceCategory || key == kInternalBridges ||
               key == kConnectorLabels || key == kDownstreamPorts || key == kTraversalMapFromAnchor;
    }

    static bool isIdentifier(const std::string& key) {
        return key == kVid || key == kPid || key == kSsVid || key == kSsPid;
    }

    static std::string alternative(const std::string& key) {
        if (isIdentifier(key))
            return ", or IDsSameAs";
        return key == kTraversalMapFromAnchor ? "; \"\" when this bridge is the anchor" : "";
    }

    static std::string expectedNumber(const std::string& key) {
        if (isIdentifier(key))
            return "a hexadecimal number of up to 16 bits; 0 where the bridge has none";
        if (key == kPciHeaderType)
            return "1 for a PCI-to-PCI bridge, 0 for any other function";
        return key == kLinkWidthPerLabel ? "a decimal number of lanes" : "0 for no, 1 for yes";
    }

    void badNumber(const LoadProblem& problem, std::string_view trouble) {
        findings_.add("bad-number", text_.value(problem.section, problem.key),
                      fmt::format("{} {}", valueText(problem), trouble),
                      expectedNumber(problem.key), kEndsLoad);
    }

    // With its key, for those who see the sentence and not the line.
    [[nodiscard]] std::string valueText(const LoadProblem& problem) const {
        const auto lines = text_.linesOf(problem.section, problem.key);
        return fmt::format("{}: {}", problem.key,
                           lines.empty() ? "the value" : inQuotes(text_.line(lines.back())->value));
    }

    // The same where it is missing for its own section; null when it is not.
    [[nodiscard]] const LoadProblem* missingItself(const LoadProblem& problem) const {
        const auto& problems = description_.reads().problems();
        const auto own =
            std::find_if(problems.begin(), problems.end(), [&](const LoadProblem& each) {
                return each.askedBy.empty() && each.kind == problem.kind &&
                       each.section == problem.section &&
                       (each.key == problem.key || each.kind == Kind::missingSection);
            });
        return own == problems.end() ? nullptr : &*own;
    }

    // IDsSameAs leads to a section that is not there or has no identifiers of its own.
    void nowhere(const LoadProblem& problem) {
        if (!reported_.insert(fmt::format("{}\n{}", problem.askedBy, problem.section)).second)
            return;
        const Place place = text_.value(problem.askedBy, kIDsSameAs);
        const bool chained = !text_.linesOf(problem.section, kIDsSameAs).empty();
        std::string found = fmt::format("{} has no {}", inBrackets(problem.section), problem.key);
        if (problem.kind == Kind::missingSection)
            found = fmt::format("there is no section {}", inBrackets(problem.section));
        else if (chained)
            found += "; its own IDsSameAs is not followed";
        const std::string near = problem.kind == Kind::missingSection
                                     ? nearestName(problem.section, text_.sections())
                                     : std::string();
        findings_.add("ids-same-as-nowhere", place, std::move(found),
                      fmt::format("the name of a section with Vid, Pid, SsVid and SsPid{}{}",
                                  near.empty() ? "" : "; there is ",
                                  near.empty() ? "" : inBrackets(near)),
                      kEndsLoad);
    }

    const Description& description_;
    const PositionedIni& text_;
    Findings& findings_;
    std::set<std::string> reported_;
};

} // namespace

bool isExplorersFile(const Description& description) {
    const std::string& path = description.path();
    const std::size_t separator = platform::lastSeparator(path);
    const std::size_t start = separator == std::string::npos ? 0 : separator + 1;
    return isExplorersName(std::string_view(path).substr(start)) && !description.loads() &&
           !description.text().hasSection(kSectionModel);
}

void checkLoad(const Description& description, Findings& findings) {
    LoadCheck(description, findings).check();
}

Finding endOfLoad(const Description& description) {
    Findings findings(description);
    LoadCheck(description, findings).checkFirst();
    return std::move(findings).sorted().front();
}

} // namespace tavctl::lint

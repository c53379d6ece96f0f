// Lines that do nothing, and names that nothing asks for. What the loader asked for is the measure.
#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniContinuation.h"
#include "source/descriptionLoader.h"
#include "tavctl/lint/checks.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nDescription;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::trim;

std::string inBrackets(std::string_view section) {
    return fmt::format("[{}]", section);
}

class LineCheck {
public:
    LineCheck(const Description& description, Findings& findings)
        : description_(description), text_(description.text()), findings_(findings) {}

    void check() {
        for (const PositionedLine& line : text_.lines())
            checkLine(line);
    }

private:
    void checkLine(const PositionedLine& line) {
        switch (line.kind) {
        case IniLineKind::comment:
            break;
        case IniLineKind::odd:
            checkOdd(line);
            break;
        case IniLineKind::header:
            inSection_ = true;
            checkHeader(line);
            break;
        case IniLineKind::key:
            checkKey(line);
            break;
        }
    }

    [[nodiscard]] bool isAsked(const std::string& section) const {
        const auto& asked = description_.reads().asked();
        const auto first = asked.lower_bound({section, {}});
        return first != asked.end() && first->first == section;
    }

    void checkOdd(const PositionedLine& line) {
        const std::string_view written = trim(line.text);
        if (written.empty() || isReportedAsMissing(line.section(), written))
            return;
        const Place place = text_.placeOf(line.number, written);
        const std::string found = "the line is ignored: it is no section, no key and no comment";
        if (written.front() == '[')
            findings_.add("odd-line", place, found, "a section is written [name]");
        else if (written.front() == '#' || written.starts_with("//"))
            findings_.add("odd-line", place, found, "a comment starts with \";\"");
        else if (written.ends_with('='))
            findings_.add("odd-line", place, found,
                          "a value behind the \"=\"; \"\" for an empty one");
        else
            findings_.add("odd-line", place, found, "key = value");
    }

    // A key without a value that is required has a finding of its own.
    [[nodiscard]] bool isReportedAsMissing(const std::string& section,
                                           std::string_view written) const {
        if (!written.ends_with('='))
            return false;
        const std::string_view key = trim(written.substr(0, written.size() - 1));
        const auto& problems = description_.reads().problems();
        return std::any_of(problems.begin(), problems.end(), [&](const LoadProblem& each) {
            return each.kind == LoadProblem::Kind::missingKey && each.section == section &&
                   each.key == key;
        });
    }

    void checkHeader(const PositionedLine& line) {
        if (!seen_.insert(line.section()).second) {
            findings_.add("duplicate-section", text_.placeOf(line.number, line.name),
                          fmt::format("{} was begun before, in line {}; this continues it",
                                      inBrackets(line.name), text_.header(line.section()).line),
                          "each section once");
            return;
        }
        if (isAsked(line.section()))
            return;
        const Place place = text_.placeOf(line.number, line.name);
        for (const char* prefix :
             {kPrefixAlternateAnchor, kPrefixInternalBridge, kPrefixDownstreamPort}) {
            if (line.name.starts_with(prefix)) {
                unusedItem(place, line.section(), prefix);
                return;
            }
        }
        if (line.name == kSectionUpstreamPort) {
            findings_.add("unused-section", place,
                          "[UpstreamPort] is not read, since HasUpstreamPort is 0",
                          "HasUpstreamPort = 1, or no such section");
            return;
        }
        unknownSection(place, line.section());
    }

    void unusedItem(const Place& place, const std::string& section, std::string_view prefix) {
        const std::string list = prefix == kPrefixAlternateAnchor  ? kAlternateAnchors
                                 : prefix == kPrefixInternalBridge ? kInternalBridges
                                                                   : kDownstreamPorts;
        findings_.add("unused-section", place,
                      fmt::format("{} is not read: {} does not name it", inBrackets(section), list),
                      fmt::format("{} among the items of {}, or no such section",
                                  inQuotes(section.substr(prefix.size())), list));
    }

    void unknownSection(const Place& place, const std::string& section) {
        std::vector<std::string> known;
        for (const auto& [asked, key] : description_.reads().asked()) {
            if (!text_.hasSection(asked) && (known.empty() || known.back() != asked))
                known.push_back(asked);
        }
        std::string near = nearestName(section, known);
        if (near.empty()) {
            known = {kSectionModel,          kSectionAnchor,        kSectionUpstreamPort,
                     kPrefixAlternateAnchor, kPrefixInternalBridge, kPrefixDownstreamPort};
            near = nearestName(section, known);
        }
        findings_.add("unknown-section", place,
                      fmt::format("nothing asks for a section {}", inBrackets(section)),
                      near.empty() ? "a section of a description, or none"
                                   : fmt::format("{}?", inBrackets(near)));
    }

    void checkKey(const PositionedLine& line) {
        const auto place = [&] { return text_.placeOf(line.number, line.name); };
        if (!inSection_) {
            findings_.add("key-outside-section", place(),
                          fmt::format("the key {} stands before the first section", line.name),
                          "a section above it, such as [UpstreamTAV]");
            return;
        }
        const std::string name = joinedName(line.name);
        const auto& lines = text_.linesOf(line.section(), name);
        const auto self = std::lower_bound(lines.begin(), lines.end(), line.number);
        const bool isListed = self != lines.end() && *self == line.number;
        if (isListed && self != lines.begin())
            findings_.add("duplicate-key", place(),
                          fmt::format("{} was given before, in line {}; the last value counts",
                                      name, lines.front()),
                          "each key once in a section");
        if (self == lines.begin() && isListed &&
            !description_.reads().asked().contains({line.section(), name}) &&
            isAsked(line.section()))
            unasked(place(), line.section(), name);
    }

    static std::string joinedName(std::string_view name) {
        const auto piece =
            nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::readContinuationName(name);
        return std::string(piece ? piece->base : name);
    }

    void unasked(const Place& place, const std::string& section, const std::string& key) {
        const auto& reads = description_.reads();
        const bool isIdentifier = key == kVid || key == kPid || key == kSsVid || key == kSsPid;
        const auto redirected = reads.idsSameAs().find(section);
        if (isIdentifier && redirected != reads.idsSameAs().end()) {
            findings_.add(
                "unused-key", place,
                fmt::format("{} is not read: IDsSameAs takes the identifiers from {}", key,
                            inBrackets(redirected->second)),
                fmt::format("either IDsSameAs or identifiers in {}", inBrackets(section)));
            return;
        }
        std::vector<std::string> known;
        for (const auto& [askedSection, askedKey] : reads.asked()) {
            if (askedSection == section)
                known.push_back(askedKey);
        }
        std::string near = nearestName(key, known);
        std::string expected =
            near.empty() ? fmt::format("one of {}", enumerated(known)) : fmt::format("{}?", near);
        if (near.empty() && std::any_of(reads.asked().begin(), reads.asked().end(),
                                        [&](const auto& each) { return each.second == key; }))
            expected =
                fmt::format("this key has a meaning in other sections only; here, {}", expected);
        findings_.add("unknown-key", place,
                      fmt::format("nothing asks for a key {} in {}", key, inBrackets(section)),
                      std::move(expected));
    }

    const Description& description_;
    const PositionedIni& text_;
    Findings& findings_;
    std::set<std::string> seen_;
    bool inSection_ = false;
};

} // namespace

void checkLines(const Description& description, Findings& findings) {
    if (!description.text().lines().empty())
        LineCheck(description, findings).check();
}

} // namespace tavctl::lint

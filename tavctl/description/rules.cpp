#include "tavctl/description/rules.h"

#include <stdexcept>
#include <string>

namespace tavctl::lint {

namespace {

constexpr Severity kError = Severity::error;
constexpr Severity kWarning = Severity::warning;

constexpr Rule kRules[] = {
    // Loading fails, and with it the host's start.
    {"cannot-open", kError, "the file cannot be opened"},
    {"wide-encoding", kError, "the file is UTF-16 or UTF-32"},
    {"desktop-ini", kError,
     "the file is what Windows' Explorer keeps in a folder, and no description"},
    {"missing-section", kError, "a section that is needed, or named in a list, is not there"},
    {"missing-key", kError, "a required key is not there, or nothing stands behind its \"=\""},
    {"empty-number", kError, "a number is empty or blank between its quotes"},
    {"bad-number", kError, "a value is no number, or beyond 32 bits"},
    {"unknown-category", kError, "DeviceCategory is none of the three"},
    {"ids-same-as-nowhere", kError, "IDsSameAs names a section that has no identifiers of its own"},
    // Loading succeeds, but the model is never listed, or cannot be read by a host.
    {"bad-traversal-map", kError, "a step of a traversal map cannot be read"},
    {"anchor-not-described", kError, "no described bridge stands for the anchor"},
    {"anchor-counted-twice", kError,
     "two bridges with the anchor's identifiers stand in one place"},
    {"too-many-labels", kError, "there are more labels than the ports can take"},
    {"too-few-labels", kError, "the upstream port needs a label and there is none"},
    {"reserved-name", kError, "the model or its name base is \"_\", which stands for no name"},
    {"text-too-long", kError, "a text is longer than a host can read"},
    // It is loaded, but nobody meant it to be: its devices are listed beside the others.
    {"loaded-by-short-name", kError,
     "the system loads a file that is not called *.ini, by its short name"},
    // It works, but hardly as it was meant.
    {"unknown-section", kWarning, "nothing asks for a section of this name"},
    {"unused-section", kWarning, "the section is not named in its list"},
    {"unknown-key", kWarning, "nothing asks for a key of this name in this section"},
    {"unused-key", kWarning, "identifiers that IDsSameAs puts out of use"},
    {"odd-line", kWarning, "the line is neither a section, a key nor a comment"},
    {"key-outside-section", kWarning, "the key stands before the first section"},
    {"duplicate-section", kWarning, "the section was begun before"},
    {"duplicate-key", kWarning, "the key was given before; the last value counts"},
    {"number-cut-short", kWarning, "something that is ignored follows a hexadecimal number"},
    {"identifier-width", kWarning, "an identifier has more than 16 bits"},
    {"header-type", kWarning, "PciHeaderType is neither 0 nor 1"},
    {"comment-in-value", kWarning, "a semicolon behind a value is part of the value"},
    {"blank-in-list", kWarning, "a list item begins or ends with a blank"},
    {"empty-item", kWarning, "a list item is empty"},
    {"duplicate-item", kWarning, "a list names an item twice"},
    {"map-number", kWarning, "a step names a device or function that cannot exist"},
    {"same-place", kWarning, "two described bridges stand in one place"},
    {"fewer-labels-than-ports", kWarning, "ports behind the last label are not looked at"},
    {"labels-repeat-ports", kWarning, "labels begin again at the first port"},
    {"upstream-beside-anchor", kWarning, "the upstream port is counted for some anchors only"},
    {"mixed-bridges", kWarning,
     "the alternate anchors give a bridge other identifiers than its own"},
    {"name-base", kWarning, "digits or \"%\" in the name base"},
    {"name-not-kept", kWarning, "a name that is not read back as it is stored"},
    {"not-utf8", kWarning, "a text is not UTF-8"},
    {"duplicate-model", kWarning, "another file describes a model of this name"},
    {"too-large", kWarning, "the file has more than 64 MiB: its lines are not checked"},
    {"short-name", kWarning, "a system with short names loads the file, which is not called *.ini"},
    {"same-tree", kWarning, "a box can be taken for this model and for another one at once"},
};

} // namespace

std::span<const Rule> rules() {
    return kRules;
}

const Rule& rule(std::string_view id) {
    for (const Rule& each : kRules) {
        if (each.id == id)
            return each;
    }
    throw std::logic_error("no rule has the identifier " + std::string(id));
}

} // namespace tavctl::lint

// Values that load, but not as they were meant, and names that cannot serve.
#include "include/tavPlugin.h"
#include "platform/utf8.h"
#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/escapedText.h"
#include "pxidrivertools/scan.h"
#include "source/descriptionLoader.h"
#include "tavctl/lint/checks.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl::lint {

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using namespace nDescription;
using namespace nZoPxiDriverTools_1_0;

constexpr std::uint32_t kLargestIdentifier = 0xFFFF;
constexpr std::size_t kLongestText = TAVPLUGIN_TEXT_SIZE - 1;

class ValueCheck {
public:
    ValueCheck(const Description& description, Findings& findings)
        : description_(description), text_(description.text()), findings_(findings) {}

    void check() {
        for (const auto& [where, number] : description_.reads().hexadecimals())
            checkHexadecimal(where.first, where.second, number);
        const tModelDescription& model = description_.model();
        if (isRead(kModel)) {
            checkText(kModel, model.model, kLongestText);
            checkKept(kModel, model.model, model.model.empty());
            checkReserved(kModel, model.model);
        }
        if (isRead(kTerminalNameBase)) {
            // A name is the base and a number of at least one digit.
            checkText(kTerminalNameBase, model.terminalNameBase, kLongestText - 1);
            checkKept(kTerminalNameBase, model.terminalNameBase, false);
            checkReserved(kTerminalNameBase, model.terminalNameBase);
            checkBase(model.terminalNameBase);
        }
        checkLabels();
    }

private:
    [[nodiscard]] bool isRead(const char* key) const {
        return !text_.linesOf(kSectionModel, key).empty();
    }

    void checkHexadecimal(const std::string& section, const std::string& key,
                          std::uint32_t number) {
        const auto& lines = text_.linesOf(section, key);
        if (!lines.empty()) {
            std::string_view rest = text_.line(lines.back())->value;
            scanHexadecimal(rest);
            rest = trim(rest);
            if (!rest.empty())
                findings_.add(
                    "number-cut-short", text_.placeOf(lines.back(), rest),
                    fmt::format("{} is ignored: the number read is 0x{:X}", inQuotes(rest), number),
                    "hexadecimal digits only, with or without 0x");
        }
        if (key == kPciHeaderType) {
            if (number > kHeaderTypeBridge)
                findings_.add(
                    "header-type", text_.value(section, key),
                    fmt::format("header type 0x{:X} is taken for a function that is no bridge",
                                number),
                    "1 for a PCI-to-PCI bridge, 0 for any other function");
        } else if (number > kLargestIdentifier) {
            findings_.add("identifier-width", text_.value(section, key),
                          fmt::format("{} has more than 16 bits; 0x{:04X} is what counts", key,
                                      number & kLargestIdentifier),
                          "at most four hexadecimal digits");
        }
    }

    void checkText(const char* key, const std::string& text, std::size_t longest) {
        const Place place = text_.value(kSectionModel, key);
        if (text.size() > longest)
            tooLong(place, key, text.size(), longest);
        if (!platform::isValidUtf8(text))
            notUtf8(place, key);
        checkComment(key, text);
    }

    void tooLong(const Place& place, std::string_view what, std::size_t size, std::size_t longest) {
        findings_.add("text-too-long", place,
                      fmt::format("{} has {} bytes, and a host cannot read it", what, size),
                      fmt::format("at most {} bytes", longest));
    }

    void notUtf8(const Place& place, std::string_view what) {
        findings_.add("not-utf8", place, fmt::format("{} holds bytes that are not UTF-8", what),
                      "UTF-8; save the file anew in that encoding");
    }

    void checkComment(const char* key, std::string_view text) {
        for (std::size_t at = text.find(';'); at != std::string_view::npos;
             at = text.find(';', at + 1)) {
            if (at == 0 || !isSpace(text[at - 1]))
                continue;
            findings_.add(
                "comment-in-value", text_.part(kSectionModel, key, at, text.size() - at),
                fmt::format("this is part of {}: behind a value there are no comments", key),
                "a comment on a line of its own");
            return;
        }
    }

    // Names are stored escaped and read back so; blanks around what is written are lost. Behind a
    // name base its number is written.
    void checkKept(const char* key, const std::string& text, bool readsAsNothing) {
        const char* trouble = nullptr;
        if (readsAsNothing)
            trouble = "is empty";
        else if (const std::string written = escapeText(text);
                 trimLeft(written) != written || (key == kModel && trim(written) != written))
            trouble = "begins or ends with a blank";
        if (trouble != nullptr)
            findings_.add(
                "name-not-kept", text_.value(kSectionModel, key),
                fmt::format("{} {}, so the device gets a new name at each start of the host", key,
                            trouble),
                "a plain text");
    }

    void checkReserved(const char* key, const std::string& text) {
        if (text == kNoText)
            findings_.add(
                "reserved-name", text_.value(kSectionModel, key),
                fmt::format("{} \"_\" stands for no name at all; the model is never listed", key),
                "any other text");
    }

    void checkBase(const std::string& base) {
        if (std::any_of(base.begin(), base.end(), isDecimalDigit))
            findings_.add("name-base", text_.value(kSectionModel, kTerminalNameBase),
                          "the base has digits, so the device gets a new name at each start of "
                          "the host",
                          "a word without digits; the number is put behind it");
        else if (base.find('%') != std::string::npos)
            findings_.add("name-base", text_.value(kSectionModel, kTerminalNameBase),
                          "other readers of the names may take \"%\" for a conversion",
                          "a word without \"%\"");
    }

    void checkLabels() {
        const auto& labels = description_.list(kSectionModel, kConnectorLabels);
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const Place place = text_.item(kSectionModel, kConnectorLabels, i);
            if (labels[i].size() > kLongestText)
                tooLong(place, "the label", labels[i].size(), kLongestText);
            if (!platform::isValidUtf8(labels[i]))
                notUtf8(place, "the label");
        }
        for (const char* key : {kConnectorLabels, kInternalBridges, kDownstreamPorts}) {
            const auto& lines = text_.linesOf(kSectionModel, key);
            if (!lines.empty())
                checkComment(key, text_.line(lines.back())->value);
        }
    }

    const Description& description_;
    const PositionedIni& text_;
    Findings& findings_;
};

} // namespace

void checkValues(const Description& description, Findings& findings) {
    ValueCheck(description, findings).check();
}

} // namespace tavctl::lint

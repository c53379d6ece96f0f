#include "tavctl/description/rules.h"
#include "tavctl/lint/checks.h"

namespace tavctl::lint {

namespace {

constexpr const char* kExpected =
    "a last extension that does not begin with \"ini\", or another folder";

Finding ofName(std::string_view id, const std::string& file, std::string found) {
    const Rule& broken = rule(id);
    Finding finding;
    finding.rule = broken.id;
    finding.severity = broken.severity;
    finding.file = file;
    finding.found = std::move(found);
    finding.expected = kExpected;
    return finding;
}

} // namespace

Finding loadedByShortName(const std::string& file) {
    return ofName("loaded-by-short-name", file,
                  "the plug-in loads this file, since it has a short name that ends in .INI");
}

Finding shortName(const std::string& file) {
    return ofName("short-name", file,
                  "on a system with short names, as Windows is, the plug-in loads this file: its "
                  "short name ends in .INI");
}

} // namespace tavctl::lint
